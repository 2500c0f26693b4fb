#include "platform/appkit/NSTextList.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(TextList, Markers) {
    const std::tuple<const char16_t*, int, const char16_t*> rows[] = {{u"{disc}", 7, u"\u2022"},
                                                                      {u"{decimal}.", 12, u"12."},
                                                                      {u"{decimal}", -3, u"-3"},
                                                                      {u"({lower-alpha})", 1, u"(a)"},
                                                                      {u"{upper-alpha}", 26, u"Z"},
                                                                      {u"{upper-alpha}", 27, u"AA"},
                                                                      {u"{lower-alpha}", 703, u"aaa"},
                                                                      {u"{lower-alpha}", 0, u"0"},
                                                                      {u"{lower-roman}", 1994, u"mcmxciv"},
                                                                      {u"{upper-roman}", 3999, u"MMMCMXCIX"},
                                                                      {u"{upper-roman}", 4000, u"4000"},
                                                                      {u"{lower-hexadecimal}", 255, u"ff"},
                                                                      {u"{upper-hexadecimal}", 171, u"AB"},
                                                                      {u"{octal}", 8, u"10"},
                                                                      {u"{lower-greek}", 25, u"\u03B1\u03B1"},
                                                                      {u"{strange}", 1, u"{strange}"},
                                                                      {u"} {", 1, u"} {"},
                                                                      {u"\u2192", 1, u"\u2192"}};
    for (const auto& [format, item, marker] : rows)
        EXPECT_EQ(NSTextList{format}.markerForItemNumber(item), marker) << NSString(format).UTF8String();
}

} // namespace
} // namespace kelvo
