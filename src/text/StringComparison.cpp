#include "text/StringComparison.h"

#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/units/UnitScan.h"

namespace kelvo {

namespace {

bool isEqualNoCase(std::u16string_view left, std::u16string_view right) {
    return left.size() == right.size() && CFStringCompareCaseInsensitive(left, right) == 0;
}

} // namespace

bool boolValue(std::u16string_view string) {
    if (intValue(string) != 0)
        return true;
    switch (string.size()) {
    case 2:
        return isEqualNoCase(string, u"on");
    case 3:
        return isEqualNoCase(string, u"yes");
    case 4:
        return isEqualNoCase(string, u"true");
    default:
        return false;
    }
}

bool isEqualToStringNoCase(const NSString& string, const NSString& other) {
    return !string.isNil() && !other.isNil() && isEqualNoCase(string, other);
}

bool hasPrefixNoCase(std::u16string_view string, std::u16string_view prefix) {
    return !prefix.empty() && prefix.size() <= string.size() &&
           isEqualNoCase(string.substr(0, prefix.size()), prefix);
}

bool hasSuffixNoCase(std::u16string_view string, std::u16string_view suffix) {
    return !suffix.empty() && suffix.size() <= string.size() &&
           isEqualNoCase(string.substr(string.size() - suffix.size()), suffix);
}

bool isAsciiString(const NSString& string) {
    const std::u16string_view text = string;
    return !string.isNil() && firstNonAsciiUnit(text.data(), text.size()) == text.size();
}

bool isAsciiString(const NSData& data) {
    return !data.isNil() && firstNonAsciiByte(data.bytes().data(), data.length()) == data.length();
}

} // namespace kelvo
