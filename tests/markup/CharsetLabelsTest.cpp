#include "markup/CharsetLabels.h"

#include "platform/foundation/NSLog.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

constexpr std::uint32_t invalid = 0xFFFFFFFF;

NSString stringOf(const std::string& text) {
    return NSString::stringWithLatin1Bytes(text);
}

// "label=hexadecimal number", "label=-" for what is not known.
std::vector<std::pair<std::string, CFStringEncoding>> rowsOf(const std::string& table) {
    std::vector<std::pair<std::string, CFStringEncoding>> rows;
    std::istringstream words(table);
    for (std::string word; words >> word;) {
        const std::size_t middle = word.find('=');
        const std::string number = word.substr(middle + 1);
        rows.emplace_back(word.substr(0, middle),
                          number == "-" ? invalid : CFStringEncoding(std::stoul(number, nullptr, 16)));
    }
    return rows;
}

TEST(CharsetLabelsTest, codePagesAreKnownByTheirNumber) {
    const auto rows = rowsOf(
        "437=400 646=920 6461=920 708=206 737=405 775=406 850=410 851=411 852=412 855=413 857=414 860=415 "
        "861=416 862=417 863=418 864=419 865=41A 866=41B 869=41C 874=41D 932=420 936=421 949=422 950=423 "
        "1250=501 1251=502 1252=500 1253=503 1254=504 1255=505 1256=506 1257=507 1258=508 1361=510 8859=201 "
        "8591=201 88591=201 88191=201 88391=201 88581=201 88611=201 88691=201 88791=201 89091=201 85591=201 "
        "80591=201 100591=201 810091=201 885101=201 885111=201 885231=201 885391=201 88592=202 88582=202 "
        "85922=202 88593=203 88594=204 88595=205 88596=206 88597=207 88598=208 88599=209 89599=209 "
        "885910=20A 885911=20B 885913=20D 885914=20E 885915=20F 885916=210 0=- 436=- 438=- 819=- 10000=- "
        "885091=- 885100=- 885102=- 885401=- 885912=- 885917=- 20866=- 4294967733=-");
    for (const auto& [number, encoding] : rows) {
        EXPECT_EQ(charset2CFStringEncoding(stringOf("x-" + number)), encoding) << number;
        EXPECT_EQ(charset2CFStringEncoding(stringOf("CP_000" + number + ":19x8")), encoding) << number;
    }
}

TEST(CharsetLabelsTest, namesAreKnownInTheirOrder) {
    const auto rows = rowsOf(
        // Separators, case, length.
        "ISO-8859-1=201 iso_8859-1:1987=201 8859-1=201 'Iso.8859-15\"=20F L-A-T-I-N-1-0=210 en=- en-=8000100 "
        "u8=- ---=- utf=- "
        // A number that means nothing lets the name decide.
        "windows-1251=502 windows=500 windows-31j=500 x-windows=- 99999999999999999999-utf-8=8000100 "
        "utf-8-1251=8000100 ISO-2022-JP=820 ISO-2022-JP-1=822 ISO-2022-JP-2=821 ISO-2022-JP-3=823 "
        "ISO-2022-KR=820 ISO-2022-CN=820 x-iso-2022-jp-1=820 ISO-646=920 csISOLatin1=201 latin1=201 "
        "latin2=202 latin3=203 latin4=204 latin5=209 latin6=20A latin7=20D latin8=20E latin9=20F latin10=210 "
        "latin=- latin-utf8=8000100 visual=208 x-kam-cs=A001 kam-cs=A001 kbkam=A001 KOI8-CS2=A002 "
        "CSN_369103=A002 us-ascii=600 ASCII=600 x-ascii=- utf-7=600 x-unicode-2-0-utf-7=600 GB2312=930 "
        "csGB2312=930 gbk=631 x-gbk=- GB18030=- UTF-8=8000100 utf8=8000100 uft-8=8000100 unicode=8000100 "
        "unicode-1-1-utf-8=8000100 utf-16=100 UTF-16LE=100 Shift_JIS=A01 x-sjis=A01 koi8-r=A02 KOI8-U=A02 "
        "Big5=A03 big5-hkscs=A03 euc-kr=940 x-euc-jp=920 eucj=920 euc-cn=930 x-euc-tw=931 ks_c_5601-1987=640 "
        "ks_c_5601-87=640 ks_c_5601-92=641 ks_c_5601-1992=- en-US=8000100 en-GB=8000100 en-AU=- none=600 "
        "nonesuch=-");
    for (const auto& [label, encoding] : rows)
        EXPECT_EQ(charset2CFStringEncoding(stringOf(label)), encoding) << label;
    EXPECT_EQ(charset2CFStringEncoding(nullptr), invalid);
    EXPECT_EQ(charset2CFStringEncoding(u" windows 1250 "), 0x501u);
    EXPECT_EQ(charset2CFStringEncoding(u"\u212AOI8-R"), 0xA02u) << "Kelvin sign";
    EXPECT_EQ(CFEncodingFromName(u"latin2"), 0x202u);
    const std::string megabyte(1 << 20, '0');
    EXPECT_EQ(charset2CFStringEncoding(stringOf(megabyte + "1251")), 0x502u);
    EXPECT_EQ(charset2CFStringEncoding(stringOf(megabyte + megabyte + "utf-8")), 0x8000100u);
}

TEST(CharsetLabelsTest, macScripts) {
    const auto rows = rowsOf(
        "=0 roman=0 osroman=0 intosh=0 romanlatin1=A04 cyrillic=7 ce=1D japanese=1 chinesetrad=2 "
        "xchinesetradbig=2 korean=3 arabic=4 hebrew=5 greek=6 devanagari=9 gurmukhi=A gujarati=B oriya=C "
        "bengali=D tamil=E telugu=F kannada=10 malayalam=11 sinhalese=12 burmese=13 khmer=14 thai=15 "
        "laotian=16 georgian=17 armenian=18 xchinesesimpx=19 tibetan=1A mongolian=1B ethiopic=1C "
        "centraleurroman=1D xcentraleur=1D vietnamese=1E extarabic=1F turkish=23 croatian=24 icelandic=25 "
        "romanian=26 celtic=27 gaelic=28 farsi=8C ukrainian=98 inuit=EC greeks=- x=-");
    for (const auto& [script, encoding] : rows) {
        EXPECT_EQ(macEncoding(stringOf(script)), encoding) << script;
        EXPECT_EQ(charset2CFStringEncoding(stringOf("mac-" + script)), encoding) << script;
        EXPECT_EQ(charset2CFStringEncoding(stringOf("x-mac-" + script)), encoding) << script;
    }
}

TEST(CharsetLabelsTest, unavailableLabelsAreLoggedOnce) {
    const auto known =
        rowsOf("utf-8=4 latin1=5 us-ascii=1 x-sjis=8 cp932=8 windows-1251=B big5=80000A03 euc-jp=3 "
               "kam-cs=FFFFFFF0 koi8-cs2=FFFFFFF1 mac=1E utf-16=A /=- 0=- <=- >=- AuTo=- =-");
    for (const auto& [label, encoding] : known) {
        NSLogCapture capture;
        EXPECT_EQ(charset2NSStringEncoding(stringOf(label)), encoding) << label;
        EXPECT_TRUE(capture.messages().empty()) << label;
    }
    for (const char16_t* label :
         {u"1", u"//", u"autos", u"en", u"GB18030", u"x-mac-devanagari", u"%@\u4E2D"}) {
        NSLogCapture capture;
        EXPECT_EQ(NSEncodingFromName(label), invalid);
        EXPECT_EQ(capture.messages(),
                  std::vector<NSString>{
                      NSString(u"Unknown/Unsupported encoding: ").stringByAppendingString(label)});
    }
    NSLogCapture capture;
    EXPECT_EQ(charset2NSStringEncoding(nullptr), invalid);
    EXPECT_TRUE(capture.messages().empty());
}

} // namespace
} // namespace kelvo
