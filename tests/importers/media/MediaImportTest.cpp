#include "importers/media/MediaImport.h"
#include "importers/media/TagEncoding.h"
#include "support/Attributed.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/mem.h>
}

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::one;

using namespace std::string_literals;

constexpr const char* tone = "-f lavfi -i sine=r=8000:d=2 ";
constexpr const char* picture = "-f lavfi -i testsrc=s=32x24:r=10:d=2 ";

/// What ffmpeg makes, in a file of that name.
std::string made(const std::string& name, const std::string& arguments) {
    const tests::TemporaryFolder folder;
    const std::string file = folder.path(name);
    const std::string command = "cd " + folder.path() + " && ffmpeg -v error -nostdin -bitexact " +
                                arguments + " -fflags +bitexact " + file;
    EXPECT_EQ(std::system(command.c_str()), 0) << name;
    return folder.read(name);
}

Attributed attributesOf(const std::string& file) {
    const tests::ScopedVariable zone("TZ", "Asia/Kolkata");
    return tests::attributesOf(importMedia, file, "public.movie");
}

/// Those of the names, with what ffprobe says of the same file on the right.
std::string these(const Attributed& attributes, const std::vector<const char*>& names) {
    std::string text;
    for (const char* const name : names)
        text += (text.empty() ? "" : " ") + one(attributes, name);
    return text;
}

std::string bigEndian(std::size_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> static_cast<unsigned>(shift));
    return bytes;
}

/// A second of silence.
std::string silence() {
    std::string frames;
    for (int frame = 0; frame < 39; ++frame)
        frames += "\xFF\xFB\x90\xC4"s + std::string(413, '\0');
    return frames;
}

/// A tag of ID3 2.3 before silence; sizes as they are stated.
std::string withTag(const std::string& frames, std::size_t statedSize) {
    std::string size;
    for (int shift = 21; shift >= 0; shift -= 7)
        size += static_cast<char>(statedSize >> static_cast<unsigned>(shift) & 0x7F);
    return "ID3\3\0\0"s + size + frames + silence();
}

/// A frame whose text is said to be Latin 1.
std::string frame(const std::string& name, const std::string& text) {
    return name + bigEndian(text.size() + 1) + "\0\0\0"s + text;
}

TEST(MediaImport, SetsWhatASongSays) {
    const std::string cover = "-f lavfi -i color=s=16x16:d=0.04 ";
    const std::string song = made(
        "song.mp3", tone + cover +
                        "-map 0 -map 1 -c:a libmp3lame -b:a 32k -c:v mjpeg -disposition:v attached_pic "
                        "-metadata title='Tide' -metadata artist='Ada;Per' -metadata album='Quays' "
                        "-metadata composer='B. Ek' -metadata genre='Folk' -metadata date='2008-05-30' "
                        "-metadata track='3/12' -metadata comment='At sea' -metadata copyright='(c) Ada' "
                        "-metadata publisher='Shore' -metadata language='swe' -metadata TBPM=96 "
                        "-metadata TEXT='Per' -metadata encoder='Pen'");
    Attributed found = attributesOf(song);
    EXPECT_NEAR(std::stod(one(found, "DurationSeconds")), 2.1, 0.15);
    found.erase("DurationSeconds");
    found.erase("TotalBitRate");
    const Attributed expected{{"MediaTypes", "<Sound>"},   {"Codecs", "<MP3>"},
                              {"AudioBitRate", "32000"},   {"AudioChannelCount", "1"},
                              {"AudioSampleRate", "8000"}, {"plumwick_hasCover", "1"},
                              {"Title", "Tide"},           {"Authors", "<Ada><Per>"},
                              {"Album", "Quays"},          {"Composer", "B. Ek"},
                              {"Lyricist", "Per"},         {"MusicalGenre", "Folk"},
                              {"RecordingYear", "2008"},   {"RecordingDate", "2008-05-29 18:30:00 +0000"},
                              {"AudioTrackNumber", "3"},   {"Comment", "At sea"},
                              {"Copyright", "(c) Ada"},    {"Publishers", "<Shore>"},
                              {"Languages", "<swe>"},      {"Tempo", "96"}};
    EXPECT_EQ(found, expected);
}

TEST(MediaImport, KnowsTheTracksOfEachFormat) {
    const std::vector<const char*> names{
        "MediaTypes",        "Codecs",          "PixelWidth",        "PixelHeight", "plumwick_frameRate",
        "plumwick_rotation", "AudioSampleRate", "AudioChannelCount", "Streamable"};
    struct Row {
        const char* file;
        std::string arguments;
        const char* expected;
        double seconds;
    };
    const std::string both = std::string(tone) + picture;
    const Row rows[] = {
        {"film.mp4", both + "-c:v mpeg4 -c:a aac",
         "<Video><Sound> <MPEG-4 part 2><AAC> 32 24 10 absent 8000 1 0", 2},
        {"quick.mp4", both + "-c:v mpeg4 -c:a aac -movflags faststart",
         "<Video><Sound> <MPEG-4 part 2><AAC> 32 24 10 absent 8000 1 1", 2},
        {"wide.mov", std::string(picture) + "-c:v mjpeg -aspect 2:1",
         "<Video> <Motion JPEG> 48 24 10 absent absent absent 0", 2},
        {"film.mkv", both + "-c:v libvpx-vp9 -c:a flac -ac 2",
         "<Video><Sound> <VP9><FLAC> 32 24 10 absent 8000 2 absent", 2},
        {"film.avi", both + "-c:v mpeg4 -c:a pcm_s16le",
         "<Video><Sound> <MPEG-4 part 2><PCM signed 16-bit little-endian> 32 24 10 absent 8000 1 absent", 2},
        {"film.ogv", both + "-c:v libtheora -c:a libvorbis",
         "<Video><Sound> <Theora><Vorbis> 32 24 10 absent 8000 1 absent", 2},
        {"film.mpg", std::string(picture) + "-r 25 -c:v mpeg1video",
         "<Video> <MPEG-1 video> 32 24 25 absent absent absent absent", 1.52},
        {"film.ts", both + "-r 25 -c:v mpeg2video -c:a mp2 -ar 48000",
         "<Video><Sound> <MPEG-2 video><MP2> 32 24 25 absent 48000 1 absent", 2},
        {"sound.wav", tone,
         "<Sound> <PCM signed 16-bit little-endian> absent absent absent absent 8000 1 absent", 2},
        {"sound.flac", tone, "<Sound> <FLAC> absent absent absent absent 8000 1 absent", 2},
        {"sound.opus", tone, "<Sound> <Opus> absent absent absent absent 48000 1 absent", 2},
        {"sound.aiff", tone,
         "<Sound> <PCM signed 16-bit big-endian> absent absent absent absent 8000 1 absent", 2},
        {"sound.aac", tone, "<Sound> <AAC> absent absent absent absent 8000 1 absent", 2},
    };
    for (const Row& row : rows) {
        const Attributed found = attributesOf(made(row.file, row.arguments));
        EXPECT_EQ(these(found, names), row.expected) << row.file;
        EXPECT_NEAR(std::atof(one(found, "DurationSeconds").c_str()), row.seconds, 0.3) << row.file;
    }
}

TEST(MediaImport, UnderstandsTheTagsOfFilms) {
    const tests::TemporaryFolder folder;
    const std::string chapters = folder.write(
        "chapters",
        ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1\nSTART=0\nEND=1\ntitle=Ebb\n[CHAPTER]\nTIMEBASE=1/1\n"
        "START=1\nEND=2\n");
    const std::string plain = made("plain.mp4", std::string(picture) + "-i " + chapters +
                                                    " -map_metadata 1 -c:v mpeg4 "
                                                    "-metadata creation_time=2020-02-29T12:34:56Z "
                                                    "-metadata location=+48.8577-002.2950+035.5/ "
                                                    "-metadata lyrics='One\nTwo' -metadata genre=Drama "
                                                    "-metadata:s:v language=swe");
    const std::string source = folder.write("plain.mp4", plain);
    const Attributed film = attributesOf(plain);
    EXPECT_EQ(these(film, {"ContentCreationDate", "Latitude", "Longitude", "Altitude", "TextContent", "Genre",
                           "Languages", "plumwick_chapters", "plumwick_hasCover"}),
              "2020-02-29 12:34:56 +0000 48.8577 -2.295 35.5 One\nTwo Drama <swe> <Ebb><2> 0");
    const Attributed turned =
        attributesOf(made("turned.mp4", "-i " + source + " -c copy -metadata:s:v rotate=90"));
    EXPECT_EQ(these(turned, {"PixelWidth", "PixelHeight", "plumwick_rotation"}), "24 32 270");
    const struct {
        const char* file;
        const char* moment;
        const char* date;
    } moments[] = {
        {"m.nut", "1970-01-01T00:00:00Z", "absent"},
        {"m.nut", "1970-01-01T00:00:01Z", "1970-01-01 00:00:01 +0000"},
        {"m.mkv", "1904-01-01T00:00:00Z", "absent"},
        {"m.mkv", "1904-01-01T00:00:01Z", "1904-01-01 00:00:01 +0000"},
    };
    for (const auto& row : moments)
        EXPECT_EQ(one(attributesOf(made(row.file, "-i " + source +
                                                      " -map_metadata -1 -c copy "
                                                      "-metadata creation_time=" +
                                                      row.moment)),
                      "ContentCreationDate"),
                  row.date)
            << row.moment;
    const Attributed nowhere =
        attributesOf(made("nowhere.mp4", "-i " + source + " -c copy -metadata location=+98.5-002/"));
    EXPECT_EQ(these(nowhere, {"Latitude", "Longitude"}), "absent absent");
}

TEST(MediaImport, JudgesTheEncodingOfTags) {
    struct Row {
        const char* name;
        std::vector<std::string> tags;
        const char* first;
    };
    const Row rows[] = {
        {"Latin 1", {"Caf\xE9 \xC0 la carte", "Bj\xF6rk"}, "Café À la carte"},
        {"Windows' quotes", {"\x93Tide\x94 and \x85"}, "“Tide” and …"},
        {"UTF-8", {"\xD0\x9F\xD1\x80\xD0\xB8\xD0\xBB\xD0\xB8\xD0\xB2"}, "Прилив"},
        {"Cyrillic of Windows",
         {"\xCF\xF0\xE8\xEB\xE8\xE2", "\xC3\xEE\xF0\xEE\xE4 \xED\xE0 \xE1\xE5\xF0\xE5\xE3\xF3"},
         "Прилив"},
        {"KOI8",
         {"\xF0\xD2\xC9\xCC\xC9\xD7", "\xE7\xCF\xD2\xCF\xC4 \xCE\xC1 \xC2\xC5\xD2\xC5\xC7\xD5"},
         "Прилив"},
        {"Shift JIS", {"\x93\xFA\x96\x7B\x82\xCC\x89\xCC"}, "日本の歌"},
        {"of China", {"\xD6\xD0\xB9\xFA\xB5\xC4\xB8\xE8\xC7\xFA"}, "中国的歌曲"},
        {"of Korea", {"\xC7\xD1\xB1\xB9\xC0\xC7 \xB3\xEB\xB7\xA1"}, "한국의 노래"},
        {"of Taiwan", {"\xA4\xA4\xA4\xE5\xAA\xBA\xBA\x71\xA6\xB1"}, "中文的歌曲"},
        {"cut in a character",
         {"\x93\xFA\x96\x7B\x82\xCC\x89\xCC\x93\xFA\x96\x7B\x82"},
         "日本の歌日本\uFFFD"},
    };
    for (const Row& row : rows) {
        std::string frames;
        const char* const names[] = {"TIT2", "TALB"};
        for (std::size_t tag = 0; tag < row.tags.size(); ++tag)
            frames += frame(names[tag], row.tags[tag]);
        EXPECT_EQ(one(attributesOf(withTag(frames, frames.size())), "Title"), row.first) << row.name;
    }
    // What says that it is Unicode is taken at its word.
    const std::string stated = made("stated.flac", std::string(tone) + "-metadata title='Ïðèëèâ'");
    EXPECT_EQ(one(attributesOf(stated), "Title"), "Ïðèëèâ");
}

TEST(MediaImport, AnswersInTimeWhateverAFileClaims) {
    const std::string cover = "APIC" + bigEndian(0x7FFFFFFF) + "\0\0\0image/png\0\3\0"s;
    const std::string text = "TIT2" + bigEndian(0x10000000) + "\0\0\0Tide"s;
    const std::string broken = "broken: the file is damaged, or no sound or film that can be read";
    struct Row {
        const char* name;
        std::string file;
        const char* attribute;
        std::string expected;
    };
    const Row rows[] = {
        {"empty", "", "note", broken},
        {"text", "Dear Ada,\nthe tide", "note", broken},
        {"names other files", "#EXTM3U\n#EXTINF:2,\nfile:///etc/passwd\n", "note", broken},
        {"a tag of 256 MB", withTag(frame("TIT2", "Tide"), 0xFFFFFFF), "note", broken},
        {"a cover of gigabytes", withTag(frame("TIT2", "Tide") + cover, 400), "Title", "Tide"},
        {"a title of gigabytes", withTag(text, 400), "Codecs", "<MP3>"},
        {"a tag of 10 MB",
         withTag(frame("TIT2", "Tide") + frame("PRIV", std::string(10 << 20, 'x')), (10 << 20) + 26), "Title",
         "Tide"},
        {"a box of all there is", bigEndian(16) + "ftypisom\0\0\2\0"s + bigEndian(0x7FFFFFFF) + "moov",
         "note", broken},
    };
    for (const Row& row : rows) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(one(attributesOf(row.file), row.attribute), row.expected) << row.name;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << row.name;
    }
}

TEST(MediaImport, HasSomethingToSayOfEachDamagedCopy) {
    const std::string both = std::string(tone) + picture;
    const std::string files[] = {made("film.mp4", both + "-c:v mpeg4 -c:a aac"),
                                 made("film.mkv", both + "-c:v mpeg4 -c:a mp2"),
                                 made("film.ogv", both + "-c:v libtheora -c:a libvorbis"),
                                 made("sound.mp3", std::string(tone) + "-metadata title=Tide")};
    const auto check = [](const std::string& file, std::size_t place) {
        const auto start = std::chrono::steady_clock::now();
        const Attributed found = attributesOf(file);
        EXPECT_TRUE(one(found, "Codecs") != "absent" || one(found, "note") != "absent") << place;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << place;
    };
    for (const std::string& file : files) {
        for (std::size_t part = 1; part <= 20; ++part)
            check(file.substr(0, file.size() * part / 21), part);
        for (std::size_t change = 0; change < 100; ++change) {
            std::string changed = file;
            // Most of them where headers are.
            const std::size_t place = change * change % (change % 4 == 0 ? file.size() : 1024);
            changed[place] = static_cast<char>(changed[place] ^ (0x11 << change % 4));
            check(changed, place);
        }
    }
}

TEST(MediaImport, LeavesTheLibraryToOthersAsItWas) {
    attributesOf(made("sound.wav", tone));
    void* const memory = av_malloc(std::size_t{100} << 20);
    EXPECT_NE(memory, nullptr);
    av_free(memory);
}

} // namespace
} // namespace kelvo::importers
