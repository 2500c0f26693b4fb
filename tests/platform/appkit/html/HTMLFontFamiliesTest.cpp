#include "platform/appkit/html/HTMLFontFamilies.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(HTMLFontFamiliesTest, TheFirstThatReadersHaveCounts) {
    const struct {
        const char16_t* list;
        const char16_t* name;
        bool isFixedPitch = false;
    } rows[] = {
        {u"Georgia", u"Georgia"},
        {u"Nobody Knows , \"Courier New\", Georgia", u"Courier New", true},
        {u"ARIAL", u"ARIAL"},
        {u"Foo, sans-serif", u"Helvetica"},
        {u"'Foo, Georgia', Bar", u"Foo, Georgia"},
        {u"\"Nobody's\",'serif'", u"Times"},
        {u"monospace", u"Courier", true},
        {u" , Foo", u"Foo"},
        {u"'never closed, Georgia", u"never closed, Georgia"},
        {u"", u"Times"},
    };
    for (const auto& row : rows) {
        const HTMLFontFamily family = fontFamilyOfList(row.list);
        EXPECT_EQ(family.name, row.name) << NSString(row.list).UTF8String();
        EXPECT_EQ(family.isFixedPitch, row.isFixedPitch) << NSString(row.list).UTF8String();
    }
}

} // namespace
} // namespace kelvo
