#include "markup/CharsetLabels.h"

#include "platform/foundation/NSLog.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/units/ASCII.h"
#include "text/StringRemoval.h"
#include "text/UnitBitmap.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace kelvo {

namespace {

struct NumberRow {
    std::int32_t number;
    CFStringEncoding encoding;
};

// What labels call by its code page; the others they call by names, ISO 8859-1 among them.
constexpr std::int32_t largestCodePage = 1361;
constexpr std::int32_t codePageOfLatin1 = 819;

// Numbers that are no code pages. ISO 8859 loses or gains digits in many labels; what can still be told apart
// is here. 646 is the Japanese EUC because the pages that carry it are.
constexpr auto numberRows = std::to_array<NumberRow>({
    {646, kCFStringEncodingEUC_JP},           {6461, kCFStringEncodingEUC_JP},
    {8591, kCFStringEncodingISOLatin1},       {8859, kCFStringEncodingISOLatin1},
    {80591, kCFStringEncodingISOLatin1},      {85591, kCFStringEncodingISOLatin1},
    {85922, kCFStringEncodingISOLatin2},      {88191, kCFStringEncodingISOLatin1},
    {88391, kCFStringEncodingISOLatin1},      {88581, kCFStringEncodingISOLatin1},
    {88582, kCFStringEncodingISOLatin2},      {88591, kCFStringEncodingISOLatin1},
    {88592, kCFStringEncodingISOLatin2},      {88593, kCFStringEncodingISOLatin3},
    {88594, kCFStringEncodingISOLatin4},      {88595, kCFStringEncodingISOLatinCyrillic},
    {88596, kCFStringEncodingISOLatinArabic}, {88597, kCFStringEncodingISOLatinGreek},
    {88598, kCFStringEncodingISOLatinHebrew}, {88599, kCFStringEncodingISOLatin5},
    {88611, kCFStringEncodingISOLatin1},      {88691, kCFStringEncodingISOLatin1},
    {88791, kCFStringEncodingISOLatin1},      {89091, kCFStringEncodingISOLatin1},
    {89599, kCFStringEncodingISOLatin5},      {100591, kCFStringEncodingISOLatin1},
    {810091, kCFStringEncodingISOLatin1},     {885910, kCFStringEncodingISOLatin6},
    {885911, kCFStringEncodingISOLatinThai},  {885913, kCFStringEncodingISOLatin7},
    {885914, kCFStringEncodingISOLatin8},     {885915, kCFStringEncodingISOLatin9},
    {885916, kCFStringEncodingISOLatin10},
});
static_assert(std::ranges::is_sorted(numberRows, {}, &NumberRow::number));

enum class Match : std::uint8_t { Prefix, Contains, Equals };

struct NameRow {
    Match match;
    std::u16string_view key;
    CFStringEncoding encoding;

    bool matches(std::u16string_view name) const {
        switch (match) {
        case Match::Prefix:
            return name.starts_with(key);
        case Match::Contains:
            return name.find(key) != name.npos;
        case Match::Equals:
            return name == key;
        }
        return false;
    }
};

template <std::size_t count>
CFStringEncoding encodingOfFirstMatch(const std::array<NameRow, count>& rows, std::u16string_view name) {
    const auto row = std::ranges::find_if(rows, [name](const NameRow& each) { return each.matches(name); });
    return row == rows.end() ? kCFStringEncodingInvalidId : row->encoding;
}

// The first match counts, so "latin10" stands before "latin1". UTF-7 is read as the ASCII that it is made of,
// and the language of an English page as the encoding that such pages have.
constexpr auto nameRows = std::to_array<NameRow>({
    {Match::Contains, u"latin10", kCFStringEncodingISOLatin10},
    {Match::Contains, u"latin1", kCFStringEncodingISOLatin1},
    {Match::Contains, u"latin2", kCFStringEncodingISOLatin2},
    {Match::Contains, u"latin3", kCFStringEncodingISOLatin3},
    {Match::Contains, u"latin4", kCFStringEncodingISOLatin4},
    {Match::Contains, u"latin5", kCFStringEncodingISOLatin5},
    {Match::Contains, u"latin6", kCFStringEncodingISOLatin6},
    {Match::Contains, u"latin7", kCFStringEncodingISOLatin7},
    {Match::Contains, u"latin8", kCFStringEncodingISOLatin8},
    {Match::Contains, u"latin9", kCFStringEncodingISOLatin9},
    {Match::Equals, u"visual", kCFStringEncodingISOLatinHebrew},
    {Match::Equals, u"xkamcs", kCFStringEncodingKamenicky},
    {Match::Equals, u"kamcs", kCFStringEncodingKamenicky},
    {Match::Equals, u"kbkam", kCFStringEncodingKamenicky},
    {Match::Equals, u"koi8cs2", kCFStringEncodingKOI8_CS2},
    {Match::Equals, u"csn369103", kCFStringEncodingKOI8_CS2},
    {Match::Equals, u"usascii", kCFStringEncodingASCII},
    {Match::Equals, u"ascii", kCFStringEncodingASCII},
    {Match::Contains, u"utf7", kCFStringEncodingASCII},
    {Match::Contains, u"gb2312", kCFStringEncodingEUC_CN},
    {Match::Prefix, u"gbk", kCFStringEncodingGBK_95},
    {Match::Contains, u"utf8", kCFStringEncodingUTF8},
    {Match::Contains, u"uft8", kCFStringEncodingUTF8},
    {Match::Equals, u"unicode", kCFStringEncodingUTF8},
    {Match::Contains, u"utf16", kCFStringEncodingUnicode},
    {Match::Contains, u"shiftj", kCFStringEncodingShiftJIS},
    {Match::Contains, u"sjis", kCFStringEncodingShiftJIS},
    {Match::Prefix, u"koi8", kCFStringEncodingKOI8_R},
    {Match::Contains, u"big5", kCFStringEncodingBig5},
    {Match::Contains, u"euckr", kCFStringEncodingEUC_KR},
    {Match::Contains, u"eucj", kCFStringEncodingEUC_JP},
    {Match::Contains, u"euccn", kCFStringEncodingEUC_CN},
    {Match::Contains, u"euctw", kCFStringEncodingEUC_TW},
    {Match::Equals, u"ksc56011987", kCFStringEncodingKSC_5601_87},
    {Match::Equals, u"ksc560187", kCFStringEncodingKSC_5601_87},
    {Match::Prefix, u"ksc560192", kCFStringEncodingKSC_5601_92_Johab},
    {Match::Equals, u"en", kCFStringEncodingUTF8},
    {Match::Equals, u"enus", kCFStringEncodingUTF8},
    {Match::Equals, u"engb", kCFStringEncodingUTF8},
    {Match::Equals, u"none", kCFStringEncodingASCII},
});

constexpr auto iso2022Rows = std::to_array<NameRow>({
    {Match::Equals, u"iso2022jp1", kCFStringEncodingISO_2022_JP_1},
    {Match::Equals, u"iso2022jp2", kCFStringEncodingISO_2022_JP_2},
    {Match::Equals, u"iso2022jp3", kCFStringEncodingISO_2022_JP_3},
    {Match::Prefix, u"", kCFStringEncodingISO_2022_JP},
});

constexpr auto macRows = std::to_array<NameRow>({
    {Match::Equals, u"", kCFStringEncodingMacRoman},
    {Match::Equals, u"roman", kCFStringEncodingMacRoman},
    {Match::Equals, u"osroman", kCFStringEncodingMacRoman},
    {Match::Equals, u"intosh", kCFStringEncodingMacRoman},
    {Match::Equals, u"romanlatin1", kCFStringEncodingMacRomanLatin1},
    {Match::Equals, u"cyrillic", kCFStringEncodingMacCyrillic},
    {Match::Equals, u"ce", kCFStringEncodingMacCentralEurRoman},
    {Match::Equals, u"japanese", kCFStringEncodingMacJapanese},
    {Match::Contains, u"chinesetrad", kCFStringEncodingMacChineseTrad},
    {Match::Equals, u"korean", kCFStringEncodingMacKorean},
    {Match::Equals, u"arabic", kCFStringEncodingMacArabic},
    {Match::Equals, u"hebrew", kCFStringEncodingMacHebrew},
    {Match::Equals, u"greek", kCFStringEncodingMacGreek},
    {Match::Equals, u"devanagari", kCFStringEncodingMacDevanagari},
    {Match::Equals, u"gurmukhi", kCFStringEncodingMacGurmukhi},
    {Match::Equals, u"gujarati", kCFStringEncodingMacGujarati},
    {Match::Equals, u"oriya", kCFStringEncodingMacOriya},
    {Match::Equals, u"bengali", kCFStringEncodingMacBengali},
    {Match::Equals, u"tamil", kCFStringEncodingMacTamil},
    {Match::Equals, u"telugu", kCFStringEncodingMacTelugu},
    {Match::Equals, u"kannada", kCFStringEncodingMacKannada},
    {Match::Equals, u"malayalam", kCFStringEncodingMacMalayalam},
    {Match::Equals, u"sinhalese", kCFStringEncodingMacSinhalese},
    {Match::Equals, u"burmese", kCFStringEncodingMacBurmese},
    {Match::Equals, u"khmer", kCFStringEncodingMacKhmer},
    {Match::Equals, u"thai", kCFStringEncodingMacThai},
    {Match::Equals, u"laotian", kCFStringEncodingMacLaotian},
    {Match::Equals, u"georgian", kCFStringEncodingMacGeorgian},
    {Match::Equals, u"armenian", kCFStringEncodingMacArmenian},
    {Match::Contains, u"chinesesimp", kCFStringEncodingMacChineseSimp},
    {Match::Equals, u"tibetan", kCFStringEncodingMacTibetan},
    {Match::Equals, u"mongolian", kCFStringEncodingMacMongolian},
    {Match::Equals, u"ethiopic", kCFStringEncodingMacEthiopic},
    {Match::Contains, u"centraleur", kCFStringEncodingMacCentralEurRoman},
    {Match::Equals, u"vietnamese", kCFStringEncodingMacVietnamese},
    {Match::Equals, u"extarabic", kCFStringEncodingMacExtArabic},
    {Match::Equals, u"turkish", kCFStringEncodingMacTurkish},
    {Match::Equals, u"croatian", kCFStringEncodingMacCroatian},
    {Match::Equals, u"icelandic", kCFStringEncodingMacIcelandic},
    {Match::Equals, u"romanian", kCFStringEncodingMacRomanian},
    {Match::Equals, u"celtic", kCFStringEncodingMacCeltic},
    {Match::Equals, u"gaelic", kCFStringEncodingMacGaelic},
    {Match::Equals, u"farsi", kCFStringEncodingMacFarsi},
    {Match::Equals, u"ukrainian", kCFStringEncodingMacUkrainian},
    {Match::Equals, u"inuit", kCFStringEncodingMacInuit},
});

NSMutableString lowerCaseWithoutSeparators(const NSString& label) {
    static constexpr UnitBitmap separators(u"-_ '\".");
    NSMutableString name(label);
    CFStringLowercase(name);
    removeCharacters(name, separators.rep());
    return name;
}

// The first number in the name, at most the largest; 0, which no row has, when there is none.
std::int32_t firstNumber(std::u16string_view name) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    std::int64_t number = 0;
    for (auto digit = std::ranges::find_if(name, isASCIIDigit<char16_t>);
         digit != name.end() && isASCIIDigit(*digit); ++digit)
        number = std::min(number * 10 + (*digit - u'0'), most);
    return static_cast<std::int32_t>(number);
}

CFStringEncoding encodingOfNumber(std::int32_t number, std::u16string_view name) {
    if (number == 2022)
        return encodingOfFirstMatch(iso2022Rows, name);
    if (number <= largestCodePage && number != codePageOfLatin1) {
        const CFStringEncoding page = CFStringConvertWindowsCodepageToEncoding(number);
        if (page != kCFStringEncodingInvalidId)
            return page;
    }
    const auto row = std::ranges::lower_bound(numberRows, number, {}, &NumberRow::number);
    if (row != numberRows.end() && row->number == number)
        return row->encoding;
    // 8859-1 with one digit too many in the middle.
    if (number >= 885101 && number <= 885391 && number % 10 == 1)
        return kCFStringEncodingISOLatin1;
    return kCFStringEncodingInvalidId;
}

bool meansUnknown(const NSString& label) {
    constexpr std::u16string_view marks = u"/0<>";
    return label.isEmpty() || (label.length() == 1 && marks.find(label.characters()[0]) != marks.npos) ||
           CFStringCompareCaseInsensitive(label, u"auto") == 0;
}

} // namespace

CFStringEncoding macEncoding(std::u16string_view script) {
    return encodingOfFirstMatch(macRows, script);
}

CFStringEncoding charset2CFStringEncoding(const NSString& label) {
    if (label.length() < 3)
        return kCFStringEncodingInvalidId;
    const NSMutableString text = lowerCaseWithoutSeparators(label);
    const std::u16string_view name = text.characters();
    const CFStringEncoding numbered = encodingOfNumber(firstNumber(name), name);
    if (numbered != kCFStringEncodingInvalidId)
        return numbered;
    if (name.starts_with(u"windows"))
        return kCFStringEncodingWindowsLatin1;
    if (name.starts_with(u"mac"))
        return macEncoding(name.substr(3));
    if (name.starts_with(u"xmac"))
        return macEncoding(name.substr(4));
    return encodingOfFirstMatch(nameRows, name);
}

NSStringEncoding charset2NSStringEncoding(const NSString& label) {
    const CFStringEncoding encoding = charset2CFStringEncoding(label);
    if (encoding == kCFStringEncodingShiftJIS)
        return NSShiftJISStringEncoding;
    if (encoding != kCFStringEncodingInvalidId && CFStringIsEncodingAvailable(encoding))
        return CFStringConvertEncodingToNSStringEncoding(encoding);
    if (!meansUnknown(label))
        NSLog(u"Unknown/Unsupported encoding: %@", label);
    return kCFStringEncodingInvalidId;
}

CFStringEncoding CFEncodingFromName(const NSString& label) {
    return charset2CFStringEncoding(label);
}

NSStringEncoding NSEncodingFromName(const NSString& label) {
    return charset2NSStringEncoding(label);
}

} // namespace kelvo
