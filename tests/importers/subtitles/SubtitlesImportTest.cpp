#include "importers/subtitles/SubtitlesImport.h"

#include "support/Attributed.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::attributesOf;

Attributed subtitled(const char* seconds, const char* cues, const char* text) {
    return {{"DurationSeconds", seconds}, {"plumwick_cues", cues}, {"TextContent", text}};
}

TEST(SubtitlesImport, ReadsWhatIsSaid) {
    const Attributed none{{"note", "broken: there are no subtitles in the file"}};
    const struct {
        const char* name;
        std::string file;
        Attributed expected;
    } rows[] = {
        {"SubRip",
         "\xEF\xBB\xBF"
         "1\r\n00:00:01,000 --> 00:01:02,500\r\n<i>Hal{\\an8}lo</i>\r\n3 < 4\r\n\r\n2\r\n"
         "00:01:03,000 --> 01:00:04,250 X1:1\r\n- You?\r\n",
         subtitled("3604.25", "2", "Hallo\n3 < 4\n- You?")},
        {"Latin 1", "1\n0:0:1,0 --> 0:0:2,5\n\xE9\n", subtitled("2.5", "1", "é")},
        {"WebVTT",
         "WEBVTT Kind: captions\n\nNOTE\nsecret\n\nSTYLE\n::cue{}\n\nid\n00:01.000 --> 00:02.500 "
         "align:start\n"
         "<v Ada>Fish &amp; <c.x>chips</c>\n",
         subtitled("2.5", "1", "Fish & chips")},
        {"empty WebVTT", "WEBVTT\n", {{"plumwick_cues", "0"}, {"TextContent", ""}}},
        {"SubStation Alpha",
         "[Script Info]\nTitle: Tides\nOriginal Script: Ada\n[Events]\nFormat: Layer, Start, End, Style, "
         "Text\n"
         "Comment: 0,0:00:00.00,0:00:09.00,x,no\nDialogue: 0,0:00:01.00,0:00:02.50,x,{\\b1}Hal{\\b0}lo, "
         "you\\Nthere"
         "{\\p1}m 0 0{\\p0} now\nDialogue: cut",
         {{"Title", "Tides"},
          {"Authors", "<Ada>"},
          {"DurationSeconds", "2.5"},
          {"plumwick_cues", "2"},
          {"TextContent", "Hallo, you\nthere now"}}},
        {"MicroDVD", "{1}{1}25\n{25}{50}{y:i}One|two\n{60}{100}three\n",
         subtitled("4", "2", "One\ntwo\nthree")},
        {"MicroDVD of unknown rate", "{25}{50}One\n", {{"plumwick_cues", "1"}, {"TextContent", "One"}}},
        {"pictures", std::string("\0\0\1\xBA\x44", 5), {{"note", "unsupported: the subtitles are pictures"}}},
        {"text", "Dear Sir --> Madam\n\nHello", none},
        {"empty", "", none},
        {"brackets without ends", "0:1 --> 0:2\n" + std::string(300'000, '<') + std::string(300'000, '{'),
         subtitled("2", "1", (std::string(300'000, '<') + std::string(300'000, '{')).c_str())},
        {"braces without ends", "{{{{1}\n{2", none},
    };
    for (const auto& row : rows)
        EXPECT_EQ(attributesOf(importSubtitles, row.file, "org.w3.webvtt"), row.expected) << row.name;
}

} // namespace
} // namespace kelvo::importers
