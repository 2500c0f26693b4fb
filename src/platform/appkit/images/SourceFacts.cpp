#include "platform/appkit/images/SourceFacts.h"

#include "platform/appkit/images/NSImageRep.h"
#include "platform/foundation/Value.h"

#include <limits>
#include <utility>

namespace kelvo {
namespace {

/// The first of the orientations that lie on their side.
constexpr std::int64_t firstTurned = 5;

std::int64_t integerIn(const NSDictionary& properties, const char16_t* key) {
    const NSNumber* const number = properties.objectForKey(key).numberIfAny();
    return number ? number->longLongValue() : 0;
}

float floatIn(const NSDictionary& properties, const char16_t* key) {
    const NSNumber* const number = properties.objectForKey(key).numberIfAny();
    return number ? static_cast<float>(number->doubleValue()) : 0;
}

} // namespace

std::optional<SourceFacts> SourceFacts::read(const CGImageSource& source, std::size_t index) {
    const NSDictionary properties = CGImageSourceCopyPropertiesAtIndex(source, index, nullptr);
    std::int64_t width = integerIn(properties, kCGImagePropertyPixelWidth);
    std::int64_t height = integerIn(properties, kCGImagePropertyPixelHeight);
    constexpr std::int64_t most = std::numeric_limits<std::uint32_t>::max();
    if (width <= 0 || height <= 0 || width > most || height > most)
        return std::nullopt;
    NSSize dotsPerInch{floatIn(properties, kCGImagePropertyDPIWidth),
                       floatIn(properties, kCGImagePropertyDPIHeight)};
    if (integerIn(properties, kCGImagePropertyOrientation) >= firstTurned) {
        std::swap(width, height);
        std::swap(dotsPerInch.width, dotsPerInch.height);
    }
    SourceFacts facts;
    facts.pixelsWide = static_cast<std::uint32_t>(width);
    facts.pixelsHigh = static_cast<std::uint32_t>(height);
    facts.size = sizeInPoints(facts.pixelsWide, facts.pixelsHigh, dotsPerInch);
    facts.hasAlpha = integerIn(properties, kCGImagePropertyHasAlpha) != 0;
    return facts;
}

} // namespace kelvo
