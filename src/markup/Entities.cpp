#include "markup/Entities.h"

#include "markup/EntityTable.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/foundation/units/UnitScan.h"
#include "text/CharacterSetReps.h"
#include "text/FoldingTables.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace kelvo {

namespace {

constexpr UnitsToFind ampersand{{u'&', u'&', u'&', u'&'}, 1};
constexpr UnitsToFind markupUnits{{u'&', u'"', u'<', u'>'}, 4};

/// The longest text of a reference between "&" and its end. With the character that ends it, it has 7 at
/// most, so that names of 7 letters and numbers of 6 digits are text.
constexpr std::size_t longestReference = 6;
/// Nothing shorter is looked at in whole strings: "&lt;" is the shortest complete reference.
constexpr std::size_t shortestConvertedString = 4;

/// What follows a "&": the character and how many units make it, 0 when they are no reference.
struct Reference {
    char16_t character;
    std::size_t length;
};
constexpr Reference noReference{0, 0};

bool isMarkupUnit(char16_t unit) {
    return unit == u'<' || unit == u'>' || unit == u'&' || unit == u'"';
}

/// A reference that is `name` whatever follows it. `text` begins after the "&".
Reference fixedReference(std::u16string_view text, std::u16string_view name, char16_t character) {
    if (!text.starts_with(name))
        return noReference;
    const bool hasSemicolon = text.size() > name.size() && text[name.size()] == u';';
    return {character, name.size() + hasSemicolon};
}

Reference standardReference(std::u16string_view text) {
    if (text.empty())
        return noReference;
    switch (text[0]) {
    case u'a':
        return fixedReference(text, u"amp", u'&');
    case u'g':
        return fixedReference(text, u"gt", u'>');
    case u'l':
        return fixedReference(text, u"lt", u'<');
    case u'q':
        return fixedReference(text, u"quot", u'"');
    default:
        return noReference;
    }
}

/// `text` begins with the "#" and is cut where a reference would be too long.
Reference numericReference(std::u16string_view text) {
    const bool isHexadecimal = text.size() > 1 && asciiLowerCase(text[1]) == u'x';
    const int base = isHexadecimal ? 16 : 10;
    const std::size_t digits = isHexadecimal ? 2 : 1;
    std::size_t index = digits;
    unsigned value = 0;
    for (; index < text.size(); ++index) {
        const int digit = hexDigitValue(text[index]);
        if (digit < 0 || digit >= base)
            break;
        value = value * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
    }
    return {static_cast<char16_t>(value), index == digits ? 0 : index};
}

struct Decoding {
    bool standardEntities;
    bool onlyNumericEntities;
    CharacterSetRep alphaNum = alphaNumCharacterSetRep();

    /// `text` is all that follows the "&".
    Reference operator()(std::u16string_view text) const {
        if (text.empty())
            return noReference;
        Reference reference = noReference;
        if (text[0] == u'#') {
            // One unit past the limit tells what is too long.
            reference = numericReference(text.substr(0, longestReference + 1));
        } else {
            if (text[0] == u'n')
                reference = fixedReference(text, u"nbsp", 0x00A0);
            else if (text[0] == u'a')
                reference = fixedReference(text, u"apos", u'\'');
            if (reference.length == 0 && standardEntities)
                reference = standardReference(text);
            if (reference.length != 0)
                return reference;
            if (onlyNumericEntities)
                return noReference;
            std::size_t length = 0;
            while (length < text.size() && length <= longestReference &&
                   unitIsInBitmap(alphaNum, text[length]))
                ++length;
            if (length > 1 && length <= longestReference)
                reference = {characterOfEntityName(text.substr(0, length)), length};
            if (reference.character == 0)
                return noReference;
        }
        if (reference.length == 0 || reference.length > longestReference)
            return noReference;
        if (!standardEntities && isMarkupUnit(reference.character))
            return noReference;
        if (reference.length < text.size() && text[reference.length] == u';')
            ++reference.length;
        return reference;
    }
};

/// Copies to a place that may overlap from the left.
char16_t* copied(const char16_t* from, std::size_t count, char16_t* to) {
    if (to != from)
        std::memmove(to, from, count * sizeof(char16_t));
    return to + count;
}

char16_t* copiedFolded(const char16_t* from, std::size_t count, char16_t* to, const char16_t* foldTable) {
    for (const char16_t* end = from + count; from < end;) {
        const std::size_t ascii = firstNonAsciiUnit(from, static_cast<std::size_t>(end - from));
        to = copied(from, ascii, to);
        for (from += ascii; from < end && *from >= 128; ++from)
            *to++ = foldTable[*from];
    }
    return to;
}

/// `foldTable` may be null. `decode` gives the Reference in the text after a "&".
template <typename Decode>
std::size_t convert(const char16_t* source, std::size_t length, char16_t* destination,
                    const char16_t* foldTable, const Decode& decode) {
    const char16_t *from = source, *const end = source + length, *at = source;
    char16_t* to = destination;
    const auto copyUpTo = [&](const char16_t* limit) {
        const auto count = static_cast<std::size_t>(limit - from);
        to = foldTable ? copiedFolded(from, count, to, foldTable) : copied(from, count, to);
    };
    while (true) {
        at += firstUnitEqualTo(at, static_cast<std::size_t>(end - at), ampersand);
        if (at == end)
            break;
        const Reference reference = decode({at + 1, static_cast<std::size_t>(end - at - 1)});
        if (reference.length == 0) {
            ++at;
            continue;
        }
        copyUpTo(at);
        *to++ = foldTable ? foldTable[reference.character] : reference.character;
        at += 1 + reference.length;
        from = at;
    }
    copyUpTo(end);
    return static_cast<std::size_t>(to - destination);
}

/// `convertTo(buffer)` writes at most string.length() units and returns their number.
template <typename Convert>
NSString converted(const NSString& string, Convert convertTo) {
    std::array<char16_t, 256> onStack;
    const std::size_t length = string.length();
    const bool isShort = length <= onStack.size();
    auto* units = isShort ? onStack.data() : static_cast<char16_t*>(std::malloc(length * sizeof(char16_t)));
    if (!units)
        return string;
    const std::size_t written = convertTo(units);
    const std::u16string_view result(units, written);
    if (result == string.characters()) {
        if (!isShort)
            std::free(units);
        return string;
    }
    if (isShort)
        return NSString(result);
    // Giving a little back costs more than keeping it.
    if (written < length - length / 4) {
        if (auto* shrunk = static_cast<char16_t*>(std::realloc(units, std::max<std::size_t>(written, 1) * 2)))
            units = shrunk;
    }
    return NSString::stringWithCharactersNoCopy(units, written);
}

bool hasNoAmpersand(const NSString& string) {
    return firstUnitEqualTo(string.characters().data(), string.length(), ampersand) == string.length();
}

void appendNumericReference(NSMutableString& result, char16_t unit) {
    char16_t text[8];
    char16_t* const end = text + std::size(text);
    char16_t* begin = end;
    *--begin = u';';
    for (unsigned rest = unit; rest != 0; rest /= 10)
        *--begin = static_cast<char16_t>(u'0' + rest % 10);
    *--begin = u'#';
    *--begin = u'&';
    result.appendString({begin, static_cast<std::size_t>(end - begin)});
}

void appendMarkupReference(NSMutableString& result, char16_t unit) {
    result.appendString(unit == u'&'   ? u"&amp;"
                        : unit == u'"' ? u"&quot;"
                        : unit == u'<' ? u"&lt;"
                                       : u"&gt;");
}

/// Copies what `firstToChange(units, count)` passes over, and lets `append(result, unit)` write what it
/// finds.
template <typename FirstToChange, typename Append>
NSString escaped(const NSString& string, FirstToChange firstToChange, Append append) {
    const std::u16string_view text = string.characters();
    std::size_t found = firstToChange(text.data(), text.size());
    if (found == text.size())
        return string;
    try {
        NSMutableString result = NSMutableString::stringWithCapacity(text.size() + text.size() / 8 + 16);
        for (std::size_t start = 0;;) {
            result.appendString(text.substr(start, found - start));
            if (found == text.size())
                return result.takeString();
            append(result, text[found]);
            start = found + 1;
            found = start + firstToChange(text.data() + start, text.size() - start);
        }
    } catch (const NSException&) {
        return string;
    }
}

/// The units that need a reference when high characters do too.
constexpr std::array<std::uint8_t, characterSetRepSizeInBytes> markupAndHighUnits = [] {
    std::array<std::uint8_t, characterSetRepSizeInBytes> bitmap{};
    for (std::size_t index = 128 / 8; index < bitmap.size(); ++index)
        bitmap[index] = 0xFF;
    for (const char16_t unit : markupUnits.units)
        bitmap[unit >> 3] |= static_cast<std::uint8_t>(1u << (unit & 7));
    return bitmap;
}();

} // namespace

std::size_t convertEntities2Characters(const char16_t* source, char16_t* destination, std::size_t location,
                                       std::size_t length, bool standardEntities, bool onlyNumericEntities,
                                       bool nonUmlauted) {
    return convert(source + location, length, destination, nonUmlauted ? initUmlautsCharsTable() : nullptr,
                   Decoding{standardEntities, onlyNumericEntities});
}

NSString stringByConvertingEntitiesToCharacters_onlyNumericEntities_nonUmlauted(const NSString& string,
                                                                                bool standardEntities,
                                                                                bool onlyNumericEntities,
                                                                                bool nonUmlauted) {
    if (string.length() < shortestConvertedString || (!nonUmlauted && hasNoAmpersand(string)))
        return string;
    return converted(string, [&](char16_t* units) {
        return convertEntities2Characters(string.characters().data(), units, 0, string.length(),
                                          standardEntities, onlyNumericEntities, nonUmlauted);
    });
}

NSString stringByConvertingEntitiesToCharacters(const NSString& string) {
    return stringByConvertingEntitiesToCharacters_onlyNumericEntities_nonUmlauted(string, true, false, false);
}

NSString stringByConvertingEntitiesToCharactersNonUmlauted(const NSString& string, bool nonUmlauted) {
    return stringByConvertingEntitiesToCharacters_onlyNumericEntities_nonUmlauted(string, true, false,
                                                                                  nonUmlauted);
}

NSString stringByConvertingStandardEntitiesToCharacters(const NSString& string) {
    if (string.length() < shortestConvertedString || hasNoAmpersand(string))
        return string;
    return converted(string, [&](char16_t* units) {
        return convert(string.characters().data(), string.length(), units, nullptr, standardReference);
    });
}

NSString stringByConvertingCharactersToEntities(const NSString& string, bool highCharacters) {
    const auto append = [](NSMutableString& result, char16_t unit) {
        if (unit < 128)
            appendMarkupReference(result, unit);
        else
            appendNumericReference(result, unit);
    };
    if (!highCharacters)
        return escaped(
            string,
            [](const char16_t* units, std::size_t count) {
                return firstUnitEqualTo(units, count, markupUnits);
            },
            append);
    return escaped(
        string,
        [](const char16_t* units, std::size_t count) {
            return firstUnitInBitmap(units, count, markupAndHighUnits.data());
        },
        append);
}

NSString stringByConvertingCharactersToStandardEntities(const NSString& string) {
    return stringByConvertingCharactersToEntities(string, false);
}

NSString stringByConvertingHighCharactersToEntities(const NSString& string) {
    return stringByConvertingCharactersToEntities(string, true);
}

NSString stringByConvertingCharactersToEntities(const NSString& string) {
    return escaped(string, firstNonAsciiUnit, [](NSMutableString& result, char16_t unit) {
        if (const char* name = entityNameOfCharacter(unit)) {
            result.appendCharacter(u'&');
            for (; *name != 0; ++name)
                result.appendCharacter(static_cast<unsigned char>(*name));
            result.appendCharacter(u';');
        } else {
            appendNumericReference(result, unit);
        }
    });
}

} // namespace kelvo
