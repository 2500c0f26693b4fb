#include "text/StringLines.h"

#include "platform/foundation/Value.h"
#include "text/CopyingForm.h"
#include "text/LineScan.h"
#include "text/StringRemoval.h"
#include "text/StringTrimming.h"
#include "text/UnitBitmap.h"
#include "text/UnitSet.h"

#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr UnitBitmap feeds(u"\u000C\u000A\u000D\u2028\u2029\u0003\uFFFC\uFEFF");

std::u16string_view feedsAtEnd(std::u16string_view text) {
    std::size_t start = text.size();
    while (start > 0 && isFeedCharacter(text[start - 1]))
        --start;
    return text.substr(start);
}

} // namespace

bool isFeedCharacter(char16_t unit) {
    return unitIsInBitmap(feeds.rep(), unit);
}

CharacterSetRep feedCharacterSetRep() {
    return feeds.rep();
}

NSArray lines(const NSString& string) {
    if (string.isNil())
        return nullptr;
    std::vector<Value> result;
    std::size_t start = 0;
    forEachLine(string, [&](const LineSpan& line) {
        result.emplace_back(string.substringWithRange({start, line.end - start}));
        start = line.end;
    });
    return NSArray::arrayWithValues(std::move(result));
}

bool hasFeedOfLine(std::u16string_view string) {
    return !string.empty() && isFeedCharacter(string.back());
}

NSString feedOfLine(const NSString& string) {
    return string.isNil() ? string : string.substringFromIndex(string.length() - feedsAtEnd(string).size());
}

NSString reformattedStringByRemovingCharactersOfString(const NSString& string, const NSString& characters) {
    if (string.isEmpty())
        return string;
    const std::u16string_view text = string;
    const UnitSet unwanted(characters, text.size());
    NSString result = string;
    unlessRefused([&] {
        NSMutableString reformatted = NSMutableString::stringWithCapacity(text.size());
        NSMutableString line = NSMutableString::string();
        bool isTextPending = false;
        std::size_t start = 0;
        forEachLine(text, [&](const LineSpan& span) {
            const std::u16string_view whole = text.substr(start, span.end - start);
            start = span.end;
            line.setString(whole);
            removeMembers(line, unwanted);
            if (const auto kept = withoutWhiteSpacesAtEnds(line); !kept.empty()) {
                if (isTextPending)
                    reformatted.appendCharacter(u' ');
                reformatted.appendString(kept);
                isTextPending = true;
            } else if (isTextPending) {
                const bool isLast = span.end == text.size();
                for (int times = isLast ? 1 : 2; times > 0; --times)
                    reformatted.appendString(feedsAtEnd(whole));
                isTextPending = false;
            }
        });
        removeMultipleSpaces(reformatted);
        if (reformatted.characters() != text)
            result = reformatted.takeString();
    });
    return result;
}

} // namespace kelvo
