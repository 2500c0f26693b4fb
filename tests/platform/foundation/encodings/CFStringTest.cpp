#include "platform/foundation/encodings/CFString.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/unorm2.h>

#include <random>

namespace kelvo {
namespace {

using Form = CFStringNormalizationForm;

NSMutableString text(std::u16string_view units) {
    return NSMutableString::stringWithCharacters(units);
}

template <class Operation>
std::u16string changed(std::u16string_view units, Operation operation) {
    NSMutableString string = text(units);
    operation(string);
    return std::u16string(string.characters());
}

auto folding(std::uint32_t options) {
    return [options](NSMutableString& string) { CFStringFold(string, options); };
}

auto normalizing(Form form) {
    return [form](NSMutableString& string) { CFStringNormalize(string, form); };
}

std::u16string normalizedByTheLibrary(std::u16string_view units, Form form) {
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* normalizers[] = {unorm2_getNFDInstance(&status), unorm2_getNFKDInstance(&status),
                                         unorm2_getNFCInstance(&status), unorm2_getNFKCInstance(&status)};
    std::u16string result(units.size() * 18 + 1, u'\0');
    result.resize(static_cast<std::size_t>(unorm2_normalize(
        normalizers[static_cast<int>(form)], units.data(), static_cast<std::int32_t>(units.size()),
        result.data(), static_cast<std::int32_t>(result.size()), &status)));
    EXPECT_TRUE(U_SUCCESS(status));
    return result;
}

/// As the library normalizes the text. Tells how many of the forms it was in before.
int expectNormalized(std::u16string_view units) {
    int normalizedCount = 0;
    for (const Form form : {Form::D, Form::KD, Form::C, Form::KC}) {
        const std::u16string expected = normalizedByTheLibrary(units, form);
        EXPECT_EQ(changed(units, normalizing(form)), expected);
        EXPECT_EQ(CFStringIsNormalized(units, form), expected == units);
        EXPECT_TRUE(CFStringIsNormalized(expected, form));
        normalizedCount += expected == units;
    }
    return normalizedCount;
}

TEST(CFString, CaseMappings) {
    using Row = std::tuple<const char*, std::u16string_view, std::u16string_view, std::u16string_view,
                           std::u16string_view>;
    const Row rows[] = {
        {"ASCII", u"hello WORLD", u"HELLO WORLD", u"hello world", u"Hello World"},
        {"sharp s", u"\u00DFa stra\u00DFe", u"SSA STRASSE", u"\u00DFa stra\u00DFe", u"Ssa Stra\u00DFe"},
        {"dotted I keeps its dot, whatever the locale", u"\u0130iI", u"\u0130II", u"i\u0307ii", u"\u0130ii"},
        {"digraph has a title case of its own", u"\u01C6a", u"\u01C4A", u"\u01C6a", u"\u01C5a"},
        {"final sigma", u"\u039F\u03A3 \u03A3", u"\u039F\u03A3 \u03A3", u"\u03BF\u03C2 \u03C3",
         u"\u039F\u03C2 \u03A3"},
        {"apostrophes and marks stay in the word", u"don't o\u0308re o\u2019k a-b 3rd",
         u"DON'T O\u0308RE O\u2019K A-B 3RD", u"don't o\u0308re o\u2019k a-b 3rd",
         u"Don't O\u0308re O\u2019k A-B 3Rd"},
        {"outside the basic plane", u"\U00010428\U00010400", u"\U00010400\U00010400", u"\U00010428\U00010428",
         u"\U00010400\U00010428"},
        {"U+0000", std::u16string_view(u"a\0b", 3), std::u16string_view(u"A\0B", 3),
         std::u16string_view(u"a\0b", 3), std::u16string_view(u"A\0B", 3)},
    };
    for (const auto& [name, input, upper, lower, capitalized] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(changed(input, CFStringUppercase), upper);
        EXPECT_EQ(changed(input, CFStringLowercase), lower);
        EXPECT_EQ(changed(input, CFStringCapitalize), capitalized);
    }
    // More than the first guess at the room for the result.
    EXPECT_EQ(changed(std::u16string(1000, u'\u0390'), CFStringUppercase).size(), 3000u);
    EXPECT_EQ(changed(std::u16string(1000, u'\uFB03'), CFStringCapitalize).substr(0, 4), u"Ffi\uFB03");
}

TEST(CFString, EveryLetterFoldsToItsDecompositionWithoutMarks) {
    for (std::uint32_t unit = 0; unit < 0xFFFF; ++unit) {
        const std::u16string letter(1, static_cast<char16_t>(unit));
        std::u16string expected;
        for (char16_t part : normalizedByTheLibrary(letter, Form::D))
            if (u_charType(part) != U_NON_SPACING_MARK)
                expected.push_back(part);
        expected = normalizedByTheLibrary(expected, Form::C);
        ASSERT_EQ(changed(letter, folding(kCFCompareDiacriticInsensitive)), expected) << unit;
        ASSERT_EQ(changed(u"x" + letter + u"y", folding(kCFCompareDiacriticInsensitive)),
                  u"x" + expected + u"y")
            << unit;
    }
}

TEST(CFString, Fold) {
    using Row = std::tuple<const char*, std::u16string_view, std::u16string_view, std::u16string_view,
                           std::u16string_view>;
    const Row rows[] = {
        {"German", u"\u00C4rger Stra\u00DFe", u"Arger Stra\u00DFe", u"\u00E4rger strasse", u"arger strasse"},
        {"mark of its own", u"e\u0301\u0323X", u"eX", u"e\u0301\u0323x", u"ex"},
        {"Hangul", u"\uD55C\uAE00\u0301", u"\uD55C\uAE00", u"\uD55C\uAE00\u0301", u"\uD55C\uAE00"},
        {"dotted I", u"\u0130", u"I", u"i\u0307", u"i"},
        {"lone halves", u"\xD800X\u0301\xDC00", u"\xD800X\xDC00", u"\xD800x\u0301\xDC00", u"\xD800x\xDC00"},
        {"mark outside the basic plane", u"\U0001D157\U0001D165\U0001E8D0", u"\U0001D157\U0001D165",
         u"\U0001D157\U0001D165\U0001E8D0", u"\U0001D157\U0001D165"},
    };
    for (const auto& [name, input, withoutDiacritics, withoutCase, withoutBoth] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(changed(input, folding(0)), input);
        EXPECT_EQ(changed(input, folding(kCFCompareDiacriticInsensitive)), withoutDiacritics);
        EXPECT_EQ(changed(input, folding(kCFCompareCaseInsensitive)), withoutCase);
        EXPECT_EQ(changed(input, folding(kCFCompareDiacriticInsensitive | kCFCompareCaseInsensitive)),
                  withoutBoth);
    }
}

TEST(CFString, NilAndSurrogatesAreLeftAlone) {
    void (*const operations[])(NSMutableString&) = {
        CFStringUppercase,
        CFStringLowercase,
        CFStringCapitalize,
        CFStringTrimWhitespace,
        [](NSMutableString& string) { CFStringFold(string, 129); },
        [](NSMutableString& string) { CFStringNormalize(string, Form::KC); },
    };
    for (auto* operation : operations) {
        NSMutableString nil;
        operation(nil);
        EXPECT_TRUE(nil.isNil());
        NSMutableString empty = NSMutableString::string();
        operation(empty);
        EXPECT_FALSE(empty.isNil());
        EXPECT_TRUE(empty.isEmpty());
        for (std::u16string_view lone : {u"\xDC00\xD800", u"1\xDBFF", u"\xDFFF\u3042\xD834"})
            EXPECT_EQ(changed(lone, operation), lone);
    }
}

// Texts that straddle the blocks that the fast paths read, from an alphabet in which nearly every pair of
// neighbours interacts.
TEST(CFString, NormalizationAgreesWithTheLibrary) {
    constexpr char16_t alphabet[] = {u'a',   u'E',   0x00A0, 0x00C5, 0x00E9, 0x02FF, 0x0300, 0x0301,
                                     0x0323, 0x0327, 0x0344, 0x0345, 0x0958, 0x09BE, 0x09C7, 0x0F73,
                                     0x1100, 0x1161, 0x11A8, 0x1E0B, 0x212B, 0x2126, 0x2460, 0x3042,
                                     0x3099, 0xAC00, 0xAC01, 0xD834, 0xDD58, 0xDD65, 0xF900, 0xFB1D,
                                     0xFB2A, 0xFC5E, 0xFDFA, 0xFF76, 0xFF9E, 0x4E2D};
    std::mt19937 random(20070829);
    int normalizedCount = 0;
    for (int round = 0; round < 20000; ++round) {
        std::u16string units(random() % (round % 64 == 0 ? 1200 : round % 3 == 0 ? 260 : 12), u'x');
        const std::size_t density = 1 + random() % 40;
        for (char16_t& unit : units)
            if (random() % density == 0)
                unit = alphabet[random() % std::size(alphabet)];
        normalizedCount += expectNormalized(units);
        ASSERT_FALSE(HasFailure()) << round;
    }
    EXPECT_GT(normalizedCount, 5000);
    EXPECT_LT(normalizedCount, 75000);
}

TEST(CFString, EveryUnitAmongOthersIsNormalizedAsByTheLibrary) {
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        std::u16string units(70, u'a');
        units[66] = static_cast<char16_t>(unit);
        expectNormalized(units);
        ASSERT_FALSE(HasFailure()) << unit;
    }
}

TEST(CFString, LongRunsOfMarks) {
    constexpr char16_t marks[] = {0x0301, 0x0323, 0x0345, 0x0334, 0x0344, 0x0F73, 0x05B0, 0xFF9E};
    std::mt19937 random(7);
    for (std::size_t length : {31u, 63u, 64u, 65u, 96u, 130u, 400u}) {
        std::u16string units = u"start \u00E9";
        for (std::size_t index = 0; index < length; ++index) {
            units.push_back(marks[random() % std::size(marks)]);
            if (random() % 8 == 0)
                units += u"\U0001E8D0\U0001D165";
        }
        units += u"o\u0308";
        EXPECT_EQ(expectNormalized(units), 0);
    }
    // Minutes, were the order established by insertion.
    std::u16string alternating = u"a";
    for (int pair = 0; pair < 300000; ++pair)
        alternating += u"\u0301\u0323";
    const std::u16string sorted = changed(alternating, normalizing(Form::C));
    EXPECT_EQ(sorted.substr(0, 3), u"\u1EA1\u0323\u0323");
    EXPECT_EQ(sorted.size(), alternating.size() - 1);
    EXPECT_FALSE(CFStringIsNormalized(alternating, Form::C));
    EXPECT_TRUE(CFStringIsNormalized(sorted, Form::C));
}

TEST(CFString, TrimWhitespace) {
    const auto trimmed = [](std::u16string_view units) { return changed(units, CFStringTrimWhitespace); };
    EXPECT_EQ(trimmed(u"\t\u00A0\u2028a b\u3000\u0085\r\n"), u"a b");
    EXPECT_EQ(trimmed(u" \u200B "), u"\u200B");
    EXPECT_EQ(trimmed(u" \n"), u"");
}

TEST(CFString, CompareCaseInsensitive) {
    const std::tuple<std::u16string_view, std::u16string_view, int> rows[] = {
        {u"", u"", 0},
        {u"Stop", u"sTOP", 0},
        {u"a", u"B", -1},
        {u"ab", u"A", 1},
        {u"_", u"A", -1},
        {u"\u00C4", u"\u00E4", 0},
        {u"\u212A", u"K", 0},
        {u"\u03C2", u"\u03A3", 0},
        {u"\u00DF", u"ss", 1},
        {u"\u00E9", u"e\u0301", 1},
        {u"\xD801\xDC00", u"\xD801\xDC28", -1},
    };
    for (const auto& [left, right, sign] : rows) {
        const int forward = CFStringCompareCaseInsensitive(left, right);
        const int backward = CFStringCompareCaseInsensitive(right, left);
        EXPECT_EQ((forward > 0) - (forward < 0), sign);
        EXPECT_EQ((backward > 0) - (backward < 0), -sign);
    }
}

} // namespace
} // namespace kelvo
