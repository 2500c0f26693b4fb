#include "platform/appkit/rtfreader/RTFPackageMark.h"

#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFWords.h"
#include "platform/foundation/NSFileManager.h"

#include <algorithm>

namespace kelvo {

void RTFPackageMark::appendName(std::string_view bytes) {
    if (!isNameEnded_)
        name_ += bytes;
}

void RTFPackageMark::apply(const RTFToken& token) {
    static constexpr RTFWord<RTFPackageMark> words[] = {
        {"width",
         [](RTFPackageMark& mark, const RTFToken& word) {
             mark.displaySize_.width = pointsFromTwips(std::max(word.parameter, 0));
         }},
        {"height",
         [](RTFPackageMark& mark, const RTFToken& word) {
             mark.displaySize_.height = pointsFromTwips(std::max(word.parameter, 0));
         }},
    };
    isNameEnded_ = true;
    applyRTFWord<RTFPackageMark>(words, *this, token);
}

NSString RTFPackageMark::name() const {
    const std::string_view name = std::string_view(name_).substr(0, name_.find_last_not_of(' ') + 1);
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(std::string(name));
}

} // namespace kelvo
