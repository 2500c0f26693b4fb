// What all members of the string family have in common: nil, emptiness, identity, and that the two forms of a
// member agree with each other and with the obvious way to do the same.

#include "text/CopyingForm.h"
#include "text/FoldingTables.h"
#include "text/NSMutableStringKelvoExtensions.h"
#include "text/NSStringKelvoExtensions.h"
#include "text/UnitBitmap.h"

#include "platform/foundation/CFString.h"
#include "platform/foundation/NSCharacterSet.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>

namespace kelvo {
namespace {

using Text = std::u16string;
using Form = CFStringNormalizationForm;

bool isIn(CharacterSetRep rep, char16_t unit) {
    return rep[unit / 8] >> unit % 8 & 1;
}

auto memberOf(CharacterSetRep (*rep)()) {
    return [rep](char16_t unit) { return isIn(rep(), unit); };
}

auto feedsAnd(CharacterSetRep rep) {
    return [rep](char16_t unit) { return isIn(rep, unit) || isIn(feedCharacterSetRep(), unit); };
}

using Reference = std::function<Text(Text)>;
using Test = std::function<bool(char16_t)>;

Reference without(Test isRemoved) {
    return [=](Text text) {
        Text kept;
        for (const char16_t unit : text)
            if (!isRemoved(unit))
                kept += unit;
        return kept;
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

Reference replacing(Text target, Text replacement, bool caseSensitive) {
    return [=](Text text) {
        const auto matches = [&](std::size_t at) {
            for (std::size_t index = 0; index < target.size(); ++index)
                if (at + index >= text.size() ||
                    (caseSensitive ? text[at + index] != target[index]
                                   : toUpper(text[at + index]) != toUpper(target[index])))
                    return false;
            return true;
        };
        for (std::size_t at = 0; at < text.size();) {
            if (matches(at))
                text.replace(at, target.size(), replacement), at += replacement.size();
            else
                ++at;
        }
        return text;
    };
}

Reference withoutDoubles(CharacterSetRep (*rep)()) {
    return [=](Text text) {
        for (std::size_t at = 1; at < text.size();) {
            if (isIn(rep(), text[at]) && isIn(rep(), text[at - 1]))
                text.erase(at, 1);
            else
                ++at;
        }
        return text;
    };
}

Reference platform(std::function<void(NSMutableString&)> change) {
    return [=](Text text) {
        NSMutableString string = NSMutableString::stringWithCharacters(text);
        change(string);
        return Text(string.characters());
    };
}

const Test isWhiteSpace = [](char16_t unit) {
    return NSCharacterSet::whitespaceAndNewlineCharacterSet().characterIsMember(unit);
};
const Test isX = [](char16_t unit) { return unit == u'x'; };
const UnitBitmap some(u"xA\u00E9\xD83D");

struct Member {
    const char* name;
    /// May be empty where the family has no such form.
    std::function<NSString(const NSString&)> copy;
    std::function<void(NSMutableString&)> change;
    /// Empty where the tests of the theme say more.
    Reference expected;
};

#define FORM(call) [](const NSString& string) { return call; }
#define CHANGE(call) [](NSMutableString& string) { call; }

const Member members[] = {
    {"WhiteSpaces", stringByTrimmingWhiteSpaces, trimWhiteSpaces, trimmed(isWhiteSpace)},
    {"Character", FORM(stringByTrimmingCharacter(string, u'x')), CHANGE(trimCharacter(string, u'x')),
     trimmed(isX)},
    {"PrefixCharacter", FORM(stringByTrimmingPrefixCharacter(string, u'x')),
     CHANGE(trimPrefixCharacter(string, u'x')), trimmed(isX, true, false)},
    {"SuffixCharacter", FORM(stringByTrimmingSuffixCharacter(string, u'x')),
     CHANGE(trimSuffixCharacter(string, u'x')), trimmed(isX, false, true)},
    {"EnclosingCharacter", FORM(stringByTrimmingEnclosingCharacter(string, u'x')), nullptr, nullptr},
    {"Ellipsis", stringByTrimmingEllipsis, nullptr, nullptr},
    {"Feeds", stringByTrimmingFeeds, trimFeeds, trimmed(memberOf(feedCharacterSetRep))},
    {"Digits", stringByTrimmingDigits, nullptr, trimmed(memberOf(digitCharacterSetRep))},
    {"Spaces", FORM(stringByTrimmingSpacesAndFeeds(string, false)), nullptr,
     trimmed(memberOf(spaceCharacterSetRep))},
    {"SpacesAndFeeds", FORM(stringByTrimmingSpacesAndFeeds(string, true)),
     CHANGE(trimSpacesInRange_andFeeds(string, {0, string.length()}, true)),
     trimmed(feedsAnd(spaceCharacterSetRep()))},
    {"SpacesOfLeftSide", FORM(stringByTrimmingSpacesOfLeftSideAndFeeds(string, true)), nullptr,
     trimmed(feedsAnd(spaceCharacterSetRep()), true, false)},
    {"SpacesOfRightSide", FORM(stringByTrimmingSpacesOfRightSideAndFeeds(string, false)), nullptr,
     trimmed(memberOf(spaceCharacterSetRep), false, true)},
    {"SpacesInRange", FORM(stringByTrimmingSpacesInRange_andFeeds(string, {0, string.length()}, false)),
     CHANGE(trimSpacesInRange_andFeeds(string, {0, string.length()}, false)),
     trimmed(memberOf(spaceCharacterSetRep))},
    {"WhiteSpacesInRange", nullptr, CHANGE(trimWhiteSpacesInRange(string, {0, string.length()})),
     trimmed(isWhiteSpace)},

    {"CharactersOfString", FORM(stringByRemovingCharactersOfString(string, u"xA\u00E9\xD83D")),
     CHANGE(removeCharactersOfString(string, u"xA\u00E9\xD83D")),
     without([](char16_t unit) { return isIn(some.rep(), unit); })},
    {"no CharactersOfString", FORM(stringByRemovingCharactersOfString(string, NSString())),
     CHANGE(removeCharactersOfString(string, NSString())), without([](char16_t) { return false; })},
    {"Characters", FORM(stringByRemovingCharacters(string, some.rep())),
     CHANGE(removeCharacters(string, some.rep())),
     without([](char16_t unit) { return isIn(some.rep(), unit); })},
    {"no Characters", FORM(stringByRemovingCharacters(string, nullptr)),
     CHANGE(removeCharacters(string, nullptr)), without([](char16_t) { return false; })},
    {"Tabs", stringByRemovingTabs, removeTabs, without([](char16_t unit) { return unit == u'\t'; })},
    {"Feeds", stringByRemovingFeeds, removeFeeds, without(memberOf(feedCharacterSetRep))},
    {"Spaces", stringByRemovingSpaces, removeSpaces, without(memberOf(spaceCharacterSetRep))},
    {"WhiteCharacters", stringByRemovingWhiteCharacters, removeWhiteCharacters,
     without(memberOf(whiteCharacterSetRep))},
    {"Digits", stringByRemovingDigits, removeDigits, without(memberOf(digitCharacterSetRep))},
    {"Attachments", nullptr, removeAttachments, without([](char16_t unit) { return unit == u'\uFFFC'; })},
    {"MultipleSpaces", FORM(stringByRemovingMultipleSpacesAndFeeds(string, false)), removeMultipleSpaces,
     withoutDoubles(spaceCharacterSetRep)},
    {"MultipleFeeds", stringByRemovingMultipleFeeds, removeMultipleFeeds, nullptr},
    {"MultipleSpacesAndFeeds", FORM(stringByRemovingMultipleSpacesAndFeeds(string, true)),
     CHANGE(removeMultipleSpaces(string); removeMultipleFeeds(string)), nullptr},
    {"uppercase without Digits", uppercaseStringByRemovingDigits,
     CHANGE(removeDigits(string); uppercase(string)), nullptr},
    {"lowercase without Digits", lowercaseStringByRemovingDigits,
     CHANGE(removeDigits(string); lowercase(string)), nullptr},
    {"NonAlphaNumericCharacters", caseInsensitiveStringByRemovingNonAlphaNumericCharacters, nullptr,
     [](Text text) {
         return mapped(toUpper)(
             without([](char16_t unit) { return !isIn(alphaNumCharacterSetRep(), unit); })(std::move(text)));
     }},

    {"String", FORM(stringByReplacingString_withString(string, u"aA", u"a")),
     CHANGE(replaceString_withString(string, u"aA", u"a")), replacing(u"aA", u"a", true)},
    {"String by a longer one",
     FORM(stringByReplacingString_withString_caseSensitive(string, u"a", u"aXa", false)),
     CHANGE(replaceString_withString_caseSensitive(string, u"a", u"aXa", false)),
     replacing(u"a", u"aXa", false)},
    {"String by itself", FORM(stringByReplacingString_withString(string, u"a", u"a")), nullptr,
     replacing(u"a", u"a", true)},
    {"no String", FORM(stringByReplacingString_withString(string, NSString(), u"a")),
     CHANGE(replaceString_withString(string, u"", u"a")), without([](char16_t) { return false; })},
    {"String by nil", FORM(stringByReplacingString_withString(string, u"a", nullptr)),
     CHANGE(replaceString_withString(string, u"a", nullptr)), without([](char16_t) { return false; })},
    {"String removed", FORM(stringByReplacingString_withString(string, u"aa", u"")),
     CHANGE(deleteString(string, u"aa")), replacing(u"aa", u"", true)},
    {"letter without regard to case",
     FORM(stringByReplacingCharacter_withCharacter_caseSensitive(string, u'a', u'o', false)),
     CHANGE(replaceCharacter_withCharacter_caseSensitive(string, u'a', u'o', false)),
     mapped([](char16_t unit) { return unit == u'a' ? u'o' : unit; })},
    {"space", FORM(stringByReplacingCharacter_withCharacter(string, u' ', u'_')),
     CHANGE(replaceCharacter_withCharacter(string, u' ', u'_')),
     mapped([](char16_t unit) { return unit == u' ' ? u'_' : unit; })},
    {"Tabs encoded", nullptr, CHANGE(encodeTabs(string, 4)), nullptr},
    {"Tabs decoded", nullptr, CHANGE(decodeTabs(string, 4)), nullptr},
    {"Rotating", FORM(stringByRotating(string, -27)), nullptr, mapped([](char16_t unit) -> unsigned {
         return unit == u'a' || unit == u'A'                                     ? unit + 25u
                : (unit > u'a' && unit <= u'z') || (unit > u'A' && unit <= u'Z') ? unit - 1u
                                                                                 : unit;
     })},

    {"normalized", FORM(normalizedString(string)), CHANGE(normalizeString(string)),
     platform([](NSMutableString& text) { CFStringNormalize(text, Form::C); })},
    {"normalized D", FORM(normalizedString(string, Form::D)), CHANGE(normalizeString(string, Form::D)),
     platform([](NSMutableString& text) { CFStringNormalize(text, Form::D); })},
    {"normalizedLowercase", normalizedLowercaseString, normalizeLowercaseString, nullptr},
    {"normalizedUppercase", normalizedUppercaseString, normalizeUppercaseString, nullptr},
    {"fixedAndNormalized", fixedAndNormalizedString, fixAndNormalizeString,
     [](Text text) {
         return platform([](NSMutableString& fixed) {
             CFStringNormalize(fixed, Form::C);
         })(mapped([](char16_t unit) -> unsigned {
             return (unit >= 0xD800 && unit <= 0xDFFF) || (unit >= 0xF400 && unit <= 0xF8FF) ? u' ' : unit;
         })(std::move(text)));
     }},
    {"uppercase", nullptr, uppercase, platform(CFStringUppercase)},
    {"lowercase", nullptr, lowercase, platform(CFStringLowercase)},
    {"capitalize", nullptr, capitalize, platform(CFStringCapitalize)},

    {"nonUmlauted", nonUmlautedString, nullptr, mapped(umlautsToAscii)},
    {"uppercaseNonUmlauted", uppercaseNonUmlautedString, nullptr, mapped(umlautsToUpperAscii)},
    {"lowercaseNonUmlauted", lowercaseNonUmlautedString, nullptr, mapped(umlautsToLowerAscii)},
    {"ascii", asciiString, nullptr, mapped(toAscii)},
    {"uppercaseAscii", uppercaseAsciiString, nullptr, mapped(toUpperAscii)},
    {"lowercaseAscii", lowercaseAsciiString, nullptr, mapped(toLowerAscii)},
    {"nonUmlautedNormalized", nonUmlautedNormalizedString, nullptr, nullptr},
    {"uppercaseNonUmlautedNormalized", uppercaseNonUmlautedNormalizedString, nullptr, nullptr},
    {"lowercaseNonUmlautedNormalized", lowercaseNonUmlautedNormalizedString, nullptr, nullptr},
    {"reformatted", FORM(reformattedStringByRemovingCharactersOfString(string, u"x")), nullptr, nullptr},
    {"feedOfLine", feedOfLine, nullptr, nullptr},
};

#undef FORM
#undef CHANGE

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
        NSMutableString nil;
        if (member.change)
            member.change(nil);
        EXPECT_TRUE(nil.isNil());
        check(member, u"");
    }
}

TEST(StringFamilyTest, bothFormsAgreeWithTheObviousWay) {
    // Few kinds of units, in runs, so that there is something for every member.
    static constexpr std::u16string_view kinds =
        u"aaaAxxb zZ19\u0663   \t\t\n\r\u2028\uFEFF\uFFFC\u00A0\u0085\u0000..\u2026"
        u"\u00C4\u00E9\u00DF\u0130e\u0301\u0323\u212A\u017F\xD83D\xDE00\uF400\uF8FF\u4E2D\u0958";
    std::mt19937 random(20261121);
    for (int round = 0; round < 500; ++round) {
        Text text;
        for (std::size_t length = random() % 40; text.size() < length;)
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
    const struct {
        const char* name;
        std::size_t length, count, oldLength, newLength, expected;
    } rows[] = {
        {"none", 10, 0, 3, huge, 10},
        {"shorter", most, 1000, 3, 0, most - 3000},
        {"as long as can be", most - 5, 5, 1, 2, most},
        {"one more", most - 4, 5, 1, 2, NSNotFound},
        {"the product does not fit 64 bits", 1 << 20, 1 << 20, 1, huge / 2, NSNotFound},
        {"the product wraps to little", 4, 4, 1, (huge >> 2) + 1, NSNotFound},
    };
    for (const auto& row : rows)
        EXPECT_EQ(lengthAfterReplacing(row.length, row.count, row.oldLength, row.newLength), row.expected)
            << row.name;

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
