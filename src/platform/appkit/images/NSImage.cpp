#include "platform/appkit/images/NSImage.h"

#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSBundleImageExtension.h"
#include "platform/appkit/images/NSCachedImageRep.h"

#include <algorithm>
#include <typeinfo>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

/// The images that go by a name, for as long as anybody has them.
std::unordered_map<NSString, std::weak_ptr<NSImage>>& imagesByName() {
    static std::unordered_map<NSString, std::weak_ptr<NSImage>> images;
    return images;
}

/// Those that were looked for by their names, which stay.
std::vector<std::shared_ptr<NSImage>>& imagesThatStay() {
    static std::vector<std::shared_ptr<NSImage>> images;
    return images;
}

std::shared_ptr<const NSBitmapImageRep> bitmapOfRep(const std::shared_ptr<NSImageRep>& rep) {
    if (const auto cached = std::dynamic_pointer_cast<const NSCachedImageRep>(rep)) {
        auto bitmap = NSBitmapImageRep::initWithBitmap(cached->bitmap());
        bitmap->setSize(cached->size());
        return bitmap;
    }
    return std::dynamic_pointer_cast<const NSBitmapImageRep>(rep);
}

} // namespace

std::shared_ptr<NSImage> NSImage::initByReferencingFile(const NSString& path) {
    const NSData data = NSData::dataWithContentsOfFileWhenNeeded(path);
    if (data.isNil())
        return nullptr;
    auto image = std::make_shared<NSImage>();
    image->representations_ = NSImageRep::imageRepsWithData(data);
    return image;
}

std::shared_ptr<NSImage> NSImage::initWithData(const NSData& data) {
    auto image = std::make_shared<NSImage>();
    image->representations_ = NSImageRep::imageRepsWithData(data);
    return image->representations_.empty() ? nullptr : image;
}

std::shared_ptr<NSImage> NSImage::copy() const {
    auto other = std::make_shared<NSImage>();
    other->size_ = size_;
    other->scalesWhenResized_ = scalesWhenResized_;
    other->isCachedSeparately_ = isCachedSeparately_;
    other->backgroundColor_ = backgroundColor_;
    other->representations_ = representations_;
    return other;
}

std::shared_ptr<NSImage> NSImage::imageNamed(const NSString& name) {
    if (name.isNil())
        return nullptr;
    if (const auto found = imagesByName().find(name); found != imagesByName().end()) {
        if (auto image = found->second.lock())
            return image;
    }
    // The application is whatever program this code is part of.
    const NSString path = pathForImageResource(NSBundle::bundleForClass(typeid(NSImage)), name);
    if (path.isNil())
        return nullptr;
    auto image = initByReferencingFile(path);
    if (!image || image->representations_.empty())
        return nullptr;
    image->setName(name);
    imagesThatStay().push_back(image);
    return image;
}

bool NSImage::setName(const NSString& name) {
    const auto self = std::static_pointer_cast<NSImage>(shared_from_this());
    if (!name.isNil()) {
        std::weak_ptr<NSImage>& place = imagesByName()[name];
        if (const auto other = place.lock(); other && other != self)
            return false;
        place = self;
    }
    if (!name_.isNil() && name_ != name)
        imagesByName().erase(name_);
    name_ = name;
    return !name.isNil();
}

NSSize NSImage::size() const {
    if (size_)
        return *size_;
    return representations_.empty() ? NSSize{} : representations_.front()->size();
}

void NSImage::addRepresentation(std::shared_ptr<NSImageRep> rep) {
    if (rep)
        representations_.push_back(std::move(rep));
}

void NSImage::removeRepresentation(const std::shared_ptr<NSImageRep>& rep) {
    std::erase(representations_, rep);
}

std::shared_ptr<NSImageRep> NSImage::bestRepresentationForDevice() const {
    std::shared_ptr<NSImageRep> best;
    for (const auto& rep : representations_) {
        if (!best || rep->isVector() || (!best->isVector() && rep->pixelsWide() > best->pixelsWide()))
            best = rep;
    }
    return best;
}

bool NSImage::drawRepresentation_inRect(const NSImageRep& rep, NSRect rect) const {
    const auto context = NSGraphicsContext::currentContext();
    if (!context)
        return false;
    if (backgroundColor_.alpha > 0)
        context->fillRect(rect, backgroundColor_);
    // What is drawn on white anyway need not be drawn for other grounds.
    const ImageGround ground =
        backgroundColor_ == NSColor{1, 1, 1, 1} ? ImageGround::white : ImageGround::transparent;
    return rep.drawInRect_fromRect_operation_fraction(rect, {{}, rep.size()}, NSCompositeSourceOver, 1,
                                                      ground);
}

bool NSImage::drawInRect_fromRect_operation_fraction(NSRect rect, NSRect part,
                                                     NSCompositingOperation operation, float fraction) const {
    const auto rep = bestRepresentationForDevice();
    const NSSize whole = size();
    if (!rep || !(whole.width > 0 && whole.height > 0))
        return false;
    if (!(part.size.width > 0 && part.size.height > 0))
        part = {{}, whole};
    // A representation that is not scaled stands in the corner of the image as large as it is by itself.
    const NSSize drawn = scalesWhenResized_ ? whole : rep->size();
    const float scaleX = rep->size().width / drawn.width;
    const float scaleY = rep->size().height / drawn.height;
    return rep->drawInRect_fromRect_operation_fraction(
        rect,
        {{part.origin.x * scaleX, part.origin.y * scaleY},
         {part.size.width * scaleX, part.size.height * scaleY}},
        operation, fraction);
}

bool NSImage::compositeToPoint_operation_fraction(NSPoint point, NSCompositingOperation operation,
                                                  float fraction) const {
    return drawInRect_fromRect_operation_fraction({point, size()}, {}, operation, fraction);
}

bool NSImage::lockFocus() {
    auto context = NSGraphicsContext::contextOfSize(size());
    if (!context)
        return false;
    focus_.push_back({context, NSGraphicsContext::currentContext()});
    NSGraphicsContext::setCurrentContext(std::move(context));
    try {
        if (!representations_.empty())
            drawInRect_fromRect_operation_fraction({{}, size()}, {}, NSCompositeSourceOver, 1);
    } catch (...) {
        NSGraphicsContext::setCurrentContext(focus_.back().before);
        focus_.pop_back();
        throw;
    }
    return true;
}

void NSImage::unlockFocus() {
    if (focus_.empty())
        return;
    const Focus focus = std::move(focus_.back());
    focus_.pop_back();
    NSGraphicsContext::setCurrentContext(focus.before);
    representations_ = {NSCachedImageRep::imageRepWithBitmap(focus.context->bitmap(), size())};
}

NSData NSImage::TIFFRepresentation() const {
    return TIFFRepresentationUsingCompression_factor(NSTIFFCompressionNone, 0);
}

NSData NSImage::TIFFRepresentationUsingCompression_factor(NSTIFFCompression compression, float factor) const {
    std::vector<std::shared_ptr<const NSBitmapImageRep>> bitmaps;
    for (const auto& rep : representations_) {
        if (auto bitmap = bitmapOfRep(rep))
            bitmaps.push_back(std::move(bitmap));
    }
    if (bitmaps.empty() && !representations_.empty()) {
        const auto drawn = std::make_shared<NSImage>(size());
        if (FocusOnImage focus(*drawn);
            !focus || !drawInRect_fromRect_operation_fraction({{}, size()}, {}, NSCompositeSourceOver, 1))
            return nullptr;
        bitmaps.push_back(bitmapOfRep(drawn->representations_.front()));
    }
    return NSBitmapImageRep::TIFFRepresentationOfImageRepsInArray_usingCompression_factor(
        bitmaps, compression, factor);
}

} // namespace kelvo
