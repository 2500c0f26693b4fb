#include "platform/imageio/CGImageDestination.h"

#include "platform/foundation/Value.h"
#include "platform/imageio/ImageEngine.h"
#include "platform/imageio/ImageEngineMessages.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace kelvo {

using namespace imageengine;

NSData dataOfImage(const CGImage& image, const NSString& type, const NSDictionary& options) {
    if (image.isNil() || type.isNil())
        return nullptr;
    auto message = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithInt(static_cast<int>(Want::file)), wantKey},
         {type, typeKey},
         {NSNumber::numberWithLongLong(static_cast<std::int64_t>(image.width())), widthKey},
         {NSNumber::numberWithLongLong(static_cast<std::int64_t>(image.height())), heightKey},
         {NSNumber::numberWithBool(image.alphaInfo() == kCGImageAlphaLast), alphaKey},
         {image.data(), bytesKey}});
    const NSNumber* const quality =
        options.objectForKey(kCGImageDestinationLossyCompressionQuality).numberIfAny();
    if (quality && !std::isnan(quality->doubleValue()))
        message.setObject_forKey(NSNumber::numberWithDouble(std::clamp(quality->doubleValue(), 0.0, 1.0)),
                                 qualityKey);
    return ImageEngine::sharedEngine().answerTo(message).data();
}

} // namespace kelvo
