#include "platform/appkit/images/NSImageRep.h"

#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSEPSImageRep.h"
#include "platform/appkit/images/NSPDFImageRep.h"
#include "platform/appkit/images/NSPICTImageRep.h"
#include "platform/imageio/CGImageSource.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace kelvo {
namespace {

constexpr float pointsPerInch = 72;

float pointsOf(std::uint32_t pixels, float dotsPerInch) {
    const auto count = static_cast<float>(pixels);
    const float points = dotsPerInch > 0 ? count * pointsPerInch / dotsPerInch : count;
    return points > 0 && std::isfinite(points) ? points : count;
}

/// Whether a PDF begins in the first KiB, where its readers look for it, and no PostScript that only mentions one.
bool beginsAsPDF(const NSData& data) {
    constexpr std::size_t placesOfHeader = 1024;
    const NSData beginning = data.subdataWithRange({0, std::min(data.length(), placesOfHeader)});
    const std::string_view text = beginning.characters();
    const std::size_t header = text.find("%PDF-");
    return header != std::string_view::npos && header <= text.find("%!PS");
}

/// Whether a PDF ends there, whatever its beginning has become.
bool endsAsPDF(const NSData& data) {
    constexpr std::size_t placesOfTrailer = 1024;
    const std::size_t length = std::min(data.length(), placesOfTrailer);
    return data.subdataWithRange({data.length() - length, length}).characters().find("startxref") !=
           std::string_view::npos;
}

/// Whether the images of such a file are each something of their own, or the same in several sizes; others are frames.
bool showsAllImages(const NSString& type) {
    constexpr std::array types{u"public.tiff", u"com.microsoft.ico", u"com.apple.icns"};
    return std::ranges::any_of(types, [&](const char16_t* name) { return type == name; });
}

std::shared_ptr<NSImageRep> repOfSource(const CGImageSource& source, std::size_t index, const NSData& data) {
    if (CGImageSourceGetType(source) == u"com.apple.pict")
        return NSPICTImageRep::imageRepWithSource(source, data);
    return NSBitmapImageRep::imageRepWithSource(source, index);
}

} // namespace

NSSize sizeInPoints(std::uint32_t pixelsWide, std::uint32_t pixelsHigh, NSSize dotsPerInch) {
    return {pointsOf(pixelsWide, dotsPerInch.width), pointsOf(pixelsHigh, dotsPerInch.height)};
}

bool NSImageRep::drawInRect(NSRect rect) const {
    return drawInRect_fromRect_operation_fraction(rect, {{}, size_}, NSCompositeSourceOver, 1);
}

bool NSImageRep::drawInRect_fromRect_operation_fraction(NSRect rect, NSRect part,
                                                        NSCompositingOperation operation, float fraction,
                                                        ImageGround ground) const {
    const auto context = NSGraphicsContext::currentContext();
    if (!context || !(part.size.width > 0 && part.size.height > 0 && size_.width > 0 && size_.height > 0))
        return false;
    const NSSize drawn = context->pixelsOfSize(rect.size);
    // A small part drawn large must not have the whole drawn beyond all bounds.
    constexpr float mostPixelsOfSide = 8192;
    const float across = drawn.width * std::max(size_.width / part.size.width, 1.0F);
    const float down = drawn.height * std::max(size_.height / part.size.height, 1.0F);
    const float excess = std::max({across / mostPixelsOfSide, down / mostPixelsOfSide, 1.0F});
    const BitmapRef pixels = pixelsForSize({across / excess, down / excess}, ground);
    if (!pixels)
        return false;
    const NSSize whole{static_cast<float>(pixels->width), static_cast<float>(pixels->height)};
    NSRect pixelsOfPart{{}, whole};
    if (part != NSRect{{}, size_}) {
        const float scaleX = whole.width / size_.width;
        const float scaleY = whole.height / size_.height;
        pixelsOfPart = {{part.origin.x * scaleX, part.origin.y * scaleY},
                        {part.size.width * scaleX, part.size.height * scaleY}};
    }
    context->drawBitmap_inRect_fromRect_operation_fraction(*pixels, rect, pixelsOfPart, operation, fraction);
    return true;
}

std::vector<std::shared_ptr<NSImageRep>> NSImageRep::imageRepsWithData(const NSData& data) {
    std::vector<std::shared_ptr<NSImageRep>> reps;
    const auto add = [&](std::shared_ptr<NSImageRep> rep) {
        if (rep)
            reps.push_back(std::move(rep));
    };
    if (data.isEmpty())
        return reps;
    if (beginsAsPDF(data)) {
        add(NSPDFImageRep::imageRepWithData(data));
        return reps;
    }
    if (auto eps = NSEPSImageRep::imageRepWithData(data)) {
        add(std::move(eps));
        return reps;
    }
    if (endsAsPDF(data)) {
        if (auto pdf = NSPDFImageRep::imageRepWithData(data)) {
            add(std::move(pdf));
            return reps;
        }
    }
    const CGImageSource source = CGImageSourceCreateWithData(data, nullptr);
    const std::size_t count = showsAllImages(CGImageSourceGetType(source))
                                  ? std::min(CGImageSourceGetCount(source), mostOfFile)
                                  : std::min<std::size_t>(CGImageSourceGetCount(source), 1);
    for (std::size_t index = 0; index < count; ++index)
        add(repOfSource(source, index, data));
    return reps;
}

} // namespace kelvo
