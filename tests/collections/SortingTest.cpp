#include "collections/Sorting.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(SortingTest, Orders) {
    const struct {
        const char* name;
        int (*ascending)(std::u16string_view, std::u16string_view);
        int (*descending)(std::u16string_view, std::u16string_view);
        std::u16string left, right;
        int order, reverse;
    } rows[] = {
        {"units", sortAscending, sortDescending, u"B", u"a", -1, 1},
        {"U+0000", sortAscending, sortDescending, std::u16string(u"a\0", 2), u"a", 1, -1},
        {"units beyond 16 bits", sortAscending, sortDescending, u"\U0001F600", u"\uFFFD", -1, 1},
        {"no case", sortCaseInsensitiveAscending, sortCaseInsensitiveDescending, u"B", u"a", 1, -1},
        {"no case", sortCaseInsensitiveAscending, sortCaseInsensitiveDescending, u"\u00C4", u"\u00E4", 0, 0},
        {"longer", sortAscendingByLength, sortDescendingByLength, u"bb", u"a", 1, -1},
        {"as long", sortAscendingByLength, sortDescendingByLength, u"Ab", u"b", 1, -1},
        {"as long both ways", sortAscendingByLength, sortDescendingByLength, u"Ab", u"aC", -1, -1},
        {"as long, same letters", sortAscendingByLength, sortDescendingByLength, u"Ab", u"aB", 0, 0},
    };
    for (const auto& [name, ascending, descending, left, right, order, reverse] : rows)
        EXPECT_EQ(std::pair(ascending(left, right), descending(left, right)), std::pair(order, reverse))
            << name;
}

TEST(SortingTest, OrdersAsTheUsersLanguageDoes) {
    const std::tuple<const char*, const char*, int> rows[] = {
        {"sv_SE.UTF-8", nullptr, -1}, {"de_DE", "sv_SE", 1},    {"C.UTF-8", "sv_SE", 1},
        {nullptr, nullptr, 1},        {"nonsense", nullptr, 1}, {"", "sv_SE", -1}};
    for (const auto& [first, second, zBeforeUmlaut] : rows) {
        // The language is that of the first comparison in a process.
        EXPECT_EXIT(
            {
                ::unsetenv("LC_ALL");
                for (const auto& [name, value] : {std::pair("LC_COLLATE", first), std::pair("LANG", second)})
                    static_cast<void>(value ? ::setenv(name, value, 1) : ::unsetenv(name));
                const bool holds =
                    sortLocalizedCaseInsensitiveAscending(u"Z", u"\u00E4") == zBeforeUmlaut &&
                    sortLocalizedCaseInsensitiveDescending(u"z", u"\u00C4") == -zBeforeUmlaut &&
                    sortLocalizedCaseInsensitiveAscending(u"aB", u"Ab") == 0 &&
                    sortLocalizedCaseInsensitiveAscending(u"\u00E9a", u"eb") == -1;
                std::exit(holds ? 0 : 1);
            },
            testing::ExitedWithCode(0), "")
            << (first ? first : "none") << " " << (second ? second : "none");
    }
}

TEST(SortingTest, OrdersPaths) {
    const char16_t* const ascending[] = {u"",     u"/",    u"a/./",      u"b",     u"/z",
                                         u"/A/b", u"/a/C", u"/a/x/../d", u"/a/b/a"};
    for (std::size_t left = 0; left < std::size(ascending); ++left)
        for (std::size_t right = 0; right < std::size(ascending); ++right)
            EXPECT_EQ(comparePaths(ascending[left], ascending[right]), left < right ? -1 : left > right)
                << left << " " << right;
    EXPECT_EQ(comparePaths(u"/A//b/", u"/a/B"), 0);
}

} // namespace
} // namespace kelvo
