#include "platform/foundation/encodings/CFStringEncodings.h"

#include "platform/foundation/encodings/EncodingTable.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace kelvo {

namespace {

using Kind = EncodingRow::Kind;

// In the order of the numbers. The converters agree with the encodings' published tables, except for these,
// whose nearest relatives stand in for them: MacJapanese, MacChineseTrad, MacKorean and MacChineseSimp by the
// code pages of the same characters, which lack the vendor's extra rows and single bytes; MacUkrainian by
// MacCyrillic, whose subset it is; JIS_C6226_78 by its successor. ICU's Windows code pages give the
// bytes that the page leaves open as C1 controls. For ISO-8859-16, Johab, VISCII and some others only glibc
// has tables.
constexpr EncodingRow rows[] = {
    {kCFStringEncodingMacRoman, "MacRoman", Kind::ICU, "macintosh"},
    {kCFStringEncodingMacJapanese, "MacJapanese", Kind::ICU, "windows-932"},
    {kCFStringEncodingMacChineseTrad, "MacChineseTrad", Kind::ICU, "windows-950"},
    {kCFStringEncodingMacKorean, "MacKorean", Kind::ICU, "windows-949"},
    {kCFStringEncodingMacArabic, "MacArabic", Kind::OwnPage, ""},
    {kCFStringEncodingMacHebrew, "MacHebrew", Kind::OwnPage, ""},
    {kCFStringEncodingMacGreek, "MacGreek", Kind::ICU, "x-mac-greek"},
    {kCFStringEncodingMacCyrillic, "MacCyrillic", Kind::ICU, "x-mac-cyrillic"},
    {kCFStringEncodingMacDevanagari, "MacDevanagari", Kind::None, ""},
    {kCFStringEncodingMacGurmukhi, "MacGurmukhi", Kind::None, ""},
    {kCFStringEncodingMacGujarati, "MacGujarati", Kind::None, ""},
    {kCFStringEncodingMacOriya, "MacOriya", Kind::None, ""},
    {kCFStringEncodingMacBengali, "MacBengali", Kind::None, ""},
    {kCFStringEncodingMacTamil, "MacTamil", Kind::None, ""},
    {kCFStringEncodingMacTelugu, "MacTelugu", Kind::None, ""},
    {kCFStringEncodingMacKannada, "MacKannada", Kind::None, ""},
    {kCFStringEncodingMacMalayalam, "MacMalayalam", Kind::None, ""},
    {kCFStringEncodingMacSinhalese, "MacSinhalese", Kind::None, ""},
    {kCFStringEncodingMacBurmese, "MacBurmese", Kind::None, ""},
    {kCFStringEncodingMacKhmer, "MacKhmer", Kind::None, ""},
    {kCFStringEncodingMacThai, "MacThai", Kind::OwnPage, ""},
    {kCFStringEncodingMacLaotian, "MacLaotian", Kind::None, ""},
    {kCFStringEncodingMacGeorgian, "MacGeorgian", Kind::None, ""},
    {kCFStringEncodingMacArmenian, "MacArmenian", Kind::None, ""},
    {kCFStringEncodingMacChineseSimp, "MacChineseSimp", Kind::ICU, "gb2312"},
    {kCFStringEncodingMacTibetan, "MacTibetan", Kind::None, ""},
    {kCFStringEncodingMacMongolian, "MacMongolian", Kind::None, ""},
    {kCFStringEncodingMacEthiopic, "MacEthiopic", Kind::None, ""},
    {kCFStringEncodingMacCentralEurRoman, "MacCentralEurRoman", Kind::ICU, "x-mac-centraleurroman"},
    {kCFStringEncodingMacVietnamese, "MacVietnamese", Kind::None, ""},
    {kCFStringEncodingMacExtArabic, "MacExtArabic", Kind::None, ""},
    {kCFStringEncodingMacSymbol, "MacSymbol", Kind::OwnPage, ""},
    {kCFStringEncodingMacDingbats, "MacDingbats", Kind::OwnPage, ""},
    {kCFStringEncodingMacTurkish, "MacTurkish", Kind::ICU, "x-mac-turkish"},
    {kCFStringEncodingMacCroatian, "MacCroatian", Kind::OwnPage, ""},
    {kCFStringEncodingMacIcelandic, "MacIcelandic", Kind::OwnPage, ""},
    {kCFStringEncodingMacRomanian, "MacRomanian", Kind::OwnPage, ""},
    {kCFStringEncodingMacCeltic, "MacCeltic", Kind::None, ""},
    {kCFStringEncodingMacGaelic, "MacGaelic", Kind::None, ""},
    {kCFStringEncodingMacFarsi, "MacFarsi", Kind::OwnPage, ""},
    {kCFStringEncodingMacUkrainian, "MacUkrainian", Kind::ICU, "x-mac-cyrillic"},
    {kCFStringEncodingMacInuit, "MacInuit", Kind::None, ""},
    {kCFStringEncodingUTF16, "UTF-16", Kind::UTF16, ""},
    {kCFStringEncodingISOLatin1, "ISO-8859-1", Kind::ICU, "ISO-8859-1"},
    {kCFStringEncodingISOLatin2, "ISO-8859-2", Kind::ICU, "ISO-8859-2"},
    {kCFStringEncodingISOLatin3, "ISO-8859-3", Kind::ICU, "ISO-8859-3"},
    {kCFStringEncodingISOLatin4, "ISO-8859-4", Kind::ICU, "ISO-8859-4"},
    {kCFStringEncodingISOLatinCyrillic, "ISO-8859-5", Kind::ICU, "ISO-8859-5"},
    {kCFStringEncodingISOLatinArabic, "ISO-8859-6", Kind::ICU, "ISO-8859-6"},
    {kCFStringEncodingISOLatinGreek, "ISO-8859-7", Kind::ICU, "ISO-8859-7"},
    {kCFStringEncodingISOLatinHebrew, "ISO-8859-8", Kind::ICU, "ISO-8859-8"},
    {kCFStringEncodingISOLatin5, "ISO-8859-9", Kind::ICU, "ISO-8859-9"},
    {kCFStringEncodingISOLatin6, "ISO-8859-10", Kind::ICU, "ISO-8859-10"},
    {kCFStringEncodingISOLatinThai, "ISO-8859-11", Kind::ICU, "ISO-8859-11"},
    {kCFStringEncodingISOLatin7, "ISO-8859-13", Kind::ICU, "ISO-8859-13"},
    {kCFStringEncodingISOLatin8, "ISO-8859-14", Kind::ICU, "ISO-8859-14"},
    {kCFStringEncodingISOLatin9, "ISO-8859-15", Kind::ICU, "ISO-8859-15"},
    {kCFStringEncodingISOLatin10, "ISO-8859-16", Kind::IconvPage, "ISO-8859-16"},
    {kCFStringEncodingDOSLatinUS, "cp437", Kind::ICU, "cp437"},
    {kCFStringEncodingDOSGreek, "cp737", Kind::ICU, "windows-737"},
    {kCFStringEncodingDOSBalticRim, "cp775", Kind::ICU, "windows-775"},
    {kCFStringEncodingDOSLatin1, "cp850", Kind::ICU, "windows-850"},
    {kCFStringEncodingDOSGreek1, "cp851", Kind::ICU, "cp851"},
    {kCFStringEncodingDOSLatin2, "cp852", Kind::ICU, "windows-852"},
    {kCFStringEncodingDOSCyrillic, "cp855", Kind::ICU, "windows-855"},
    {kCFStringEncodingDOSTurkish, "cp857", Kind::ICU, "windows-857"},
    {kCFStringEncodingDOSPortuguese, "cp860", Kind::ICU, "cp860"},
    {kCFStringEncodingDOSIcelandic, "cp861", Kind::ICU, "windows-861"},
    {kCFStringEncodingDOSHebrew, "cp862", Kind::ICU, "windows-862"},
    {kCFStringEncodingDOSCanadianFrench, "cp863", Kind::ICU, "cp863"},
    {kCFStringEncodingDOSArabic, "cp864", Kind::ICU, "cp864"},
    {kCFStringEncodingDOSNordic, "cp865", Kind::ICU, "cp865"},
    {kCFStringEncodingDOSRussian, "cp866", Kind::ICU, "windows-866"},
    {kCFStringEncodingDOSGreek2, "cp869", Kind::ICU, "windows-869"},
    {kCFStringEncodingDOSThai, "cp874", Kind::ICU, "windows-874"},
    {kCFStringEncodingDOSJapanese, "cp932", Kind::ICU, "windows-932"},
    {kCFStringEncodingDOSChineseSimplif, "cp936", Kind::ICU, "windows-936"},
    {kCFStringEncodingDOSKorean, "cp949", Kind::ICU, "windows-949"},
    {kCFStringEncodingDOSChineseTrad, "cp950", Kind::ICU, "windows-950"},
    {kCFStringEncodingWindowsLatin1, "windows-1252", Kind::ICU, "windows-1252"},
    {kCFStringEncodingWindowsLatin2, "windows-1250", Kind::ICU, "windows-1250"},
    {kCFStringEncodingWindowsCyrillic, "windows-1251", Kind::ICU, "windows-1251"},
    {kCFStringEncodingWindowsGreek, "windows-1253", Kind::ICU, "windows-1253"},
    {kCFStringEncodingWindowsLatin5, "windows-1254", Kind::ICU, "windows-1254"},
    {kCFStringEncodingWindowsHebrew, "windows-1255", Kind::ICU, "windows-1255"},
    {kCFStringEncodingWindowsArabic, "windows-1256", Kind::ICU, "windows-1256"},
    {kCFStringEncodingWindowsBalticRim, "windows-1257", Kind::ICU, "windows-1257"},
    {kCFStringEncodingWindowsVietnamese, "windows-1258", Kind::ICU, "windows-1258"},
    {kCFStringEncodingWindowsKoreanJohab, "Johab", Kind::Iconv, "JOHAB"},
    {kCFStringEncodingASCII, "ASCII", Kind::ICU, "US-ASCII"},
    {kCFStringEncodingANSEL, "ANSEL", Kind::None, ""},
    {kCFStringEncodingJIS_X0201_76, "JIS_X0201_76", Kind::OwnPage, ""},
    {kCFStringEncodingJIS_X0208_83, "JIS_X0208_83", Kind::Pairs, "EUC-JP"},
    {kCFStringEncodingJIS_X0208_90, "JIS_X0208_90", Kind::Pairs, "EUC-JP"},
    {kCFStringEncodingJIS_X0212_90, "JIS_X0212_90", Kind::Pairs, "jisx-212"},
    {kCFStringEncodingJIS_C6226_78, "JIS_C6226_78", Kind::Pairs, "EUC-JP"},
    {kCFStringEncodingShiftJIS_X0213, "ShiftJIS_X0213", Kind::Iconv, "SHIFT_JISX0213"},
    {kCFStringEncodingJISX0213_MenKuTen, "JISX0213_MenKuTen", Kind::None, ""},
    {kCFStringEncodingGB_2312_80, "GB_2312_80", Kind::Pairs, "ibm-5478"},
    {kCFStringEncodingGBK_95, "GBK_95", Kind::ICU, "GBK"},
    {kCFStringEncodingGB18030, "GB18030", Kind::ICU, "gb18030"},
    {kCFStringEncodingKSC_5601_87, "KSC_5601_87", Kind::Pairs, "ibm-971"},
    {kCFStringEncodingKSC_5601_92_Johab, "KSC_5601_92_Johab", Kind::Iconv, "JOHAB"},
    {kCFStringEncodingISO_2022_JP, "ISO_2022_JP", Kind::ICU, "ISO-2022-JP"},
    {kCFStringEncodingISO_2022_JP_2, "ISO_2022_JP_2", Kind::ICU, "ISO-2022-JP-2"},
    {kCFStringEncodingISO_2022_JP_1, "ISO_2022_JP_1", Kind::ICU, "ISO-2022-JP-1"},
    {kCFStringEncodingISO_2022_JP_3, "ISO_2022_JP_3", Kind::Iconv, "ISO-2022-JP-3"},
    {kCFStringEncodingISO_2022_CN, "ISO_2022_CN", Kind::ICU, "ISO-2022-CN"},
    {kCFStringEncodingISO_2022_CN_EXT, "ISO_2022_CN_EXT", Kind::ICU, "ISO-2022-CN-EXT"},
    {kCFStringEncodingISO_2022_KR, "ISO_2022_KR", Kind::ICU, "ISO-2022-KR"},
    {kCFStringEncodingEUC_JP, "EUC_JP", Kind::ICU, "EUC-JP"},
    {kCFStringEncodingEUC_CN, "EUC_CN", Kind::ICU, "EUC-CN"},
    {kCFStringEncodingEUC_TW, "EUC_TW", Kind::ICU, "EUC-TW"},
    {kCFStringEncodingEUC_KR, "EUC_KR", Kind::ICU, "EUC-KR"},
    {kCFStringEncodingShiftJIS, "ShiftJIS", Kind::ICU, "Shift_JIS"},
    {kCFStringEncodingKOI8_R, "KOI8_R", Kind::ICU, "KOI8-R"},
    {kCFStringEncodingBig5, "Big5", Kind::ICU, "Big5"},
    {kCFStringEncodingMacRomanLatin1, "MacRomanLatin1", Kind::None, ""},
    {kCFStringEncodingHZ_GB_2312, "HZ_GB_2312", Kind::ICU, "HZ-GB-2312"},
    {kCFStringEncodingBig5_HKSCS_1999, "Big5_HKSCS_1999", Kind::ICU, "Big5-HKSCS"},
    {kCFStringEncodingVISCII, "VISCII", Kind::IconvPage, "VISCII"},
    {kCFStringEncodingKOI8_U, "KOI8_U", Kind::ICU, "KOI8-U"},
    {kCFStringEncodingBig5_E, "Big5_E", Kind::None, ""},
    {kCFStringEncodingUTF7_IMAP, "UTF7_IMAP", Kind::ICU, "IMAP-mailbox-name"},
    {kCFStringEncodingNextStepLatin, "NextStepLatin", Kind::OwnPage, ""},
    {kCFStringEncodingNextStepJapanese, "NextStepJapanese", Kind::None, ""},
    {kCFStringEncodingNonLossyASCII, "NonLossyASCII", Kind::NonLossyASCII, ""},
    {kCFStringEncodingEBCDIC_US, "EBCDIC_US", Kind::IconvPage, "EBCDIC-US"},
    {kCFStringEncodingEBCDIC_CP037, "EBCDIC_CP037", Kind::ICU, "ibm-37"},
    {kCFStringEncodingKamenicky, "Kamenicky", Kind::OwnPage, ""},
    {kCFStringEncodingKOI8_CS2, "KOI8-CS2", Kind::OwnPage, ""},
    {kCFStringEncodingUTF7, "UTF-7", Kind::ICU, "UTF-7"},
    {kCFStringEncodingUTF8, "UTF-8", Kind::UTF8, ""},
    {kCFStringEncodingUTF32, "UTF-32", Kind::UTF32, ""},
    {kCFStringEncodingUTF16BE, "UTF-16BE", Kind::UTF16BE, ""},
    {kCFStringEncodingUTF16LE, "UTF-16LE", Kind::UTF16LE, ""},
    {kCFStringEncodingUTF32BE, "UTF-32BE", Kind::UTF32BE, ""},
    {kCFStringEncodingUTF32LE, "UTF-32LE", Kind::UTF32LE, ""},
};

struct NumberPair {
    NSStringEncoding number;
    CFStringEncoding encoding;
};

constexpr NumberPair ownNumbers[] = {
    {NSASCIIStringEncoding, kCFStringEncodingASCII},
    {NSNEXTSTEPStringEncoding, kCFStringEncodingNextStepLatin},
    {NSJapaneseEUCStringEncoding, kCFStringEncodingEUC_JP},
    {NSUTF8StringEncoding, kCFStringEncodingUTF8},
    {NSISOLatin1StringEncoding, kCFStringEncodingISOLatin1},
    {NSSymbolStringEncoding, kCFStringEncodingMacSymbol},
    {NSNonLossyASCIIStringEncoding, kCFStringEncodingNonLossyASCII},
    {NSShiftJISStringEncoding, kCFStringEncodingDOSJapanese},
    {NSISOLatin2StringEncoding, kCFStringEncodingISOLatin2},
    {NSUnicodeStringEncoding, kCFStringEncodingUnicode},
    {NSWindowsCP1251StringEncoding, kCFStringEncodingWindowsCyrillic},
    {NSWindowsCP1252StringEncoding, kCFStringEncodingWindowsLatin1},
    {NSWindowsCP1253StringEncoding, kCFStringEncodingWindowsGreek},
    {NSWindowsCP1254StringEncoding, kCFStringEncodingWindowsLatin5},
    {NSWindowsCP1250StringEncoding, kCFStringEncodingWindowsLatin2},
    {NSISO2022JPStringEncoding, kCFStringEncodingISO_2022_JP},
    {NSMacOSRomanStringEncoding, kCFStringEncodingMacRoman},
    {NSKamenickyStringEncoding, kCFStringEncodingKamenicky},
    {NSKOI8CS2StringEncoding, kCFStringEncodingKOI8_CS2},
};

constexpr NSStringEncoding largeNumberBit = 0x80000000;

struct CodePage {
    std::int32_t number;
    CFStringEncoding encoding;
};

constexpr auto codePages = std::to_array<CodePage>({
    {437, kCFStringEncodingDOSLatinUS},
    {708, kCFStringEncodingISOLatinArabic},
    {737, kCFStringEncodingDOSGreek},
    {775, kCFStringEncodingDOSBalticRim},
    {819, kCFStringEncodingISOLatin1},
    {850, kCFStringEncodingDOSLatin1},
    {851, kCFStringEncodingDOSGreek1},
    {852, kCFStringEncodingDOSLatin2},
    {855, kCFStringEncodingDOSCyrillic},
    {857, kCFStringEncodingDOSTurkish},
    {860, kCFStringEncodingDOSPortuguese},
    {861, kCFStringEncodingDOSIcelandic},
    {862, kCFStringEncodingDOSHebrew},
    {863, kCFStringEncodingDOSCanadianFrench},
    {864, kCFStringEncodingDOSArabic},
    {865, kCFStringEncodingDOSNordic},
    {866, kCFStringEncodingDOSRussian},
    {869, kCFStringEncodingDOSGreek2},
    {874, kCFStringEncodingDOSThai},
    {932, kCFStringEncodingDOSJapanese},
    {936, kCFStringEncodingDOSChineseSimplif},
    {949, kCFStringEncodingDOSKorean},
    {950, kCFStringEncodingDOSChineseTrad},
    {1250, kCFStringEncodingWindowsLatin2},
    {1251, kCFStringEncodingWindowsCyrillic},
    {1252, kCFStringEncodingWindowsLatin1},
    {1253, kCFStringEncodingWindowsGreek},
    {1254, kCFStringEncodingWindowsLatin5},
    {1255, kCFStringEncodingWindowsHebrew},
    {1256, kCFStringEncodingWindowsArabic},
    {1257, kCFStringEncodingWindowsBalticRim},
    {1258, kCFStringEncodingWindowsVietnamese},
    {1361, kCFStringEncodingWindowsKoreanJohab},
    {10000, kCFStringEncodingMacRoman},
    {10001, kCFStringEncodingMacJapanese},
    {10002, kCFStringEncodingMacChineseTrad},
    {10003, kCFStringEncodingMacKorean},
    {10004, kCFStringEncodingMacArabic},
    {10005, kCFStringEncodingMacHebrew},
    {10006, kCFStringEncodingMacGreek},
    {10007, kCFStringEncodingMacCyrillic},
    {10008, kCFStringEncodingMacChineseSimp},
    {10010, kCFStringEncodingMacRomanian},
    {10017, kCFStringEncodingMacUkrainian},
    {10021, kCFStringEncodingMacThai},
    {10029, kCFStringEncodingMacCentralEurRoman},
    {10079, kCFStringEncodingMacIcelandic},
    {10081, kCFStringEncodingMacTurkish},
    {10082, kCFStringEncodingMacCroatian},
    {20866, kCFStringEncodingKOI8_R},
    {21866, kCFStringEncodingKOI8_U},
    {28592, kCFStringEncodingISOLatin2},
    {28593, kCFStringEncodingISOLatin3},
    {28594, kCFStringEncodingISOLatin4},
    {28595, kCFStringEncodingISOLatinCyrillic},
    {28596, kCFStringEncodingISOLatinArabic},
    {28597, kCFStringEncodingISOLatinGreek},
    {28598, kCFStringEncodingISOLatinHebrew},
    {28599, kCFStringEncodingISOLatin5},
    {28603, kCFStringEncodingISOLatin7},
    {28605, kCFStringEncodingISOLatin9},
    {51932, kCFStringEncodingEUC_JP},
    {51949, kCFStringEncodingEUC_KR},
    {54936, kCFStringEncodingGB18030},
    {65001, kCFStringEncodingUTF8},
});
static_assert(std::ranges::is_sorted(codePages, {}, &CodePage::number));

} // namespace

std::span<const EncodingRow> encodingTable() {
    return rows;
}

const EncodingRow* encodingRow(CFStringEncoding encoding) {
    const auto* row = std::lower_bound(
        std::begin(rows), std::end(rows), encoding,
        [](const EncodingRow& candidate, CFStringEncoding number) { return candidate.encoding < number; });
    return row != std::end(rows) && row->encoding == encoding ? row : nullptr;
}

NSStringEncoding CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding) {
    for (const NumberPair& pair : ownNumbers) {
        const bool isExact = pair.encoding > 0xFFF || pair.encoding == kCFStringEncodingASCII ||
                             pair.encoding == kCFStringEncodingUnicode;
        if ((isExact ? encoding : encoding & 0xFFF) == pair.encoding)
            return pair.number;
    }
    return encoding | largeNumberBit;
}

CFStringEncoding CFStringConvertNSStringEncodingToEncoding(NSStringEncoding encoding) {
    if (encoding == kCFStringEncodingInvalidId)
        return kCFStringEncodingInvalidId;
    for (const NumberPair& pair : ownNumbers)
        if (encoding == pair.number)
            return pair.encoding;
    return encoding & largeNumberBit ? encoding & ~largeNumberBit : kCFStringEncodingInvalidId;
}

CFStringEncoding CFStringConvertWindowsCodepageToEncoding(std::int32_t codePage) {
    const auto row = std::ranges::lower_bound(codePages, codePage, {}, &CodePage::number);
    return row != codePages.end() && row->number == codePage ? row->encoding : kCFStringEncodingInvalidId;
}

bool CFStringIsEncodingAvailable(CFStringEncoding encoding) {
    return makeTextCodec(encoding) != nullptr;
}

NSString CFStringGetNameOfEncoding(CFStringEncoding encoding) {
    const EncodingRow* row = encodingRow(encoding);
    return row ? NSString::stringWithLatin1Bytes(row->name) : NSString();
}

} // namespace kelvo
