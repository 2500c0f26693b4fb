#include "text/ConfigurationText.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/units/ASCII.h"
#include "text/CharacterSetReps.h"
#include "text/LineScan.h"
#include "text/StringLines.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

std::u16string_view trimmed(std::u16string_view text) {
    const CharacterSetRep white = whiteCharacterSetRep();
    const std::size_t start = firstUnitNotInBitmap(text.data(), text.size(), white);
    std::size_t end = text.size();
    while (end > start && unitIsInBitmap(white, text[end - 1]))
        --end;
    return text.substr(start, end - start);
}

/// The line as configLines has it; empty for comments.
std::u16string_view configLine(std::u16string_view line) {
    line = trimmed(line);
    const bool isComment = line.starts_with(u'#') || line.starts_with(u';') || line.starts_with(u"//");
    return isComment ? std::u16string_view() : line;
}

std::optional<std::u16string_view> valueInLine(std::u16string_view line, std::u16string_view key) {
    if (!line.starts_with(key))
        return std::nullopt;
    line = trimmed(line.substr(key.size()));
    if (line.empty())
        return line;
    if (line.front() != u'=' && line.front() != u':')
        return std::nullopt;
    return trimmed(line.substr(1));
}

/// The value as it is written, quotes included.
std::optional<std::u16string_view> rawValueForKey(std::u16string_view text, std::u16string_view key) {
    key = trimmed(key);
    for (std::size_t next = 0; !key.empty() && next < text.size();) {
        const LineSpan line = lineFrom(text, next);
        next = line.end;
        if (const auto value = valueInLine(configLine(line.contents), key))
            return value;
    }
    return std::nullopt;
}

bool isQuoted(std::u16string_view value) {
    return value.size() >= 2 && value.front() == u'"' && value.back() == u'"';
}

NSString unquoted(std::u16string_view value) {
    return NSString(isQuoted(value) ? value.substr(1, value.size() - 2) : value);
}

Value typed(std::u16string_view value) {
    if (isQuoted(value))
        return unquoted(value);
    static constexpr struct {
        std::u16string_view word;
        bool meaning;
    } booleans[] = {{u"yes", true}, {u"on", true},   {u"true", true},
                    {u"no", false}, {u"off", false}, {u"false", false}};
    for (const auto& [word, meaning] : booleans)
        if (CFStringCompareCaseInsensitive(value, word) == 0)
            return NSNumber::numberWithBool(meaning);

    // Longer ones than this are text to whoever wrote them.
    constexpr std::size_t longestNumber = 64;
    if (value.empty() || value.size() > longestNumber ||
        value.find_first_not_of(u"+-.0123456789eE") != value.npos)
        return NSString(value);
    std::string digits(value.begin(), value.end());
    if (digits.front() == '+' && digits.find_first_of("+-", 1) != 1)
        digits.erase(0, 1);
    const char *begin = digits.data(), *end = begin + digits.size();
    std::int64_t integer = 0;
    if (const auto [rest, error] = std::from_chars(begin, end, integer); error == std::errc() && rest == end)
        return integer == static_cast<std::int32_t>(integer)
                   ? NSNumber::numberWithInt(static_cast<std::int32_t>(integer))
                   : NSNumber::numberWithLongLong(integer);
    double real = 0;
    if (const auto [rest, error] = std::from_chars(begin, end, real); error == std::errc() && rest == end)
        return NSNumber::numberWithDouble(real);
    return NSString(value);
}

std::u16string_view withoutQuoteMarks(std::u16string_view line) {
    const CharacterSetRep white = whiteCharacterSetRep();
    std::size_t end = 0;
    for (std::size_t index = 0; index < line.size(); ++index) {
        if (line[index] == u'>' || line[index] == u'|')
            end = index + 1;
        else if (!unitIsInBitmap(white, line[index]))
            break;
    }
    return line.substr(end);
}

constexpr std::size_t unitsInDumpLine = 8;

void appendHexadecimal(NSMutableString& text, std::size_t number, int digits) {
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        text.appendCharacter(static_cast<char16_t>(upperHexDigits[number >> shift & 15]));
}

void appendDumpLine(NSMutableString& dump, std::u16string_view text, std::size_t start) {
    const std::u16string_view units = text.substr(start, unitsInDumpLine);
    appendHexadecimal(dump, start, 8);
    dump.appendCharacter(u':');
    for (const char16_t unit : units) {
        dump.appendCharacter(u' ');
        appendHexadecimal(dump, unit, 4);
    }
    for (std::size_t blanks = 5 * (unitsInDumpLine - units.size()) + 2; blanks > 0; --blanks)
        dump.appendCharacter(u' ');
    for (const char16_t unit : units)
        dump.appendCharacter(unit >= u' ' && unit < 0x7F ? unit : u'.');
}

} // namespace

NSArray configLines(const NSString& text) {
    if (text.isNil())
        return nullptr;
    std::vector<Value> lines;
    forEachLine(text, [&](const LineSpan& line) {
        if (const std::u16string_view contents = configLine(line.contents); !contents.empty())
            lines.emplace_back(NSString(contents));
    });
    return NSArray::arrayWithValues(std::move(lines));
}

NSString configValueForKey(const NSString& text, const NSString& key) {
    const auto value = rawValueForKey(text, key);
    return value ? unquoted(*value) : NSString();
}

Value typedValueForKeys(const NSString& text, const NSArray& keys) {
    for (const Value& key : keys)
        if (const auto value = rawValueForKey(text, key.string()))
            return typed(*value);
    return nullptr;
}

NSString reformattedMailing(const NSString& mail) {
    if (mail.isEmpty())
        return mail;
    NSMutableString unquotedMail = NSMutableString::stringWithCapacity(mail.length());
    forEachLine(mail, [&](const LineSpan& line) {
        unquotedMail.appendString(withoutQuoteMarks(line.contents));
        unquotedMail.appendString(line.ending);
    });
    return reformattedStringByRemovingCharactersOfString(unquotedMail.takeString(), nullptr);
}

NSArray dumpAsArray(const NSString& text) {
    if (text.isNil())
        return nullptr;
    std::vector<Value> lines;
    lines.reserve(text.length() / unitsInDumpLine + 1);
    for (std::size_t start = 0; start < text.length(); start += unitsInDumpLine) {
        NSMutableString line = NSMutableString::string();
        appendDumpLine(line, text, start);
        lines.emplace_back(line.takeString());
    }
    return NSArray::arrayWithValues(std::move(lines));
}

NSString dump(const NSString& text) {
    if (text.isNil())
        return nullptr;
    try {
        NSMutableString lines = NSMutableString::string();
        for (std::size_t start = 0; start < text.length(); start += unitsInDumpLine) {
            appendDumpLine(lines, text, start);
            lines.appendCharacter(u'\n');
        }
        return lines.takeString();
    } catch (const NSException&) {
        return nullptr;
    }
}

} // namespace kelvo
