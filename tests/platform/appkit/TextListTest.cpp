#include "platform/appkit/NSTextList.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

std::string markerOf(const std::string& format, int item) {
    return NSTextList{NSString::stringWithUTF8String(format)}.markerForItemNumber(item).UTF8String();
}

TEST(TextList, Markers) {
    std::istringstream rows("{disc} 7 \u2022  {decimal}. 12 12.  {decimal} -3 -3  ({lower-alpha}) 1 (a)  "
                            "{upper-alpha} 26 Z  {upper-alpha} 27 AA  {lower-alpha} 703 aaa  {lower-alpha} 0 "
                            "0  {lower-roman} 1994 mcmxciv  {upper-roman} 3999 MMMCMXCIX  {upper-roman} 4000 "
                            "4000  {lower-hexadecimal} 255 ff  {upper-hexadecimal} 171 AB  {octal} 8 10  "
                            "{lower-greek} 25 \u03B1\u03B1  {strange} 1 {strange}  \u2192 1 \u2192");
    std::string format, marker;
    for (int item = 0; rows >> format >> item >> marker;)
        EXPECT_EQ(markerOf(format, item), marker) << format << item;
    EXPECT_EQ(markerOf("} {", 1), "} {");
}

} // namespace
} // namespace kelvo
