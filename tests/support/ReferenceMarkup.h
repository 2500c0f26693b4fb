#pragma once

#include "markup/EntityTable.h"
#include "markup/TagScanner.h"
#include "text/CharacterSetReps.h"
#include "text/FoldingTables.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::reference {

// Slow and obvious forms of the tag scanner and of the decoder of references, one character and one flag at a
// time, beside which the fast ones are tested and fuzzed.

/// The arguments of one call of a handler.
struct Call {
    std::size_t nameLocation, nameLength, tagLocation, tagLength, textLocation;
    TagKind kind;

    friend bool operator==(const Call&, const Call&) = default;
};

inline bool record(const NSString&, char16_t*, std::size_t nameLocation, std::size_t nameLength,
                   std::size_t tagLocation, std::size_t tagLength, std::size_t textLocation, TagKind kind,
                   void* context) {
    static_cast<std::vector<Call>*>(context)->push_back(
        {nameLocation, nameLength, tagLocation, tagLength, textLocation, kind});
    return false;
}

inline std::size_t firstOf(const std::u16string& lowerText, std::u16string_view wanted, std::size_t start) {
    return std::min(lowerText.find(wanted, start), lowerText.size());
}

/// What a handler gets that never stops the scan.
inline std::vector<Call> scan(std::u16string_view text) {
    std::vector<Call> calls;
    const std::size_t n = text.size();
    std::u16string lowerText(text);
    for (char16_t& unit : lowerText)
        unit = unit >= 'A' && unit <= 'Z' ? unit + 32 : unit;
    std::size_t t = 0, x = 0, i = 0;
    int k = 0;
    bool single = false, isDouble = false, afterEquals = false, shortComment = false;
    while (i < n) {
        const char16_t c = text[i];
        if (c == '"' && k == 1) {
            if (afterEquals && !isDouble)
                isDouble = true, afterEquals = false;
            else if (!afterEquals)
                isDouble = false;
        } else if (c == '\'' && k == 1) {
            if (afterEquals && !single)
                single = true, afterEquals = false;
            else if (!afterEquals)
                single = false;
        } else if (c == '=' && k == 1 && !single && !isDouble) {
            afterEquals = true;
        } else if (c == '<' && k == 0) {
            t = i;
            k = 1;
            if (i + 2 < n && text[i + 1] == '!' && (text[i + 2] == '-' || text[i + 2] == '[')) {
                k = text[i + 2] == '-' ? 2 : 3;
                shortComment = k == 2 && i + 3 < n && text[i + 3] != '-';
                i += 3;
                continue;
            }
        } else if (c == '>' && k != 0 && !single && !isDouble) {
            const std::u16string_view before = text.substr(t, i - t);
            const bool ends =
                k == 1 ||
                (k == 2 && (before.ends_with(u"--") || (shortComment && before.ends_with(u'-')) ||
                            (!shortComment && before.ends_with(u"--!")))) ||
                (k == 3 && (before.ends_with(u']') || before.ends_with(u"]--")));
            if (ends) {
                std::size_t name = NSNotFound, nameLength = 0, last = i;
                for (std::size_t j = t + 1; k == 1 && j < i && name == NSNotFound; ++j) {
                    if (unitIsInBitmap(alphaCharacterSetRep(), text[j]))
                        name = j;
                }
                while (name != NSNotFound && name + nameLength < i &&
                       !unitIsInBitmap(whiteCharacterSetRep(), text[name + nameLength]) &&
                       text[name + nameLength] != '/' && text[name + nameLength] != '>')
                    ++nameLength;
                const std::u16string element =
                    nameLength == 5 || nameLength == 6 ? lowerText.substr(name, nameLength) : u"";
                if ((element == u"style" || element == u"script") && text[t + 1] != '/' &&
                    text[i - 1] != '/') {
                    const std::u16string endTag = u"</" + element;
                    std::size_t e = firstOf(lowerText, endTag, t + 1);
                    const std::size_t open = firstOf(lowerText, u"<!-", t);
                    if (e < n && open < e) {
                        const std::size_t close = firstOf(lowerText, u"-->", open + 3);
                        const std::size_t later = firstOf(lowerText, endTag, close);
                        if (close < n && later < n)
                            e = later;
                    }
                    if (e < n)
                        last = std::min(firstOf(lowerText, u">", e + endTag.size()), n - 1);
                }
                calls.push_back({name, nameLength, t, last + 1 - t, x, static_cast<TagKind>(k)});
                x = last + 1;
                i = last;
                k = 0;
                single = isDouble = afterEquals = false;
            }
        }
        ++i;
    }
    if (k == 2 || k == 3) {
        calls.push_back({NSNotFound, 0, t, n - t, x, static_cast<TagKind>(k)});
        x = n;
    }
    calls.push_back({NSNotFound, 0, n, 0, x, TagKind::text});
    return calls;
}

inline std::u16string decode(std::u16string_view text, bool standard, bool onlyNumeric, bool nonUmlauted) {
    std::u16string result;
    const auto write = [&](unsigned unit) {
        result += static_cast<char16_t>(nonUmlauted ? umlautsToAscii(static_cast<char16_t>(unit)) : unit);
    };
    struct Fixed {
        std::u16string_view name;
        char16_t character;
        bool isStandard;
    };
    static const Fixed fixedForms[] = {{u"nbsp", 0xA0, false}, {u"apos", '\'', false}, {u"quot", '"', true},
                                       {u"amp", '&', true},    {u"lt", '<', true},     {u"gt", '>', true}};
    for (std::size_t a = 0; a < text.size(); ++a) {
        if (text[a] != '&') {
            write(text[a]);
            continue;
        }
        const std::u16string_view rest = text.substr(a + 1);
        std::size_t length = 0;
        unsigned value = 0;
        const auto fixed = std::find_if(std::begin(fixedForms), std::end(fixedForms), [&](const Fixed& form) {
            return rest.starts_with(form.name) && (standard || !form.isStandard);
        });
        if (fixed != std::end(fixedForms)) {
            length = fixed->name.size();
            value = fixed->character;
        } else if (rest.starts_with(u'#')) {
            const bool isHex = rest.size() > 1 && (rest[1] == 'x' || rest[1] == 'X');
            const std::u16string_view digits = isHex ? u"0123456789abcdefABCDEF" : u"0123456789";
            const std::size_t first = isHex ? 2 : 1;
            length = std::min(rest.find_first_not_of(digits, first), rest.size());
            if (length == first || length + 1 > 7)
                length = 0;
            for (std::size_t j = first; j < length; ++j) {
                const std::size_t digit = digits.find(rest[j]);
                value = value * (isHex ? 16 : 10) + static_cast<unsigned>(digit < 16 ? digit : digit - 6);
            }
        } else if (!onlyNumeric) {
            while (length < rest.size() && unitIsInBitmap(alphaNumCharacterSetRep(), rest[length]))
                ++length;
            std::size_t entity = 0;
            const std::u16string_view name = rest.substr(0, length);
            while (entity < entityCount &&
                   !std::equal(name.begin(), name.end(), entityNames[entity],
                               entityNames[entity] + std::string_view(entityNames[entity]).size()))
                ++entity;
            value = entityCharacters[entity];
            if (entity == entityCount || length + 1 > 7)
                length = 0;
        }
        const auto unit = static_cast<char16_t>(value);
        if (length != 0 && (standard || (unit != '<' && unit != '>' && unit != '&' && unit != '"'))) {
            write(unit);
            a += length + (length < rest.size() && rest[length] == ';');
        } else {
            write('&');
        }
    }
    return result;
}

} // namespace kelvo::reference
