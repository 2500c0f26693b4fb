// What all members of the string family have in common: nil, emptiness, identity, and that the two forms of a
// member agree with each other and with the obvious way to do the same.

#include "text/CopyingForm.h"
#include "text/FoldingTables.h"
#include "text/NSMutableStringKelvoExtensions.h"
#include "text/NSStringKelvoExtensions.h"
#include "text/NSStringTextFinding.h"
#include "text/UnitBitmap.h"

#include "platform/foundation/encodings/NSCharacterSet.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

namespace kelvo {
namespace {

using Text = std::u16string;
using Form = CFStringNormalizationForm;

using Test = std::function<bool(char16_t)>;
using Reference = std::function<Text(Text)>;

Test in(CharacterSetRep rep) {
    return [rep](char16_t unit) { return rep[unit / 8] >> unit % 8 & 1; };
}

Test spaceOrFeed() {
    return [](char16_t unit) { return in(spaceCharacterSetRep())(unit) || in(feedCharacterSetRep())(unit); };
}

Reference without(Test isRemoved) {
    return [=](Text text) {
        std::erase_if(text, isRemoved);
        return text;
    };
}

Reference trimmed(Test isTrimmed, bool left = true, bool right = true) {
    return [=](Text text) {
        while (left && !text.empty() && isTrimmed(text.front()))
            text.erase(0, 1);
        while (right && !text.empty() && isTrimmed(text.back()))
            text.pop_back();
        return text;
    };
}

Reference mapped(std::function<unsigned(char16_t)> map) {
    return [=](Text text) {
        for (char16_t& unit : text)
            unit = static_cast<char16_t>(map(unit));
        return text;
    };
}

Text upper(Text text) {
    return mapped(toUpper)(text);
}

Reference replaced(Text target, Text replacement, bool caseSensitive) {
    return [=](Text text) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            const Text part = text.substr(at, target.size());
            if (caseSensitive ? part == target : upper(part) == upper(target)) {
                text.replace(at, target.size(), replacement);
                at += replacement.size() - 1;
            }
        }
        return text;
    };
}

Text withoutDoubleSpaces(Text text) {
    const Test isSpace = in(spaceCharacterSetRep());
    for (std::size_t at = 1; at < text.size();)
        isSpace(text[at]) && isSpace(text[at - 1]) ? void(text.erase(at, 1)) : void(++at);
    return text;
}

Text lettersForComparison(Text text) {
    return upper(without([](char16_t unit) { return !in(alphaNumCharacterSetRep())(unit); })(text));
}

Text fixed(Text text) {
    for (char16_t& unit : text)
        if ((unit >= 0xD800 && unit <= 0xDFFF) || (unit >= 0xF400 && unit <= 0xF8FF))
            unit = u' ';
    return Text(normalizedString(NSString(std::u16string_view(text))).characters());
}

const Test isX = [](char16_t unit) { return unit == u'x'; };
const auto white = bitmap(NSCharacterSet::whitespaceAndNewlineCharacterSet());
constexpr std::u16string_view some = u"xA\u00E9\xD83D";
const UnitBitmap someBitmap(some);
constexpr std::u16string_view five = u"\u00E9A x\t";
constexpr std::u16string_view many = u"abcdefghijklmnopqrstuvwxyz\xD83D\x00DF";

/// Either form may be missing, and so may the reference, where there is none that would not be the same
/// again.
struct Member {
    const char* name;
    std::function<NSString(const NSString&)> copy;
    std::function<void(NSMutableString&)> change;
    Reference expected;
};

template <class Copy, class Change, class... Arguments>
Member both(const char* name, Copy copy, Change change, Reference expected, Arguments... arguments) {
    return {name, [=](const NSString& string) { return copy(string, arguments...); },
            [=](NSMutableString& string) { change(string, arguments...); }, expected};
}

template <class Copy, class... Arguments>
Member copying(const char* name, Copy copy, Reference expected, Arguments... arguments) {
    return {name, [=](const NSString& string) { return copy(string, arguments...); }, {}, expected};
}

template <class Change, class... Arguments>
Member changing(const char* name, Change change, Reference expected, Arguments... arguments) {
    return {name, {}, [=](NSMutableString& string) { change(string, arguments...); }, expected};
}

void trimAllOver(NSMutableString& string, bool andFeeds) {
    trimSpacesInRange_andFeeds(string, {0, string.length()}, andFeeds);
}

const Reference unchanged = [](Text text) { return text; };
const NSString nil, a = u"a";
constexpr auto normalized = static_cast<NSString (*)(const NSString&)>(normalizedString);
constexpr auto normalize = static_cast<void (*)(NSMutableString&)>(normalizeString);
constexpr auto normalizedForm = static_cast<NSString (*)(const NSString&, Form)>(normalizedString);
constexpr auto normalizeForm = static_cast<void (*)(NSMutableString&, Form)>(normalizeString);

const Member members[] = {
    both("trim WhiteSpaces", stringByTrimmingWhiteSpaces, trimWhiteSpaces, trimmed(in(white))),
    both("trim Character", stringByTrimmingCharacter, trimCharacter, trimmed(isX), u'x'),
    both("trim Prefix", stringByTrimmingPrefixCharacter, trimPrefixCharacter, trimmed(isX, true, false),
         u'x'),
    both("trim Suffix", stringByTrimmingSuffixCharacter, trimSuffixCharacter, trimmed(isX, false, true),
         u'x'),
    copying("trim Enclosing", stringByTrimmingEnclosingCharacter, {}, u'x'),
    copying("trim Ellipsis", stringByTrimmingEllipsis, {}),
    both("trim Feeds", stringByTrimmingFeeds, trimFeeds, trimmed(in(feedCharacterSetRep()))),
    copying("trim Digits", stringByTrimmingDigits, trimmed(in(digitCharacterSetRep()))),
    both("trim Spaces", stringByTrimmingSpacesAndFeeds, trimAllOver, trimmed(in(spaceCharacterSetRep())),
         false),
    both("trim SpacesAndFeeds", stringByTrimmingSpacesAndFeeds, trimAllOver, trimmed(spaceOrFeed()), true),
    copying("trim LeftSide", stringByTrimmingSpacesOfLeftSideAndFeeds, trimmed(spaceOrFeed(), true, false),
            true),
    copying("trim RightSide", stringByTrimmingSpacesOfRightSideAndFeeds,
            trimmed(in(spaceCharacterSetRep()), false, true), false),
    both("trim no range", stringByTrimmingSpacesInRange_andFeeds, trimSpacesInRange_andFeeds, unchanged,
         NSRange{0, 100}, true),
    changing("trim WhiteSpacesInRange", trimWhiteSpacesInRange, {}, NSRange{0, 3}),

    both("remove CharactersOfString", stringByRemovingCharactersOfString, removeCharactersOfString,
         without(in(someBitmap.rep())), some),
    both("remove five", stringByRemovingCharactersOfString, removeCharactersOfString,
         without([](char16_t unit) { return five.find(unit) != five.npos; }), five),
    both("remove many", stringByRemovingCharactersOfString, removeCharactersOfString,
         without([](char16_t unit) { return many.find(unit) != many.npos; }), many),
    both("remove nil", stringByRemovingCharactersOfString, removeCharactersOfString, unchanged, nil),
    both("remove Characters", stringByRemovingCharacters, removeCharacters, without(in(someBitmap.rep())),
         someBitmap.rep()),
    both("remove null", stringByRemovingCharacters, removeCharacters, unchanged, nullptr),
    both("remove Tabs", stringByRemovingTabs, removeTabs, without([](char16_t unit) { return unit == 9; })),
    both("remove Feeds", stringByRemovingFeeds, removeFeeds, without(in(feedCharacterSetRep()))),
    both("remove Spaces", stringByRemovingSpaces, removeSpaces, without(in(spaceCharacterSetRep()))),
    both("remove White", stringByRemovingWhiteCharacters, removeWhiteCharacters,
         without(in(whiteCharacterSetRep()))),
    both("remove Digits", stringByRemovingDigits, removeDigits, without(in(digitCharacterSetRep()))),
    changing("remove Attachments", removeAttachments, without([](char16_t unit) { return unit == 0xFFFC; })),
    changing("remove MultipleSpaces", removeMultipleSpaces, withoutDoubleSpaces),
    both("remove MultipleFeeds", stringByRemovingMultipleFeeds, removeMultipleFeeds, {}),
    both("remove Multiples", stringByRemovingMultipleSpacesAndFeeds, removeMultipleSpacesAndFeeds, {}, true),
    copying("uppercase, no Digits", uppercaseStringByRemovingDigits, {}),
    copying("lowercase, no Digits", lowercaseStringByRemovingDigits, {}),
    copying("remove NonAlphaNumeric", caseInsensitiveStringByRemovingNonAlphaNumericCharacters,
            lettersForComparison),

    both("replace", stringByReplacingString_withString, replaceString_withString, replaced(u"aA", u"a", true),
         u"aA", a),
    both("replace by a longer one", stringByReplacingString_withString_caseSensitive,
         replaceString_withString_caseSensitive, replaced(u"a", u"aXa", false), a, NSString(u"aXa"), false),
    both("replace by itself", stringByReplacingString_withString, replaceString_withString, unchanged, a, a),
    both("replace nil", stringByReplacingString_withString, replaceString_withString, unchanged, nil, a),
    both("replace by nil", stringByReplacingString_withString, replaceString_withString, unchanged, a, nil),
    changing("delete", deleteString, replaced(u"aa", u"", true), u"aa"),
    both("replace Character", stringByReplacingCharacter_withCharacter_caseSensitive,
         replaceCharacter_withCharacter_caseSensitive, replaced(u"a", u"o", true), u'a', u'o', false),
    changing("encode Tabs", encodeTabs, {}, 4u),
    changing("decode Tabs", decodeTabs, {}, 4u),
    copying("rotate", stringByRotating, {}, -27),

    both("normalized", normalized, normalize, {}),
    both("normalized D", normalizedForm, normalizeForm, {}, Form::D),
    both("normalized lowercase", normalizedLowercaseString, normalizeLowercaseString, {}),
    both("normalized uppercase", normalizedUppercaseString, normalizeUppercaseString, {}),
    both("fixed", fixedAndNormalizedString, fixAndNormalizeString, fixed),
    changing("uppercase", uppercase, {}),
    changing("lowercase", lowercase, {}),
    changing("capitalize", capitalize, {}),

    copying("nonUmlauted", nonUmlautedString, mapped(umlautsToAscii)),
    copying("uppercase nonUmlauted", uppercaseNonUmlautedString, mapped(umlautsToUpperAscii)),
    copying("lowercase nonUmlauted", lowercaseNonUmlautedString, mapped(umlautsToLowerAscii)),
    copying("ascii", asciiString, mapped(toAscii)),
    copying("uppercase ascii", uppercaseAsciiString, mapped(toUpperAscii)),
    copying("lowercase ascii", lowercaseAsciiString, mapped(toLowerAscii)),
    copying("nonUmlauted normalized", nonUmlautedNormalizedString, {}),
    copying("uppercase nonUmlauted normalized", uppercaseNonUmlautedNormalizedString, {}),
    copying("lowercase nonUmlauted normalized", lowercaseNonUmlautedNormalizedString, {}),
    copying("reformatted", reformattedStringByRemovingCharactersOfString, {}, a),
    copying("feedOfLine", feedOfLine, {}),
};

void check(const Member& member, const Text& text) {
    const NSString receiver = NSString(std::u16string_view(text));
    Text changed = text;
    if (member.change) {
        NSMutableString string(receiver);
        member.change(string);
        changed = string.characters();
    }
    if (member.copy) {
        const NSString copy = member.copy(receiver);
        EXPECT_EQ(receiver.characters(), text);
        EXPECT_EQ(copy.isIdenticalTo(receiver), copy == receiver);
        if (member.change) {
            EXPECT_EQ(Text(copy.characters()), changed);
        }
        changed = copy.characters();
    }
    if (member.expected) {
        EXPECT_EQ(changed, member.expected(text));
    }
}

TEST(StringFamilyTest, nilStaysNilAndEmptyStaysItself) {
    for (const Member& member : members) {
        SCOPED_TRACE(member.name);
        EXPECT_TRUE(!member.copy || member.copy(NSString()).isNil());
        NSMutableString none;
        if (member.change)
            member.change(none);
        EXPECT_TRUE(none.isNil());
        check(member, u"");
    }
}

TEST(StringFamilyTest, bothFormsAgreeWithTheObviousWay) {
    // Few kinds of units, in runs, so that there is something for every member.
    static constexpr std::u16string_view kinds =
        u"aaaAxxb zZ19\u0663   "
        u"\t\t\n\r\u2028\uFEFF\uFFFC\u00A0\u0085\u0000.."
        u"\u2026\u00C4\u00E9\u00DF\u0130e\u0301\u0323\u212A\u017F\xD83D\xDE00\uF400\uF8FF\u4E2D\u0958";
    std::mt19937 random(20261121);
    for (int round = 0; round < 300; ++round) {
        Text text;
        for (std::size_t length = random() % 90; text.size() < length;)
            text.append(1 + random() % 3, kinds[random() % kinds.size()]);
        for (const Member& member : members) {
            SCOPED_TRACE(member.name);
            check(member, text);
        }
    }
}

TEST(StringFamilyTest, whatIsPartOfTheReceiver) {
    NSMutableString string = NSMutableString::stringWithCharacters(u"abcabc ");
    const auto contents = [&] { return Text(string.characters()); };
    appendTrimmedString(string, string);
    EXPECT_EQ(contents(), u"abcabc abcabc");
    appendSubstring_range(string, string, {6, 3});
    EXPECT_EQ(contents(), u"abcabc abcabc ab");
    appendCharacters_length(string, string.characters().data(), 2);
    EXPECT_EQ(contents(), u"abcabc abcabc abab");
    deleteString(string, string.characters().substr(1, 2));
    EXPECT_EQ(contents(), u"aa aa abab");
    replaceString_withString(string, string.characters().substr(0, 1), u"xy");
    EXPECT_EQ(contents(), u"xyxy xyxy xybxyb");
    removeCharactersOfString(string, string.characters().substr(0, 1));
    EXPECT_EQ(contents(), u"yy yy ybyb");
    removeCharactersOfString(string, string);
    EXPECT_EQ(string, u"");
}

TEST(StringFamilyTest, lengthsThatNoStringCanHave) {
    constexpr std::size_t most = 0x3FFFFFFF, huge = ~std::size_t{0};
    const std::tuple<const char*, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t> rows[] = {
        {"none", 10, 0, 3, huge, 10},
        {"shorter", most, 1000, 3, 0, most - 3000},
        {"as long as can be", most - 5, 5, 1, 2, most},
        {"one more", most - 4, 5, 1, 2, NSNotFound},
        {"the product does not fit 64 bits", 1 << 20, 1 << 20, 1, huge / 2, NSNotFound},
        {"the product wraps to little", 4, 4, 1, (huge >> 2) + 1, NSNotFound},
    };
    for (const auto& [name, length, count, oldLength, newLength, expected] : rows)
        EXPECT_EQ(lengthAfterReplacing(length, count, oldLength, newLength), expected) << name;

    NSMutableString string = NSMutableString::stringWithCharacters(u"a\tb");
    decodeTabs(string, most);
    decodeTabs(string, huge);
    appendCharacters_length(string, u"x", most);
    appendCharacters_length(string, u"x", huge);
    appendSubstring_range(string, u"abc", {1, huge});
    EXPECT_EQ(string, u"a\tb");
}

} // namespace
} // namespace kelvo
