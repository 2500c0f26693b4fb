#include "text/WildcardMatching.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

/// The definition, in time that grows exponentially.
bool isLike(std::u16string_view text, std::u16string_view wildcard) {
    if (wildcard.empty())
        return text.empty();
    if (wildcard[0] == u'*')
        return isLike(text, wildcard.substr(1)) || (!text.empty() && isLike(text.substr(1), wildcard));
    return !text.empty() && (wildcard[0] == u'?' || (text[0] | 0x20) == (wildcard[0] | 0x20)) &&
           isLike(text.substr(1), wildcard.substr(1));
}

TEST(WildcardMatchingTest, MatchesAsTheDefinitionDoes) {
    std::minstd_rand random(1);
    const auto text = [&random](std::u16string_view alphabet) {
        std::u16string result(random() % 9, u'\0');
        for (char16_t& unit : result)
            unit = alphabet[random() % alphabet.size()];
        return NSString(result);
    };
    for (int round = 0; round < 20'000; ++round) {
        const NSString string = text(u"abA"), wildcard = text(u"aB*?");
        ASSERT_EQ(isCaseInsensitiveLikeWildcard(string, wildcard), isLike(string, wildcard))
            << string.UTF8String() << " " << wildcard.UTF8String();
    }
}

TEST(WildcardMatchingTest, TakesCharactersForWhatTheyAre) {
    const std::tuple<NSString, NSString, bool> rows[] = {
        {u"\u00C4.TXT", u"\u00E4.*", true},
        {u"\U0001F600", u"?", true},
        {u"\U0001F600", u"??", false},
        {u"ab", u"a\\*", false},
        {nullptr, u"*", false},
        {u"", nullptr, false},
        {u"stra\u00DFe", u"STRASSE", false},
        {NSString(std::u16string(5000, u'a')), NSString(std::u16string(2000, u'*') + u"b"), false},
    };
    for (const auto& [string, wildcard, isLikeIt] : rows)
        EXPECT_EQ(isCaseInsensitiveLikeWildcard(string, wildcard), isLikeIt) << wildcard.UTF8String();
}

} // namespace
} // namespace kelvo
