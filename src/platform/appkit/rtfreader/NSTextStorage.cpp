#include "platform/appkit/rtfreader/NSTextStorage.h"

#include "platform/appkit/rtfreader/RTFReading.h"

namespace kelvo {

std::shared_ptr<NSTextStorage>
NSTextStorage::initWithRTFD_documentAttributes(const NSData& data, NSDictionary* documentAttributes) {
    const NSAttributedString text =
        NSAttributedStringKitAdditions::initWithRTFD_documentAttributes(data, documentAttributes);
    return text.isNil() ? nullptr : std::make_shared<NSTextStorage>(text);
}

} // namespace kelvo
