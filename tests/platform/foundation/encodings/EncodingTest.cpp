#include "platform/foundation/encodings/CFStringEncodings.h"
#include "platform/foundation/encodings/EncodingTable.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <gtest/gtest.h>

#include <iconv.h>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

NSString decoded(std::string_view bytes, CFStringEncoding encoding) {
    return stringWithData_encoding(NSData::dataWithBytes(bytes),
                                   CFStringConvertEncodingToNSStringEncoding(encoding));
}

std::u16string decodedLeniently(std::string_view bytes, CFStringEncoding encoding) {
    const auto codec = makeTextCodec(encoding);
    std::u16string units(bytes.size() * 2 + 8, u'#');
    const auto progress = codec->decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()},
                                        units.data(), units.size());
    EXPECT_EQ(progress.bytesRead, bytes.size());
    EXPECT_FALSE(progress.isOutputFull);
    units.resize(progress.unitsWritten);
    return units;
}

TEST(Encoding, Numbers) {
    using Row = std::pair<NSStringEncoding, CFStringEncoding>;
    std::vector<Row> rows = {
        {1, 0x0600},  {2, 0x0B01},  {3, 0x0920},  {4, 0x08000100}, {5, 0x0201},  {6, 0x0021},
        {7, 0x0BFF},  {8, 0x0420},  {9, 0x0202},  {10, 0x0100},    {11, 0x0502}, {12, 0x0500},
        {13, 0x0503}, {14, 0x0504}, {15, 0x0501}, {21, 0x0820},    {30, 0x0000},
    };
    const Row large[] = {
        {0x90000100, 0x10000100}, {0x94000100, 0x14000100}, {0x8C000100, 0x0C000100},
        {0x84000100, 0x04000100}, {0x80000A10, 0x0A10},     {0x80000632, 0x0632},
        {0x80000A01, 0x0A01},     {0x80000001, 0x0001},     {0xFFFFFFF0, 0xA001},
        {0xFFFFFFF1, 0xA002},     {0xFFFFFFFF, 0xFFFFFFFF},
    };
    rows.insert(rows.end(), std::begin(large), std::end(large));
    for (const auto& [small, encoding] : rows) {
        EXPECT_EQ(CFStringConvertEncodingToNSStringEncoding(encoding), small) << std::hex << encoding;
        EXPECT_EQ(CFStringConvertNSStringEncodingToEncoding(small), encoding) << std::hex << small;
    }
    for (NSStringEncoding unassigned : {0u, 16u, 20u, 22u, 29u, 31u, 100u})
        EXPECT_EQ(CFStringConvertNSStringEncodingToEncoding(unassigned), kCFStringEncodingInvalidId);
    for (const EncodingRow& row : encodingTable())
        EXPECT_EQ(CFStringConvertNSStringEncodingToEncoding(
                      CFStringConvertEncodingToNSStringEncoding(row.encoding)),
                  row.encoding);
}

TEST(Encoding, CodePages) {
    const std::tuple<std::int32_t, std::string_view, std::u16string_view> rows[] = {
        {437, "\x84", u"\u00E4"},       {819, "\xE4", u"\u00E4"},       {850, "\xD0", u"\u00F0"},
        {866, "\x80", u"\u0410"},       {932, "\x93\xFA", u"\u65E5"},   {936, "\xC8\xD5", u"\u65E5"},
        {949, "\xB0\xA1", u"\uAC00"},   {950, "\xA4\xE9", u"\u65E5"},   {1250, "\xEC", u"\u011B"},
        {1252, "\x80", u"\u20AC"},      {1255, "\xE0", u"\u05D0"},      {1361, "\x88\x61", u"\uAC00"},
        {10000, "\x8A", u"\u00E4"},     {10001, "\x93\xFA", u"\u65E5"}, {10004, "\xC7", u"\u0627"},
        {10006, "\xE1", u"\u03B1"},     {10007, "\x80", u"\u0410"},     {10010, "\xAF", u"\u0218"},
        {10021, "\xA1", u"\u0E01"},     {10029, "\x81", u"\u0100"},     {10079, "\xDC", u"\u00D0"},
        {10081, "\xDD", u"\u0131"},     {10082, "\xA9", u"\u0160"},     {20866, "\xC1", u"\u0430"},
        {28592, "\xEC", u"\u011B"},     {28605, "\xA4", u"\u20AC"},     {51932, "\xC6\xFC", u"\u65E5"},
        {65001, "\xC3\xA4", u"\u00E4"},
    };
    for (const auto& [codePage, bytes, text] : rows)
        EXPECT_EQ(decoded(bytes, CFStringConvertWindowsCodepageToEncoding(codePage)).characters(), text)
            << codePage;
    for (const std::int32_t none : {-1, 0, 436, 438, 1251 + 10000, 65002})
        EXPECT_EQ(CFStringConvertWindowsCodepageToEncoding(none), kCFStringEncodingInvalidId) << none;
}

TEST(Encoding, Availability) {
    const std::set<CFStringEncoding> withoutConverter = {
        0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F, 0x10, 0x11, 0x12,  0x13,  0x14,  0x16,  0x17,
        0x18, 0x1A, 0x1B, 0x1C, 0x1E, 0x1F, 0x27, 0x28, 0xEC, 0x601, 0x629, 0xA04, 0xA09, 0xB02,
    };
    std::set<CFStringEncoding> unavailable;
    for (const EncodingRow& row : encodingTable()) {
        EXPECT_EQ(encodingRow(row.encoding), &row) << row.name;
        const bool isAvailable = CFStringIsEncodingAvailable(row.encoding);
        EXPECT_EQ(decoded("", row.encoding).isNil(), !isAvailable) << row.name;
        if (!isAvailable)
            unavailable.insert(row.encoding);
    }
    EXPECT_EQ(unavailable, withoutConverter);
    EXPECT_EQ(encodingTable().size(), 138u);
    for (CFStringEncoding unknown : {0xFFFFFFFFu, 0x8u, 0xA000u, 0xA003u, 0x20Cu, 0x10600u})
        EXPECT_FALSE(CFStringIsEncodingAvailable(unknown)) << unknown;
    EXPECT_TRUE(CFStringGetNameOfEncoding(0x500) == u"windows-1252");
    EXPECT_TRUE(CFStringGetNameOfEncoding(0xA003).isNil());
}

// Where the C library has the page too, and agrees.
TEST(Encoding, PagesAgreeWithTheCLibrary) {
    std::vector<std::pair<CFStringEncoding, std::string>> rows = {
        {0x405, "CP737"},  {0x406, "CP775"},     {0x410, "IBM850"},   {0x413, "IBM855"}, {0x414, "IBM857"},
        {0x41B, "IBM866"}, {0x506, "CP1256"},    {0x600, "US-ASCII"}, {0xA02, "KOI8-R"}, {0xA07, "VISCII"},
        {0xA08, "KOI8-U"}, {0xC01, "EBCDIC-US"}, {0xC02, "IBM037"},
    };
    rows.emplace_back(0x1D, "MAC-CENTRALEUROPE");
    for (CFStringEncoding part = 1; part <= 16; ++part)
        if (part != 12)
            rows.emplace_back(0x200 + part, "ISO-8859-" + std::to_string(part));
    for (const auto& [encoding, name] : rows) {
        SCOPED_TRACE(name);
        const iconv_t converter = iconv_open("UTF-16LE", name.c_str());
        ASSERT_NE(converter, iconv_t(-1));
        for (int byte = 0; byte < 256; ++byte) {
            char input = static_cast<char>(byte);
            char16_t expected = 0xFFFD;
            char* source = &input;
            auto* target = reinterpret_cast<char*>(&expected);
            std::size_t sourceLeft = 1;
            std::size_t targetLeft = 2;
            iconv(converter, &source, &sourceLeft, &target, &targetLeft);
            EXPECT_EQ(decodedLeniently({&input, 1}, encoding), std::u16string(1, expected)) << byte;
            EXPECT_EQ(decoded({&input, 1}, encoding).isNil(), expected == 0xFFFD) << byte;
        }
        iconv_close(converter);
    }
}

TEST(Encoding, Rows) {
    using Row = std::tuple<const char*, CFStringEncoding, std::string_view, std::u16string_view>;
    const Row rows[] = {
        {"ASCII", 0x600, "a\0~"sv, u"a\0~"sv},
        {"UTF-8", 0x8000100, "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", u"aä€\U0001F600"},
        {"windows-1252", 0x500, "\x80\x93\x81", u"\u20AC\u201C\u0081"},
        {"MacRoman", 0x0, "\x8A\xF0\xC6", u"\u00E4\uF8FF\u2206"},
        {"MacIcelandic", 0x25, "\xA0\xDC\xE0", u"\u00DD\u00D0\u00FD"},
        {"MacCroatian", 0x24, "\xA9\xC8\xD8", u"\u0160\u010C\uF8FF"},
        {"MacRomanian", 0x26, "\xAF\xBF\xDE", u"\u0218\u0219\u021A"},
        {"MacArabic", 0x4, "1\xB1\xC7\xDA", u"1\u0661\u0627\u063A"},
        {"MacFarsi", 0x8C, "\xB1\xF3", u"\u06F1\u067E"},
        {"MacHebrew", 0x5, "a\xE0\x81\xC0", u"a\u05D0\u05F2\u05B7\u05DC\u05B9"},
        {"MacThai", 0x15, "\xA1\xE8\xDB", u"\u0E01\u0E48\u2060"},
        {"MacSymbol", 0x21, "aA\xA0\xF2", u"\u03B1\u0391\u20AC\u222B"},
        {"MacDingbats", 0x22, "!\xFE", u"\u2701\u27BE"},
        {"NextStepLatin", 0xB01, "\x80\xAE\xFB", u"\u00A0\uFB01\u00DF"},
        {"Kamenicky", 0xA001, "a\x80\xA9\xFF", u"a\u010C\u0159\u00A0"},
        {"KOI8-CS2", 0xA002, "ch\xC1\xE1", u"ch\u00E1\u00C1"},
        {"JIS_X0201_76", 0x620, "a\\~\xA1\xDF", u"a\u00A5\u203E\uFF61\uFF9F"},
        {"JIS_X0208_83", 0x621, "0!0\"\n\x25\x22", u"\u4E9C\u5516\n\u30A2"},
        {"JIS_X0212_90", 0x623, "0!", u"\u4E02"},
        {"GB_2312_80", 0x630, "0!", u"\u554A"},
        {"KSC_5601_87", 0x640, "\xB0\xA1", u"\uAC00"},
        {"NonLossyASCII", 0xBFF, "a\\\\\\344\\u20ac\\ud83d\\ude00", u"a\\ä€\U0001F600"},
        {"ShiftJIS", 0xA01, "\x88\x9F\\\xB1", u"\u4E9C\\\uFF71"},
        {"ShiftJIS_X0213", 0x628, "\x88\x9F\x82\xF5", u"\u4E9C\u304B\u309A"},
        {"EUC_JP", 0x920, "\xB0\xA1\x8E\xB1", u"\u4E9C\uFF71"},
        {"EUC_CN", 0x930, "\xB0\xA1", u"\u554A"},
        {"EUC_TW", 0x931, "\xC4\xA1", u"\u4E00"},
        {"EUC_KR", 0x940, "\xB0\xA1", u"\uAC00"},
        {"Johab", 0x510, "\x88\x61", u"\uAC00"},
        {"GB18030", 0x632, "\xB0\xA1\x95\x32\x82\x36", u"\u554A\U00020000"},
        {"Big5_HKSCS_1999", 0xA06, "\xA4\x40\xC7\xF3", u"\u4E00\u0410"},
        {"ISO_2022_JP", 0x820, "a\x1B$B0!\x1B(Bb", u"a\u4E9Cb"},
        {"ISO_2022_JP_1", 0x822, "\x1B$(D0!\x1B(B", u"\u4E02"},
        {"ISO_2022_JP_3", 0x823, "a\x1B$B0!\x1B(B", u"a\u4E9C"},
        {"ISO_2022_KR", 0x840, "\x1B$)Ca\x0E\x30\x21\x0F", u"a\uAC00"},
        {"UTF-7", 0x4000100, "a+AOQ-b", u"aäb"},
        {"UTF7_IMAP", 0xA10, "a&AOQ-b", u"aäb"},
        {"EBCDIC_CP037", 0xC02, "\x81\xF1\x40", u"a1 "},
        {"UTF-16BE", 0x10000100, "\0a\xD8\x3D\xDE\0"sv, u"a\U0001F600"},
        {"UTF-16LE keeps its mark", 0x14000100, "\xFF\xFE\x61\0"sv, u"\uFEFFa"},
        {"UTF-16LE, unpaired surrogate", 0x14000100, "\0\xD8z\0"sv, u"\xD800z"},
        {"UTF-32BE", 0x18000100, "\0\x01\xF6\0"sv, u"\U0001F600"},
        {"UTF-32LE", 0x1C000100, "a\0\0\0"sv, u"a"},
    };
    for (const auto& [name, encoding, bytes, text] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(decoded(bytes, encoding).characters(), text);
        const NSData data =
            dataUsingEncoding(NSString(text), CFStringConvertEncodingToNSStringEncoding(encoding));
        EXPECT_EQ(data.characters(), bytes);
    }
    const Row decodingOnly[] = {
        {"HZ_GB_2312", 0xA05, "a~{0!~}b", u"a\u554Ab"},
        {"UTF-8 mark", 0x8000100, "\xEF\xBB\277a", u"a"},
        {"UTF-16, unmarked", 0x100, "\0a"sv, u"a"},
        {"UTF-16, big-endian mark", 0x100, "\xFE\xFF\0a"sv, u"a"},
        {"UTF-16, little-endian mark", 0x100, "\xFF\376a\0\xFF\xFE"sv, u"a\uFEFF"},
        {"UTF-32, marked", 0xC000100, "\xFF\xFE\0\0a\0\0\0"sv, u"a"},
        {"UTF-32, unmarked", 0xC000100, "\0\0\0a"sv, u"a"},
        {"MacThai, mark in another position", 0x15, "\x83\x88", u"\u0E48\u0E48"},
        {"KOI8-CS2, bytes for two letters", 0xA002, "\xC7h\xE7\xC7", u"chhCHch"},
        {"MacArabic, right-to-left copy", 0x4, "\xA1", u"!"},
        {"KSC_5601_87 in seven bits", 0x640, "0!", u"\uAC00"},
        {"MacJapanese", 0x1, "\x88\x9F", u"\u4E9C"},
        {"MacKorean", 0x3, "\xB0\xA1", u"\uAC00"},
    };
    for (const auto& [name, encoding, bytes, text] : decodingOnly) {
        SCOPED_TRACE(name);
        EXPECT_EQ(decoded(bytes, encoding).characters(), text);
    }
}

TEST(Encoding, BytesThatAreNotValid) {
    const std::tuple<const char*, CFStringEncoding, std::string_view, std::u16string_view> rows[] = {
        {"ASCII", 0x600, "a\x80", u"a\uFFFD"},
        {"UTF-8, cut off", 0x8000100, "a\xE2\x82", u"a\uFFFD"},
        {"UTF-16, odd", 0x10000100, "\0a\0"sv, u"a\uFFFD"},
        {"UTF-16, one byte", 0x100, "a", u"\uFFFD"},
        {"UTF-32, too large", 0x18000100, "\0\x11\0\0\0"sv, u"\uFFFD\uFFFD"},
        {"EUC_JP, cut off", 0x920, "a\xB0", u"a\uFFFD"},
        {"EUC_JP, single byte", 0x920, "\377a", u"\uFFFDa"},
        {"ShiftJIS, cut off", 0xA01, "\x88", u"\uFFFD"},
        {"ShiftJIS_X0213, cut off", 0x628, "a\x88", u"a\uFFFD"},
        {"ISO_2022_JP, cut off in a pair", 0x820, "\x1B$B0!0", u"\u4E9C\uFFFD"},
        {"ISO_2022_JP, eight bits", 0x820, "a\xB0", u"a\uFFFD"},
        {"ISO_2022_JP_3, eight bits", 0x823, "a\377b", u"a\uFFFDb"},
        {"Johab", 0x510, "a\xFF", u"a\uFFFD"},
        {"JIS_X0208_83, lone half", 0x621, "0", u"\uFFFD"},
        {"JIS_X0208_83, unassigned", 0x621, "~~0!", u"\uFFFD\u4E9C"},
        {"NonLossyASCII, no escape", 0xBFF, "\\q\\u12", u"\uFFFDq\uFFFDu12"},
        {"NonLossyASCII, octal past a byte", 0xBFF, "\\777", u"\uFFFD777"},
        {"MacThai", 0x15, "\x90", u"\uFFFD"},
    };
    for (const auto& [name, encoding, bytes, repaired] : rows) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(decoded(bytes, encoding).isNil());
        EXPECT_EQ(decodedLeniently(bytes, encoding), repaired);
        EXPECT_EQ(stringByRepairingData_encoding(NSData::dataWithBytes(bytes),
                                                 CFStringConvertEncodingToNSStringEncoding(encoding))
                      .characters(),
                  repaired);
    }
    EXPECT_TRUE(stringWithData_encoding(NSData(), NSUTF8StringEncoding).isNil());
    EXPECT_TRUE(stringByRepairingData_encoding(NSData(), NSUTF8StringEncoding).isNil());
    EXPECT_TRUE(decoded("\xEF\xBF\xBD", kCFStringEncodingUTF8) == u"\uFFFD");
}

TEST(Encoding, MarkedData) {
    const std::tuple<const char*, std::string_view, NSStringEncoding, const char16_t*> rows[] = {
        {"none", "ab", kCFStringEncodingInvalidId, nullptr},
        {"empty", "", kCFStringEncodingInvalidId, nullptr},
        {"half a mark", "\xEF\xBB", kCFStringEncodingInvalidId, nullptr},
        {"UTF-8", "\xEF\xBB\xBF\xC3\xA9", NSUTF8StringEncoding, u"\u00E9"},
        {"UTF-8 that is not", "\xEF\xBB\xBFz\xE9", NSUTF8StringEncoding, u"z\uFFFD"},
        {"UTF-16, little-endian", "\xFF\xFE\xE9\0"sv, NSUnicodeStringEncoding, u"\u00E9"},
        {"UTF-16, big-endian, cut off", "\xFE\xFF\0\xE9\0"sv, NSUnicodeStringEncoding, u"\u00E9"},
        {"UTF-32, little-endian", "\xFF\xFE\0\0\xE9\0\0\0"sv, NSUTF32StringEncoding, u"\u00E9"},
        {"UTF-32, big-endian, cut off", "\0\0\xFE\xFF\0\0\0\xE9\0"sv, NSUTF32StringEncoding, u"\u00E9"},
        {"UTF-32 that is not", "\0\0\xFE\xFF\x7F\0\0\0"sv, NSUTF32StringEncoding, nullptr},
        {"the mark alone", "\xFE\xFF", NSUnicodeStringEncoding, u""},
    };
    for (const auto& [name, bytes, mark, text] : rows) {
        NSStringEncoding used = kCFStringEncodingInvalidId;
        EXPECT_EQ(encodingOfByteOrderMark(bytes), mark) << name;
        EXPECT_EQ(stringWithMarkedData(NSData::dataWithBytes(bytes), &used), NSString(text)) << name;
        EXPECT_EQ(used, text ? mark : NSStringEncoding(kCFStringEncodingInvalidId)) << name;
    }
    NSStringEncoding used = 0;
    EXPECT_EQ(stringWithMarkedData(NSData::dataWithBytes("\xFF\xFE\0\0\0\xD8\x61\0"sv), &used),
              NSString(u"\0\xD800\x61"sv))
        << "UTF-16 that begins with U+0000";
    EXPECT_EQ(used, NSUnicodeStringEncoding);
    EXPECT_TRUE(stringWithMarkedData(NSData(), nullptr).isNil());
}

TEST(Encoding, CharactersThatDoNotFit) {
    const std::tuple<const char*, CFStringEncoding, std::u16string_view, std::string_view> rows[] = {
        {"ASCII", 0x600, u"\u00E9\u20AC\U0001F600x", "e??x"},
        {"Latin 1", 0x201, u"\u00E9\u0159\u1EC7", "\xE9re"},
        {"UTF-8", 0x8000100, u"a\xD800z", "a\xEF\xBF\xBDz"},
        {"UTF-32BE", 0x18000100, u"\xDC00", "\0\0\xFF\xFD"sv},
        {"ShiftJIS", 0xA01, u"\u4E9C\u00E9\uAC00", "\x88\237e?"},
        {"ISO_2022_JP", 0x820, u"\u4E9C\uAC00", "\x1B$B0!\x1B(B?"},
        {"ISO_2022_JP, without a picture", 0x820, u"a\u200Bb", "a?b"},
        {"ShiftJIS_X0213", 0x628, u"\u4E9C\uAC00", "\x88\x9F?"},
        {"MacHebrew", 0x5, u"\uFDD0\u05F2", "??"},
        {"UTF-7, closed after a substitute", 0x4000100, u"a\xD800", "a+//0-"},
        {"windows-1252, U+0000 and U+FFFD", 0x500, u"\0\uFFFD"sv, "\0?"sv},
    };
    for (const auto& [name, number, text, lossy] : rows) {
        const NSStringEncoding encoding = CFStringConvertEncodingToNSStringEncoding(number);
        EXPECT_TRUE(dataUsingEncoding(NSString(text), encoding).isNil()) << name;
        EXPECT_EQ(dataUsingEncoding_allowLossyConversion(NSString(text), encoding, true).characters(), lossy)
            << name;
    }
    // However many halves of pairs end a text, each has its substitute.
    for (const CFStringEncoding number : {0x632u, 0xA01u, 0x920u, 0x820u, 0x628u, 0x600u, 0x8000100u, 0xBFFu})
        for (std::size_t count = 1; count < 8; ++count) {
            SCOPED_TRACE(testing::Message() << std::hex << number << " with " << count);
            const NSStringEncoding encoding = CFStringConvertEncodingToNSStringEncoding(number);
            const NSString halves(u"a" + std::u16string(count, u'\xD83D'));
            const NSString text = stringWithData_encoding(
                dataUsingEncoding_allowLossyConversion(halves, encoding, true), encoding);
            EXPECT_EQ(text.length(), 1 + count);
            EXPECT_EQ(text.characters().substr(1), std::u16string(count, text.characters().back()));
        }
    // Minutes, were the whole rest looked at after each substitute.
    std::u16string foreign;
    for (int pair = 0; pair < 200000; ++pair)
        foreign += u"\u00E9\U0001F600";
    const NSData substitutes =
        dataUsingEncoding_allowLossyConversion(NSString(foreign), NSASCIIStringEncoding, true);
    EXPECT_EQ(substitutes.length(), 400000u);
    EXPECT_EQ(substitutes.characters().substr(399996), "e?e?");
    EXPECT_TRUE(dataUsingEncoding(NSString(), NSUTF8StringEncoding).isNil());
    EXPECT_TRUE(dataUsingEncoding(u"a", 0x80000009).isNil());
    EXPECT_EQ(dataUsingEncoding(u"", NSUTF8StringEncoding).length(), 0u);
    EXPECT_EQ(dataUsingEncoding(u"a", NSUnicodeStringEncoding).characters(), "\xFF\376a\0"sv);
    EXPECT_EQ(dataUsingEncoding(u"", NSUTF32StringEncoding).characters(), "\xFF\xFE\0\0"sv);
}

// Long texts are encoded in pieces of growing length, which end between characters.
TEST(Encoding, PairsStandAnywhereInALongText) {
    for (const CFStringEncoding number : {0x8000100u, 0x632u, 0x14000100u, 0x1C000100u, 0x4000100u, 0xBFFu}) {
        const NSStringEncoding encoding = CFStringConvertEncodingToNSStringEncoding(number);
        for (std::size_t before = 0; before < 7; ++before) {
            std::u16string units(before, u'x');
            while (units.size() < 200'000)
                units += u"\U0001F600\U0001F600\U0001F600y";
            const NSString text(units);
            const NSData lossy = dataUsingEncoding_allowLossyConversion(text, encoding, true);
            ASSERT_TRUE(lossy == dataUsingEncoding(text, encoding)) << std::hex << number << " at " << before;
            ASSERT_TRUE(stringWithData_encoding(lossy, encoding) == text) << std::hex << number;
        }
    }
}

// Whatever an encoding can hold comes back.
TEST(Encoding, RoundTripOfEveryCharacter) {
    for (const EncodingRow& row : encodingTable()) {
        const auto codec = makeTextCodec(row.encoding);
        if (!codec)
            continue;
        SCOPED_TRACE(row.name);
        std::u16string held;
        int count = 0;
        for (std::uint32_t character = 0; character < 0x22000; character += character < 0x600 ? 1 : 13) {
            if (character >= 0xD800 && character < 0xE000)
                continue;
            std::u16string units;
            if (character > 0xFFFF)
                units = {static_cast<char16_t>(0xD7C0 + (character >> 10)),
                         static_cast<char16_t>(0xDC00 + (character & 0x3FF))};
            else
                units = {static_cast<char16_t>(character)};
            std::string bytes;
            codec->reset();
            if (codec->encode(units, bytes, true) != units.size())
                continue;
            ++count;
            // Private characters of old that have become public since are still written.
            if (row.encoding == kCFStringEncodingBig5_HKSCS_1999 && character >= 0xE000 && character < 0xF900)
                continue;
            // Japan's half of ASCII has the yen sign and the overline in their places, and one encoding with
            // escape sequences writes the character that begins them as any other.
            if ((row.encoding == kCFStringEncodingShiftJIS_X0213 &&
                 (character == '\\' || character == '~')) ||
                (row.encoding == kCFStringEncodingISO_2022_JP_3 && character == 0x1B))
                continue;
            const std::u16string back =
                decodedLeniently(std::string(codec->preamble()) + bytes, row.encoding);
            ASSERT_EQ(back, units) << std::hex << character;
            held += units + u" ";
        }
        EXPECT_GE(count, 33);
        std::string bytes;
        codec->reset();
        EXPECT_EQ(codec->encode(held, bytes, true), held.size());
    }
}

// On both sides of what is looked up at once, among letters and among ASCII.
TEST(Encoding, BytesWithoutACharacterAreToldAnywhere) {
    const auto codec = makeTextCodec(kCFStringEncodingWindowsGreek);
    for (const std::uint8_t filling : {0xE4, 0x41})
        for (std::size_t length = 1; length <= 100; length += 11)
            for (std::size_t place = 0; place <= length; ++place) {
                std::vector<std::uint8_t> bytes(length, filling);
                if (place < length)
                    bytes[place] = 0xD2;
                std::u16string units(length, u'#'), expected(length, filling == 0x41 ? u'A' : u'\u03B4');
                if (place < length)
                    expected[place] = u'\uFFFD';
                const auto progress = codec->decode(bytes, units.data(), units.size());
                ASSERT_EQ(progress.hadErrors, place < length) << place << " of " << length;
                ASSERT_EQ(units, expected);
            }
}

} // namespace
} // namespace kelvo
