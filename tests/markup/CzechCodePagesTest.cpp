#include "markup/CzechCodePages.h"

#include "platform/foundation/encodings/NSStringEncoding.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(CzechCodePagesTest, everyByte) {
    using namespace XmlExtensions;
    std::string bytes;
    std::u16string ascii;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
        if (byte < 0x80)
            ascii.push_back(static_cast<char16_t>(byte));
    }
    const NSData data = NSData::dataWithBytes(bytes);
    // B0 to FF are those of code page 437, where ICU has the Greek mu for the micro sign.
    const std::u16string dos(stringWithData_encoding(data, 0x80000400).characters());
    std::u16string kamenicky = ascii;
    kamenicky += u"ČüéďäĎŤčěĚĹÍľĺÄÁÉžŽôöÓůÚýÖÜŠĽÝŘťáíóúňŇŮÔšřŕŔ¼§«»" + dos.substr(0xB0);
    kamenicky[0xE6] = u'\u00B5';
    EXPECT_EQ(initWithKamenickyData(data), NSString(std::u16string_view(kamenicky)));

    const NSString koi = initWithKoi8cs2Data(data);
    ASSERT_EQ(koi.length(), 258u);
    EXPECT_EQ(koi.substringToIndex(0xA1),
              stringWithData_encoding(data, NSISOLatin1StringEncoding).substringToIndex(0xA1));
    const std::u16string_view letters(koi.characters().substr(0xC0));
    EXPECT_EQ(letters.substr(0, 33), u"àáǎčďěŕchüíůĺľöňóôäřšťúëéűýž\uFFFD\uFFFDőėß");
    EXPECT_EQ(letters.substr(33), u"ÀÁǍČĎĚŔCHÜÍŮĹĽÖŇÓÔÄŘŠŤÚËÉŰÝŽ\uFFFD\uFFFDŐĖ\uFFFD");
    EXPECT_TRUE(initWithKamenickyData(nullptr).isNil());
    EXPECT_EQ(initWithKoi8cs2Data(NSData::data()), u"");
}

} // namespace
} // namespace kelvo
