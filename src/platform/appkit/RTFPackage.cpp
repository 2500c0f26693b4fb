#include "platform/appkit/RTFPackage.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/encodings/CFStringNormalization.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>

namespace kelvo {
namespace {

NSMutableString composed(const NSString& name) {
    NSMutableString result(name);
    CFStringNormalize(result, CFStringNormalizationForm::C);
    return result;
}

bool areAlike(std::u16string_view left, std::u16string_view right) {
    return std::ranges::equal(left, right, {}, asciiLowerCase<char16_t>, asciiLowerCase<char16_t>);
}

} // namespace

std::shared_ptr<const NSFileWrapper> rtfPackageEntry(const NSFileWrapper& package, const NSString& name) {
    if (auto entry = package.fileWrapperForName(name))
        return entry;
    const NSMutableString wanted = composed(name);
    for (const auto& [entryName, entry] : package.fileWrappers())
        if (areAlike(composed(entryName), wanted))
            return entry;
    return nullptr;
}

} // namespace kelvo
