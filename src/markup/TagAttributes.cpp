#include "markup/TagAttributes.h"

#include "text/CharacterSetReps.h"
#include "text/FoldingTables.h"

#include <algorithm>
#include <cstring>

namespace kelvo {

namespace {

bool isQuote(char16_t unit) {
    return unit == u'"' || unit == u'\'';
}

std::u16string_view partOf(std::u16string_view string, NSRange range) {
    return rangeFits(range, string.size()) ? string.substr(range.location, range.length)
                                           : std::u16string_view();
}

/// The tables and sets that the readers look characters up in, fetched once a call.
struct CharacterClasses {
    CharacterSetRep white = whiteCharacterSetRep();
    CharacterSetRep alphaNum = alphaNumCharacterSetRep();
    const char16_t* upper = initUpperCharsTable();

    bool isWhite(char16_t unit) const { return unitIsInBitmap(white, unit); }
    bool isAlphaNum(char16_t unit) const { return unitIsInBitmap(alphaNum, unit); }

    std::size_t skipWhite(std::u16string_view text, std::size_t index) const {
        while (index < text.size() && isWhite(text[index]))
            ++index;
        return index;
    }
    std::u16string_view withoutWhiteAtEnd(std::u16string_view text) const {
        while (!text.empty() && isWhite(text.back()))
            text.remove_suffix(1);
        return text;
    }
    /// Needs name.size() units.
    bool matches(const char16_t* units, std::string_view name, bool ignoringCase) const {
        for (std::size_t index = 0; index < name.size(); ++index) {
            const char16_t letter = static_cast<unsigned char>(name[index]);
            if (ignoringCase ? upper[units[index]] != upper[letter] : units[index] != letter)
                return false;
        }
        return true;
    }
    /// The index after the name at `index` and the separator that follows it; 0 when they are not there.
    std::size_t endOfNameAndSeparator(std::u16string_view text, std::size_t index, std::string_view name,
                                      char16_t separator, bool ignoringCase) const {
        if (!matches(text.data() + index, name, ignoringCase))
            return 0;
        index = skipWhite(text, index + name.size());
        return index < text.size() && text[index] == separator ? index + 1 : 0;
    }
};

NSString stringOrNil(std::u16string_view value) {
    return value.empty() ? NSString() : NSString(value);
}

/// Walks the text outside quotes; the index of the value of `name`, text.size() when there is none.
/// `mayFollow(unit)` tells whether a name may follow that character.
template <typename MayFollow>
std::size_t indexOfValue(std::u16string_view text, std::string_view name, char16_t separator,
                         bool ignoringCase, const CharacterClasses& classes, MayFollow mayFollow) {
    for (std::size_t index = 0; index < text.size() && text.size() - index > name.size(); ++index) {
        if (isQuote(text[index])) {
            index = text.find(text[index], index + 1);
            if (index == text.npos)
                break;
        } else if (index == 0 || mayFollow(text[index - 1])) {
            const std::size_t value =
                classes.endOfNameAndSeparator(text, index, name, separator, ignoringCase);
            if (value != 0)
                return classes.skipWhite(text, value);
        }
    }
    return text.size();
}

std::u16string_view nestedQuotedValue(std::u16string_view rest, char16_t quote,
                                      const CharacterClasses& classes) {
    std::ptrdiff_t depth = 0;
    for (std::size_t index = 0; index < rest.size(); ++index) {
        const char16_t unit = rest[index];
        if (unit == quote) {
            std::u16string_view value = rest.substr(0, index);
            if (depth == 1) {
                if (value.ends_with(u'<'))
                    value.remove_suffix(1);
                else if (value.ends_with(u"</"))
                    value.remove_suffix(2);
            }
            return value;
        }
        if (unit == u'<') {
            if (rest.size() - index > 4 && classes.matches(rest.data() + index + 1, "meta", true))
                return rest.substr(0, index);
            ++depth;
        } else if (unit == u'>') {
            if (depth == 0 && index > 0)
                return rest.substr(0, index);
            --depth;
        }
    }
    return rest;
}

} // namespace

std::u16string_view attributeValueOfTag(std::u16string_view tag, const char* name, bool nested) {
    const std::string_view attribute = name ? name : "";
    if (attribute.empty() || tag.size() <= attribute.size() + 5)
        return {};
    const CharacterClasses classes;
    const std::size_t start = indexOfValue(tag, attribute, u'=', true, classes,
                                           [&](char16_t unit) { return !classes.isAlphaNum(unit); });
    if (start == tag.size())
        return {};
    std::u16string_view value = tag.substr(start);
    if (!isQuote(value[0])) {
        std::size_t end = 0;
        while (end < value.size() && value[end] != u'>' && !classes.isWhite(value[end]))
            ++end;
        value = value.substr(0, end);
    } else if (nested) {
        value = nestedQuotedValue(value.substr(1), value[0], classes);
    } else {
        const char16_t ends[] = {value[0], u'>'};
        value.remove_prefix(1);
        value = value.substr(0, value.find_first_of(ends, 0, 2));
    }
    return classes.withoutWhiteAtEnd(value);
}

NSString _attributeOfTagCharactersWithName(const char16_t* characters, std::size_t tagLocation,
                                           std::size_t tagLength, const char* name, bool nested) {
    return stringOrNil(attributeValueOfTag({characters + tagLocation, tagLength}, name, nested));
}

namespace XmlExtensions {

NSString attributeOfTagCharacters_range_withName(const char16_t* characters, NSRange range,
                                                 const char* name) {
    return _attributeOfTagCharactersWithName(characters, range.location, range.length, name, false);
}

NSString attributeOfTagCharacters_length_withName(const char16_t* characters, std::size_t length,
                                                  const char* name) {
    return _attributeOfTagCharactersWithName(characters, 0, length, name, false);
}

} // namespace XmlExtensions

NSString _copyOfAttributeOfString(std::u16string_view string, const char* name, std::size_t nameLength,
                                  char16_t quote, bool stopAtWhite) {
    if (!name || nameLength == 0 || string.size() <= nameLength)
        return nullptr;
    const CharacterClasses classes;
    for (std::size_t index = 0; string.size() - index > nameLength; ++index) {
        std::size_t matched = 0;
        while (matched < nameLength &&
               classes.upper[string[index + matched]] == static_cast<unsigned char>(name[matched]))
            ++matched;
        if (matched < nameLength)
            continue;
        std::size_t start = classes.skipWhite(string, index + nameLength);
        if (start == string.size() || string[start] != u'=')
            continue;
        ++start;
        if (stopAtWhite)
            start = classes.skipWhite(string, start);
        std::u16string_view value = string.substr(start);
        if (value.starts_with(quote)) {
            value.remove_prefix(1);
            value = value.substr(0, value.find(quote));
        } else {
            std::size_t end = 0;
            while (end < value.size() && value[end] != u';' && !(stopAtWhite && classes.isWhite(value[end])))
                ++end;
            value = value.substr(0, end);
        }
        if (!value.empty())
            return NSString(value);
    }
    return nullptr;
}

NSString _attributeOfStringWithName(std::u16string_view string, std::size_t location, std::size_t length,
                                    const char* name, unsigned options, char16_t separator,
                                    char16_t terminator) {
    const std::u16string_view text = partOf(string, {location, length});
    const std::string_view attribute = name ? name : "";
    if (attribute.empty())
        return nullptr;
    const CharacterClasses classes;
    const std::size_t start =
        indexOfValue(text, attribute, separator, options & attributeIgnoresCase, classes, [&](char16_t unit) {
            return !classes.isAlphaNum(unit) && unit != u'-' && unit != u'_';
        });
    const std::u16string_view value = text.substr(start);
    const bool isOneToken = options & attributeValueIsOneToken;

    if (!value.empty() && isQuote(value[0])) {
        // The quotes go when they hold the whole value.
        const std::size_t closing = value.find(value[0], 1);
        if (closing == value.npos) {
            const std::u16string_view rest = value.substr(1);
            return stringOrNil(classes.withoutWhiteAtEnd(rest.substr(0, rest.find(terminator))));
        }
        const std::size_t behind = classes.skipWhite(value, closing + 1);
        if (isOneToken || behind == value.size() || value[behind] == terminator)
            return stringOrNil(classes.withoutWhiteAtEnd(value.substr(1, closing - 1)));
    }
    std::size_t end = 0;
    for (; end < value.size() && value[end] != terminator; ++end) {
        if (isOneToken && classes.isWhite(value[end]))
            break;
        if (!isOneToken && isQuote(value[end])) {
            const std::size_t closing = value.find(value[end], end + 1);
            if (closing != value.npos)
                end = closing;
        }
    }
    return stringOrNil(classes.withoutWhiteAtEnd(value.substr(0, end)));
}

NSString attributeOfTagWithName(std::u16string_view tag, const char* name) {
    return attributeOfTagInRange_withName(tag, {0, tag.size()}, name);
}

NSString attributeOfTagInRange_withName(std::u16string_view string, NSRange range, const char* name) {
    return _attributeOfStringWithName(string, range.location, range.length, name, attributeOptionsOfTag, u'=',
                                      u'>');
}

NSString attributeOfStyleWithName(std::u16string_view style, const char* name) {
    return attributeOfStyleInRange_withName(style, {0, style.size()}, name);
}

NSString attributeOfStyleInRange_withName(std::u16string_view string, NSRange range, const char* name) {
    return _attributeOfStringWithName(string, range.location, range.length, name, attributeOptionsOfStyle,
                                      u':', u';');
}

} // namespace kelvo
