#include "platform/webkit/engine/PageWords.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(PageWordsTest, WordsAreWhatReadersMightSee) {
    constexpr struct {
        const char* page;
        bool holdsWords;
    } rows[] = {
        {"", false},
        {"<p> \n</p><br>", false},
        {"<p>a", true},
        {"<p>7</p>", true},
        {"\xC3\xA9", true},
        {"<!-- a > b --><!--a", false},
        {"<!-- a -->b", true},
        {"<SCRIPT src=x>a</b></script ><style>b</style/><title>c</title>", false},
        {"<script>a</scripty></script>b", true},
        {"<styled>b</styled>", true},
        {"<style", false},
        {"<template>a</template><noscript>b</noscript>", true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(holdsWords(row.page), row.holdsWords) << row.page;
}

} // namespace
} // namespace kelvo
