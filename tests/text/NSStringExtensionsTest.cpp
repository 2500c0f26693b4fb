#include "text/NSStringExtensions.h"

#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(NSStringExtensionsTest, stringsInArrays) {
    const NSArray array = NSArray::arrayWithObjects({NSNull(), u"Foo", u"foo", u"", u"stra\u00DFe"});
    EXPECT_EQ(indexOfStringEqualTo(array, u"foo"), 2u);
    EXPECT_EQ(indexOfStringEqualToNoCase(array, u"FOO"), 1u);
    EXPECT_EQ(indexOfStringEqualTo(array, u""), 3u);
    EXPECT_FALSE(containsStringNoCase(array, u"strasse"));
    EXPECT_TRUE(containsStringNoCase(NSArray::arrayWithObjects({u"\u0131"}), u"I"));
    EXPECT_FALSE(containsStringNoCase(NSArray::arrayWithObjects({u"\u212A"}), u"k"));
    EXPECT_FALSE(containsString(array, u"bar") || containsString(array, nullptr));
    EXPECT_FALSE(containsStringNoCase(array, nullptr));
    EXPECT_EQ(indexOfStringEqualTo(nullptr, u"foo"), NSNotFound);
}

} // namespace
} // namespace kelvo
