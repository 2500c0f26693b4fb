#include "text/WildcardMatching.h"

#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/units/UTF8.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

namespace {

bool isSameUnit(char16_t left, char16_t right) {
    return left == right || CFStringCompareCaseInsensitive({&left, 1}, {&right, 1}) == 0;
}

} // namespace

bool isCaseInsensitiveLikeWildcard(const NSString& string, const NSString& wildcard) {
    if (string.isNil() || wildcard.isNil())
        return false;
    const std::u16string_view text = string, pattern = wildcard;
    constexpr std::size_t none = std::u16string_view::npos;
    std::size_t at = 0, sign = 0, lastStar = none, starredTo = 0;
    while (at < text.size()) {
        const char16_t wanted = sign < pattern.size() ? pattern[sign] : u'\0';
        if (sign < pattern.size() && wanted == u'*') {
            lastStar = sign++;
            starredTo = at;
        } else if (sign < pattern.size() && wanted == u'?') {
            nextCharacter(text, at);
            ++sign;
        } else if (sign < pattern.size() && isSameUnit(text[at], wanted)) {
            ++at;
            ++sign;
        } else if (lastStar != none) {
            // What an earlier star takes need not be looked at again: the last one can take that as well.
            at = ++starredTo;
            sign = lastStar + 1;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of(u'*', sign) == none;
}

} // namespace kelvo
