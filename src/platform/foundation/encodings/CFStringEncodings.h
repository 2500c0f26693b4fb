#pragma once

#include "platform/foundation/NSString.h"

#include <cstdint>

namespace kelvo {

/// The number of a text encoding. The low 16 bits are the base, bits 16 to 25 a variant (always 0 here) and
/// bits 26 up the format, which tells the Unicode encodings apart.
using CFStringEncoding = std::uint32_t;
/// The second scheme of numbers: small ones for some encodings, 0x80000000 plus the first scheme's number for
/// all others.
using NSStringEncoding = std::uint32_t;

/// No encoding, in both schemes.
inline constexpr std::uint32_t kCFStringEncodingInvalidId = 0xFFFFFFFF;

// Unicode.
inline constexpr CFStringEncoding kCFStringEncodingUTF16 = 0x100;
inline constexpr CFStringEncoding kCFStringEncodingUTF7 = 0x4000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF8 = 0x8000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF32 = 0xC000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF16BE = 0x10000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF16LE = 0x14000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF32BE = 0x18000100;
inline constexpr CFStringEncoding kCFStringEncodingUTF32LE = 0x1C000100;
inline constexpr CFStringEncoding kCFStringEncodingUnicode = kCFStringEncodingUTF16;

// Scripts of the classic system.
inline constexpr CFStringEncoding kCFStringEncodingMacRoman = 0x0;
inline constexpr CFStringEncoding kCFStringEncodingMacJapanese = 0x1;
inline constexpr CFStringEncoding kCFStringEncodingMacChineseTrad = 0x2;
inline constexpr CFStringEncoding kCFStringEncodingMacKorean = 0x3;
inline constexpr CFStringEncoding kCFStringEncodingMacArabic = 0x4;
inline constexpr CFStringEncoding kCFStringEncodingMacHebrew = 0x5;
inline constexpr CFStringEncoding kCFStringEncodingMacGreek = 0x6;
inline constexpr CFStringEncoding kCFStringEncodingMacCyrillic = 0x7;
inline constexpr CFStringEncoding kCFStringEncodingMacDevanagari = 0x9;
inline constexpr CFStringEncoding kCFStringEncodingMacGurmukhi = 0xA;
inline constexpr CFStringEncoding kCFStringEncodingMacGujarati = 0xB;
inline constexpr CFStringEncoding kCFStringEncodingMacOriya = 0xC;
inline constexpr CFStringEncoding kCFStringEncodingMacBengali = 0xD;
inline constexpr CFStringEncoding kCFStringEncodingMacTamil = 0xE;
inline constexpr CFStringEncoding kCFStringEncodingMacTelugu = 0xF;
inline constexpr CFStringEncoding kCFStringEncodingMacKannada = 0x10;
inline constexpr CFStringEncoding kCFStringEncodingMacMalayalam = 0x11;
inline constexpr CFStringEncoding kCFStringEncodingMacSinhalese = 0x12;
inline constexpr CFStringEncoding kCFStringEncodingMacBurmese = 0x13;
inline constexpr CFStringEncoding kCFStringEncodingMacKhmer = 0x14;
inline constexpr CFStringEncoding kCFStringEncodingMacThai = 0x15;
inline constexpr CFStringEncoding kCFStringEncodingMacLaotian = 0x16;
inline constexpr CFStringEncoding kCFStringEncodingMacGeorgian = 0x17;
inline constexpr CFStringEncoding kCFStringEncodingMacArmenian = 0x18;
inline constexpr CFStringEncoding kCFStringEncodingMacChineseSimp = 0x19;
inline constexpr CFStringEncoding kCFStringEncodingMacTibetan = 0x1A;
inline constexpr CFStringEncoding kCFStringEncodingMacMongolian = 0x1B;
inline constexpr CFStringEncoding kCFStringEncodingMacEthiopic = 0x1C;
inline constexpr CFStringEncoding kCFStringEncodingMacCentralEurRoman = 0x1D;
inline constexpr CFStringEncoding kCFStringEncodingMacVietnamese = 0x1E;
inline constexpr CFStringEncoding kCFStringEncodingMacExtArabic = 0x1F;
inline constexpr CFStringEncoding kCFStringEncodingMacSymbol = 0x21;
inline constexpr CFStringEncoding kCFStringEncodingMacDingbats = 0x22;
inline constexpr CFStringEncoding kCFStringEncodingMacTurkish = 0x23;
inline constexpr CFStringEncoding kCFStringEncodingMacCroatian = 0x24;
inline constexpr CFStringEncoding kCFStringEncodingMacIcelandic = 0x25;
inline constexpr CFStringEncoding kCFStringEncodingMacRomanian = 0x26;
inline constexpr CFStringEncoding kCFStringEncodingMacCeltic = 0x27;
inline constexpr CFStringEncoding kCFStringEncodingMacGaelic = 0x28;
inline constexpr CFStringEncoding kCFStringEncodingMacFarsi = 0x8C;
inline constexpr CFStringEncoding kCFStringEncodingMacUkrainian = 0x98;
inline constexpr CFStringEncoding kCFStringEncodingMacInuit = 0xEC;

// ISO 8859.
inline constexpr CFStringEncoding kCFStringEncodingISOLatin1 = 0x201;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin2 = 0x202;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin3 = 0x203;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin4 = 0x204;
inline constexpr CFStringEncoding kCFStringEncodingISOLatinCyrillic = 0x205;
inline constexpr CFStringEncoding kCFStringEncodingISOLatinArabic = 0x206;
inline constexpr CFStringEncoding kCFStringEncodingISOLatinGreek = 0x207;
inline constexpr CFStringEncoding kCFStringEncodingISOLatinHebrew = 0x208;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin5 = 0x209;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin6 = 0x20A;
inline constexpr CFStringEncoding kCFStringEncodingISOLatinThai = 0x20B;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin7 = 0x20D;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin8 = 0x20E;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin9 = 0x20F;
inline constexpr CFStringEncoding kCFStringEncodingISOLatin10 = 0x210;

// DOS code pages.
inline constexpr CFStringEncoding kCFStringEncodingDOSLatinUS = 0x400;
inline constexpr CFStringEncoding kCFStringEncodingDOSGreek = 0x405;
inline constexpr CFStringEncoding kCFStringEncodingDOSBalticRim = 0x406;
inline constexpr CFStringEncoding kCFStringEncodingDOSLatin1 = 0x410;
inline constexpr CFStringEncoding kCFStringEncodingDOSGreek1 = 0x411;
inline constexpr CFStringEncoding kCFStringEncodingDOSLatin2 = 0x412;
inline constexpr CFStringEncoding kCFStringEncodingDOSCyrillic = 0x413;
inline constexpr CFStringEncoding kCFStringEncodingDOSTurkish = 0x414;
inline constexpr CFStringEncoding kCFStringEncodingDOSPortuguese = 0x415;
inline constexpr CFStringEncoding kCFStringEncodingDOSIcelandic = 0x416;
inline constexpr CFStringEncoding kCFStringEncodingDOSHebrew = 0x417;
inline constexpr CFStringEncoding kCFStringEncodingDOSCanadianFrench = 0x418;
inline constexpr CFStringEncoding kCFStringEncodingDOSArabic = 0x419;
inline constexpr CFStringEncoding kCFStringEncodingDOSNordic = 0x41A;
inline constexpr CFStringEncoding kCFStringEncodingDOSRussian = 0x41B;
inline constexpr CFStringEncoding kCFStringEncodingDOSGreek2 = 0x41C;
inline constexpr CFStringEncoding kCFStringEncodingDOSThai = 0x41D;
inline constexpr CFStringEncoding kCFStringEncodingDOSJapanese = 0x420;
inline constexpr CFStringEncoding kCFStringEncodingDOSChineseSimplif = 0x421;
inline constexpr CFStringEncoding kCFStringEncodingDOSKorean = 0x422;
inline constexpr CFStringEncoding kCFStringEncodingDOSChineseTrad = 0x423;

// Windows code pages.
inline constexpr CFStringEncoding kCFStringEncodingWindowsLatin1 = 0x500;
inline constexpr CFStringEncoding kCFStringEncodingWindowsLatin2 = 0x501;
inline constexpr CFStringEncoding kCFStringEncodingWindowsCyrillic = 0x502;
inline constexpr CFStringEncoding kCFStringEncodingWindowsGreek = 0x503;
inline constexpr CFStringEncoding kCFStringEncodingWindowsLatin5 = 0x504;
inline constexpr CFStringEncoding kCFStringEncodingWindowsHebrew = 0x505;
inline constexpr CFStringEncoding kCFStringEncodingWindowsArabic = 0x506;
inline constexpr CFStringEncoding kCFStringEncodingWindowsBalticRim = 0x507;
inline constexpr CFStringEncoding kCFStringEncodingWindowsVietnamese = 0x508;
inline constexpr CFStringEncoding kCFStringEncodingWindowsKoreanJohab = 0x510;

// National character sets, bare or with ASCII.
inline constexpr CFStringEncoding kCFStringEncodingASCII = 0x600;
inline constexpr CFStringEncoding kCFStringEncodingANSEL = 0x601;
inline constexpr CFStringEncoding kCFStringEncodingJIS_X0201_76 = 0x620;
inline constexpr CFStringEncoding kCFStringEncodingJIS_X0208_83 = 0x621;
inline constexpr CFStringEncoding kCFStringEncodingJIS_X0208_90 = 0x622;
inline constexpr CFStringEncoding kCFStringEncodingJIS_X0212_90 = 0x623;
inline constexpr CFStringEncoding kCFStringEncodingJIS_C6226_78 = 0x624;
inline constexpr CFStringEncoding kCFStringEncodingShiftJIS_X0213 = 0x628;
inline constexpr CFStringEncoding kCFStringEncodingJISX0213_MenKuTen = 0x629;
inline constexpr CFStringEncoding kCFStringEncodingGB_2312_80 = 0x630;
inline constexpr CFStringEncoding kCFStringEncodingGBK_95 = 0x631;
inline constexpr CFStringEncoding kCFStringEncodingGB18030 = 0x632;
inline constexpr CFStringEncoding kCFStringEncodingKSC_5601_87 = 0x640;
inline constexpr CFStringEncoding kCFStringEncodingKSC_5601_92_Johab = 0x641;

// ISO 2022.
inline constexpr CFStringEncoding kCFStringEncodingISO_2022_JP = 0x820;
inline constexpr CFStringEncoding kCFStringEncodingISO_2022_JP_2 = 0x821;
inline constexpr CFStringEncoding kCFStringEncodingISO_2022_JP_1 = 0x822;
inline constexpr CFStringEncoding kCFStringEncodingISO_2022_JP_3 = 0x823;
inline constexpr CFStringEncoding kCFStringEncodingISO_2022_CN = 0x830;
inline constexpr CFStringEncoding kCFStringEncodingISO_2022_CN_EXT = 0x831;
inline constexpr CFStringEncoding kCFStringEncodingISO_2022_KR = 0x840;

// Extended Unix codes.
inline constexpr CFStringEncoding kCFStringEncodingEUC_JP = 0x920;
inline constexpr CFStringEncoding kCFStringEncodingEUC_CN = 0x930;
inline constexpr CFStringEncoding kCFStringEncodingEUC_TW = 0x931;
inline constexpr CFStringEncoding kCFStringEncodingEUC_KR = 0x940;

// Others in use on networks.
inline constexpr CFStringEncoding kCFStringEncodingShiftJIS = 0xA01;
inline constexpr CFStringEncoding kCFStringEncodingKOI8_R = 0xA02;
inline constexpr CFStringEncoding kCFStringEncodingBig5 = 0xA03;
inline constexpr CFStringEncoding kCFStringEncodingMacRomanLatin1 = 0xA04;
inline constexpr CFStringEncoding kCFStringEncodingHZ_GB_2312 = 0xA05;
inline constexpr CFStringEncoding kCFStringEncodingBig5_HKSCS_1999 = 0xA06;
inline constexpr CFStringEncoding kCFStringEncodingVISCII = 0xA07;
inline constexpr CFStringEncoding kCFStringEncodingKOI8_U = 0xA08;
inline constexpr CFStringEncoding kCFStringEncodingBig5_E = 0xA09;
inline constexpr CFStringEncoding kCFStringEncodingUTF7_IMAP = 0xA10;

// Others.
inline constexpr CFStringEncoding kCFStringEncodingNextStepLatin = 0xB01;
inline constexpr CFStringEncoding kCFStringEncodingNextStepJapanese = 0xB02;
inline constexpr CFStringEncoding kCFStringEncodingNonLossyASCII = 0xBFF;
inline constexpr CFStringEncoding kCFStringEncodingEBCDIC_US = 0xC01;
inline constexpr CFStringEncoding kCFStringEncodingEBCDIC_CP037 = 0xC02;

// Two Czech encodings that the platform lacks. Their numbers are of our own choosing and lie outside the
// ranges of the platform's, so that they never meet a real one. Kamenický is the code page of Czech and
// Slovak DOS: ASCII, the letters 80 to AB where the code page 437 has its own, 437 for the rest. KOI8-CS2
// (ČSN 36 9103) has capitals 20 (hexadecimal) above their small letters; its bytes C7 and E7, one letter "ch"
// to a Czech, are two units.
inline constexpr CFStringEncoding kCFStringEncodingKamenicky = 0xA001;
inline constexpr CFStringEncoding kCFStringEncodingKOI8_CS2 = 0xA002;

inline constexpr NSStringEncoding NSASCIIStringEncoding = 1;
inline constexpr NSStringEncoding NSNEXTSTEPStringEncoding = 2;
inline constexpr NSStringEncoding NSJapaneseEUCStringEncoding = 3;
inline constexpr NSStringEncoding NSUTF8StringEncoding = 4;
inline constexpr NSStringEncoding NSISOLatin1StringEncoding = 5;
inline constexpr NSStringEncoding NSSymbolStringEncoding = 6;
inline constexpr NSStringEncoding NSNonLossyASCIIStringEncoding = 7;
inline constexpr NSStringEncoding NSShiftJISStringEncoding = 8;
inline constexpr NSStringEncoding NSISOLatin2StringEncoding = 9;
inline constexpr NSStringEncoding NSUnicodeStringEncoding = 10;
inline constexpr NSStringEncoding NSWindowsCP1251StringEncoding = 11;
inline constexpr NSStringEncoding NSWindowsCP1252StringEncoding = 12;
inline constexpr NSStringEncoding NSWindowsCP1253StringEncoding = 13;
inline constexpr NSStringEncoding NSWindowsCP1254StringEncoding = 14;
inline constexpr NSStringEncoding NSWindowsCP1250StringEncoding = 15;
inline constexpr NSStringEncoding NSISO2022JPStringEncoding = 21;
inline constexpr NSStringEncoding NSMacOSRomanStringEncoding = 30;
inline constexpr NSStringEncoding NSUTF16BigEndianStringEncoding = 0x90000100;
inline constexpr NSStringEncoding NSUTF16LittleEndianStringEncoding = 0x94000100;
inline constexpr NSStringEncoding NSUTF32StringEncoding = 0x8C000100;
inline constexpr NSStringEncoding NSUTF32BigEndianStringEncoding = 0x98000100;
inline constexpr NSStringEncoding NSUTF32LittleEndianStringEncoding = 0x9C000100;
inline constexpr NSStringEncoding NSKamenickyStringEncoding = 0xFFFFFFF0;
inline constexpr NSStringEncoding NSKOI8CS2StringEncoding = 0xFFFFFFF1;

/// Any number is converted, whether there is a converter for it or not. DOSJapanese (0x420) gives 8,
/// NSShiftJISStringEncoding, and ShiftJIS (0xA01) does not.
NSStringEncoding CFStringConvertEncodingToNSStringEncoding(CFStringEncoding encoding);
/// kCFStringEncodingInvalidId for a small number that is not among those above.
CFStringEncoding CFStringConvertNSStringEncodingToEncoding(NSStringEncoding encoding);

/// The encoding of a code page by its number in Windows and DOS; kCFStringEncodingInvalidId for any other
/// number.
CFStringEncoding CFStringConvertWindowsCodepageToEncoding(std::int32_t codePage);

/// True exactly when text can be converted from and to the encoding here.
bool CFStringIsEncodingAvailable(CFStringEncoding encoding);

/// A short English name for messages ("windows-1252"); nil for a number that names nothing.
NSString CFStringGetNameOfEncoding(CFStringEncoding encoding);

} // namespace kelvo
