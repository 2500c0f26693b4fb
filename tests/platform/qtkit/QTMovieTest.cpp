#include "platform/qtkit/QTMovie.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/qtkit/MovieEngine.h"
#include "platform/qtkit/MovieFormats.h"
#include "platform/qtkit/engine/OpenedMovie.h"
#include "support/MoviePixels.h"
#include "support/Movies.h"

#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include <fcntl.h>

namespace kelvo {
namespace {

using namespace tests;
using namespace std::string_literals;

std::shared_ptr<QTMovie> movieAt(const std::string& path) {
    return QTMovie::initWithFile_error(stringOf(path), nullptr);
}

/// The colours of the quarters, from the top left, as letters, after the size; "nil" for none.
std::string described(const std::shared_ptr<NSImage>& image) {
    if (!image)
        return "nil";
    std::string text = std::to_string(static_cast<int>(image->size().width)) + "x" +
                       std::to_string(static_cast<int>(image->size().height)) + " ";
    for (const auto& [across, down] : {std::pair(0.25, 0.25), {0.75, 0.25}, {0.25, 0.75}, {0.75, 0.75}}) {
        const auto color = pixelAt(*image, across, down);
        std::string letter = "?";
        for (const auto& [name, red, green, blue] :
             {std::tuple('R', 255, 0, 0), {'G', 0, 255, 0}, {'B', 0, 0, 255}, {'W', 255, 255, 255}}) {
            if (std::abs(color[0] - red) < 12 && std::abs(color[1] - green) < 12 &&
                std::abs(color[2] - blue) < 12)
                letter = name;
        }
        text += letter;
    }
    return text;
}

/// Red, green, blue and white quarters.
std::string quarters(int width, int height) {
    const std::string half = std::to_string(width / 2) + "x" + std::to_string(height / 2);
    std::string text;
    for (const char* const color : {"red", "lime", "blue", "white"})
        text += "-f lavfi -i color=" + std::string(color) + ":s=" + half + ":r=5:d=1 ";
    return text + "-filter_complex \"[0][1]hstack[a];[2][3]hstack[b];[a][b]vstack";
}

TEST(QTMovieTest, PicturesAreAsTheyAreSeen) {
    const TemporaryFolder folder;
    const std::string upright =
        movieFile(folder, "upright.mp4", quarters(64, 48) + "\" -c:v libx264 -crf 2 -pix_fmt yuv444p");
    const auto turned = [](const char* degrees) {
        return "-i upright.mp4 -c copy -metadata:s:v rotate="s + degrees;
    };
    struct Row {
        const char* name;
        std::string arguments;
        const char* expected;
    };
    const Row rows[] = {
        {"turned left.mp4", turned("90"), "48x64 GWRB"},
        {"upside down.mov", turned("180"), "64x48 WBGR"},
        {"turned right.mp4", turned("270"), "48x64 BRWG"},
        {"wide.mp4", "-i upright.mp4 -c copy -aspect 2:1", "96x48 RGBW"},
        {"narrow.mkv", "-i upright.mp4 -c copy -aspect 1:1", "48x48 RGBW"},
        {"wide and turned.mp4", turned("90") + " -aspect 2:1", "48x96 GWRB"},
        {"planes.mov", quarters(64, 48) + ",format=rgb24\" -c:v qtrle", "64x48 RGBW"},
        {"palette.gif", quarters(64, 48) + "\"", "64x48 RGBW"},
        {"odd.mkv", quarters(64, 48) + ",crop=61:47:1:1:exact=1\" -pix_fmt yuv444p -c:v ffv1", "61x47 RGBW"},
        {"large.mkv", quarters(6000, 4000) + ",trim=end_frame=1\" -c:v mjpeg -q:v 2 -pix_fmt yuvj444p",
         "3762x2508 RGBW"},
    };
    EXPECT_EQ(described(movieAt(upright)->posterImage()), "64x48 RGBW");
    for (const Row& row : rows) {
        const auto movie = movieAt(movieFile(folder, row.name, row.arguments));
        ASSERT_TRUE(movie) << row.name;
        const auto image = movie->posterImage();
        EXPECT_EQ(described(image), row.expected) << row.name;
        if (row.name != "large.mkv"s && image) {
            EXPECT_EQ(movie->attributeForKey(QTMovieNaturalSizeAttribute), Value(image->size())) << row.name;
        }
    }
    EXPECT_EQ(movieAt(folder.path("large.mkv"))->attributeForKey(QTMovieNaturalSizeAttribute),
              Value(NSSize{6000, 4000}));
}

TEST(QTMovieTest, ColoursComeInStandardOnes) {
    const TemporaryFolder folder;
    // What the film's numbers are made from, and what they say of themselves.
    const auto film = [](const char* scale, const char* said, const char* size = "64x48") {
        return "-f lavfi -i color=0xC85028:s="s + size + ":r=5:d=1 -frames:v 1 -vf scale=" + scale +
               ",format=yuv444p -c:v ffv1 " + said;
    };
    // 10 bits of brightness, without colour.
    const auto bright = [](int brightness, const char* transfer) {
        return "-f lavfi -i \"nullsrc=s=64x48:r=5:d=1,format=yuv420p10,geq=lum=" +
               std::to_string(brightness) +
               ":cb=512:cr=512\" -frames:v 1 -c:v ffv1 -color_primaries bt2020 -colorspace bt2020nc "
               "-color_range tv "
               "-color_trc " +
               transfer;
    };
    struct Row {
        const char* name;
        std::string arguments;
        std::array<int, 3> expected;
        int tolerance;
    };
    const std::array<int, 3> usual{0xC8, 0x50, 0x28};
    const Row rows[] = {
        {"601", film("out_color_matrix=bt601:out_range=tv", "-colorspace smpte170m -color_range tv"), usual,
         2},
        {"709", film("out_color_matrix=bt709:out_range=tv", "-colorspace bt709 -color_range tv"), usual, 2},
        {"709, all numbers", film("out_color_matrix=bt709:out_range=pc", "-colorspace bt709 -color_range pc"),
         usual, 2},
        {"2020 for usual screens",
         film("out_color_matrix=bt2020:out_range=tv",
              "-colorspace bt2020nc -color_primaries bt709 -color_range tv"),
         usual, 2},
        {"nothing said, small", film("out_color_matrix=bt601:out_range=tv", ""), usual, 2},
        {"nothing said, large", film("out_color_matrix=bt709:out_range=tv", "", "1280x720"), usual, 2},
        // As far as usual screens go.
        {"2020 in its own colours",
         film("out_color_matrix=bt2020:out_range=tv",
              "-colorspace bt2020nc -color_primaries bt2020 -color_trc bt2020-10 -color_range tv"),
         {243, 0, 0},
         4},
        {"black", bright(64, "smpte2084"), {0, 0, 0}, 2},
        {"white", bright(572, "smpte2084"), {231, 231, 231}, 4},
        {"1000 candelas", bright(723, "smpte2084"), {254, 254, 254}, 3},
        {"white, the other way", bright(721, "arib-std-b67"), {231, 231, 231}, 8},
    };
    for (const Row& row : rows) {
        const auto movie = movieAt(movieFile(folder, "film.mkv", row.arguments));
        ASSERT_TRUE(movie) << row.name;
        const auto image = movie->posterImage();
        ASSERT_TRUE(image) << row.name;
        const auto found = pixelAt(*image, 0.5, 0.5);
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(found[channel], row.expected[channel], row.tolerance) << row.name << ' ' << channel;
        // The last strip is whole as well.
        EXPECT_EQ(found, pixelAt(*image, 0.5, 0.99)) << row.name;
    }
}

// Every second line is of another moment, at which the frame has become white.
TEST(QTMovieTest, LinesOfTwoMomentsAreNotCombed) {
    const TemporaryFolder folder;
    const std::string source =
        "-f lavfi -i "
        "\"nullsrc=s=64x48:r=5:d=1,format=yuv420p,geq=lum='if(mod(Y,2),LATER,50)':cb=128:cr=128\" ";
    const auto linesOf = [&](const char* name, const std::string& later, const std::string& encoded) {
        std::string arguments = source;
        arguments.replace(arguments.find("LATER"), 5, later);
        const auto image = movieAt(movieFile(folder, name, arguments + encoded))->posterImage();
        std::vector<int> lines;
        for (const double line : {20.5, 21.5, 22.5, 23.5})
            lines.push_back(pixelAt(*image, 0.5, line / 48)[0]);
        return lines;
    };
    const std::string lossless = "-c:v ffv1 ";
    for (const auto& [flags, least, most] : {std::tuple("-field_order tt -flags +ilme+ildct", 0, 60),
                                             {"-field_order bb -flags +ilme+ildct", 195, 255}}) {
        const std::string order = std::string(flags).find("tt") != std::string::npos ? "tff" : "bff";
        for (const int line :
             linesOf("fields.mpg", "200", "-vf setfield=" + order + " -c:v mpeg2video -q:v 1 " + flags)) {
            EXPECT_GE(line, least) << flags;
            EXPECT_LE(line, most) << flags;
        }
    }
    const auto whole = linesOf("whole.mkv", "200", lossless);
    EXPECT_GT(std::abs(whole[0] - whole[1]), 150) << "lines of one moment stay";
}

TEST(QTMovieTest, OnlyAlphaThatIsUsed) {
    const TemporaryFolder folder;
    for (const auto& [alpha, hasAlpha] : {std::pair("1", false), {"0.5", true}, {"0", false}}) {
        const auto movie = movieAt(
            movieFile(folder, "alpha.mov",
                      "-f lavfi -i color=lime@"s + alpha + ":s=32x32:r=5:d=1,format=argb -c:v qtrle"));
        const auto image = movie->posterImage();
        ASSERT_TRUE(image) << alpha;
        EXPECT_EQ(image->representations().at(0)->hasAlpha(), hasAlpha) << alpha;
        EXPECT_EQ(pixelAt(*image, 0.5, 0.5)[3] == 255, !hasAlpha) << alpha;
    }
}

TEST(QTMovieTest, LittleIsReadOfAHugeFile) {
    const TemporaryFolder folder;
    const std::string small = movieFile(folder, "small.mp4", countedFrames("10") + wellEncoded);
    const std::string bytes = folder.read("small.mp4");
    const std::size_t index = bytes.rfind("moov") - 4;
    ASSERT_LT(index, bytes.size());
    // 3 GB between the frames and the index at the end.
    constexpr std::uint64_t gap = std::uint64_t{3} << 30;
    std::string head = "\0\0\0\1free"s;
    for (int shift = 56; shift >= 0; shift -= 8)
        head += static_cast<char>(gap >> shift);
    const std::string path = folder.write("huge.mp4", bytes.substr(0, index) + head);
    std::filesystem::resize_file(path, index + gap);
    std::ofstream(path, std::ios::binary | std::ios::app) << bytes.substr(index);

    const auto movie = movieAt(path);
    ASSERT_TRUE(movie);
    EXPECT_EQ(numberOfFrame(movie->frameImageAtTime(QTMakeTimeWithTimeInterval(5))), 25);
    OpenedMovie opened(dataWithOpenFile(FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC))), 10);
    EXPECT_TRUE(opened.frameAt(5'000'000, 10));
    EXPECT_LT(opened.bytesRead(), std::uint64_t{1} << 20);
}

TEST(QTMovieTest, NothingElseIsOpened) {
    const TemporaryFolder folder;
    const std::string film = movieFile(folder, "film.ts", countedFrames("2") + wellEncoded);
    struct Row {
        const char* name;
        std::string contents;
    };
    const Row rows[] = {
        {"list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:2\n#EXTINF:2,\n" + film + "\n#EXT-X-ENDLIST\n"},
        {"network.m3u8", "#EXTM3U\n#EXTINF:2,\nhttp://127.0.0.1:9/film.ts\n#EXT-X-ENDLIST\n"},
        {"list.ffconcat", "ffconcat version 1.0\nfile film.ts\n"},
        {"session.sdp",
         "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP 96\n"},
        {"stream.mpd",
         "<?xml version='1.0'?><MPD type='static'><Period><AdaptationSet><Representation><BaseURL>" + film +
             "</BaseURL></Representation></AdaptationSet></Period></MPD>"},
        {"single.png", "\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\1\0\0\0\1\x08\2\0\0\0"s},
    };
    for (const Row& row : rows) {
        const RequestNotes notes;
        NSString error;
        EXPECT_FALSE(QTMovie::initWithFile_error(stringOf(folder.write(row.name, row.contents)), &error))
            << row.name;
        EXPECT_FALSE(error.isNil()) << row.name;
        EXPECT_EQ(notes.outcome(), Outcome::unsupported) << row.name;
    }
}

TEST(QTMovieTest, WhatIsDamagedIsAnswered) {
    const TemporaryFolder folder;
    movieFile(folder, "film.mkv", countedFrames("10") + "-f lavfi -i sine=d=10 -shortest" + wellEncoded);
    movieFile(folder, "film.mp4", "-i film.mkv -c copy -movflags +faststart");
    movieFile(folder, "film.avi", "-i film.mkv -c:v ffv1 -c:a mp2");
    movieFile(folder, "film.ts", "-i film.mkv -c:v copy -c:a mp2");
    movieFile(folder, "start.mp4", "-i film.mkv -c copy -t 1");
    movieAt(folder.path("start.mp4"));
    [[maybe_unused]] const pid_t engine = MovieEngine::sharedEngine().processIdentifier();
    constexpr std::size_t lengths = 20;
    for (const char* const name : {"film.mkv", "film.mp4", "film.avi", "film.ts"}) {
        const std::string whole = folder.read(name);
        std::size_t count = 0;
        for (std::size_t part = 0; part < lengths; ++part) {
            const auto movie = movieAt(folder.write("cut", whole.substr(0, whole.size() * part / lengths)));
            if (!movie)
                continue;
            const auto image = movie->frameImageAtTime(QTMakeTimeWithTimeInterval(5.1));
            count += image ? 1 : 0;
            // Half of it is not always enough, and all but the end is.
            if (part + 1 == lengths) {
                EXPECT_EQ(numberOfFrame(image), 25) << name;
            }
        }
        EXPECT_GE(count, 5U) << name;
    }
    for (const auto& [length, outcome] : {std::pair(600, Outcome::broken), {6, Outcome::unsupported}}) {
        const RequestNotes notes;
        EXPECT_FALSE(movieAt(
            folder.write("head.mp4", folder.read("film.mp4").substr(0, static_cast<std::size_t>(length)))));
        EXPECT_EQ(notes.outcome(), outcome) << length;
    }
    {
        const RequestNotes notes;
        const std::string matroska = folder.read("film.mkv");
        const auto movie =
            movieAt(folder.write("frames.mkv", matroska.substr(0, matroska.find("\x1F\x43\xB6\x75") + 40)));
        ASSERT_TRUE(movie);
        EXPECT_FALSE(movie->posterImage());
        EXPECT_EQ(notes.sentenceOfResult(), u"no frame of it can be decoded");
    }
    // The lengths and sizes of the head, one after the other, as no movie has them.
    const std::string whole = folder.read("start.mp4");
    for (const auto& [atom, offset, length] : {std::tuple("mvhd", 20, 4),
                                               {"tkhd", 24, 4},
                                               {"tkhd", 80, 8},
                                               {"mdhd", 20, 4},
                                               {"mdhd", 16, 4},
                                               {"avc1", 28, 4}}) {
        for (const char byte : {'\0', '\x7F', '\x80', '\xFF'}) {
            std::string lying = whole;
            const std::size_t place = lying.find(atom) + static_cast<std::size_t>(offset);
            lying.replace(place, static_cast<std::size_t>(length), static_cast<std::size_t>(length), byte);
            const auto movie = movieAt(folder.write("lying.mp4", lying));
            ASSERT_TRUE(movie) << atom;
            double seconds = -1;
            EXPECT_TRUE(QTGetTimeInterval(movie->duration(), &seconds));
            EXPECT_GE(seconds, 0) << atom;
            EXPECT_TRUE(movie->frameImageAtTime(QTMakeTimeWithTimeInterval(0))) << atom << int{byte};
        }
    }
#ifndef KELVO_SANITIZED
    // Sanitizers keep so much memory that it is replaced for that.
    EXPECT_EQ(MovieEngine::sharedEngine().processIdentifier(), engine);
#endif
}

TEST(QTMovieTest, IndexesMayLie) {
    const TemporaryFolder folder;
    movieFile(folder, "film.mp4",
              "-f lavfi -i "
              "\"nullsrc=s=64x48:r=5:d=10,format=yuv420p,geq=lum='if(lt(X,16),200,40+N)':cb=128:cr=128\" "
              "-c:v mpeg4 -q:v 1 -g 300");
    std::string lying = folder.read("film.mp4");
    const std::size_t place = lying.find("stss\0\0\0\0\0\0\0\1\0\0\0\1"s);
    ASSERT_NE(place, lying.npos);
    // A frame that needs those before it is said to be the only one that does not.
    lying[place + 15] = 20;
    const auto movie = movieAt(folder.write("lying.mp4", lying));
    ASSERT_TRUE(movie);
    for (const int frame : {25, 10}) {
        const auto image = movie->frameImageAtTime(QTMakeTimeWithTimeInterval(frame * 0.2 + 0.1));
        EXPECT_NEAR(numberOfFrame(image), frame, 1);
        // What stays as it is was said at the beginning alone.
        EXPECT_NEAR(pixelAt(*image, 0.1, 0.5)[1], 214, 4) << frame;
    }
}

TEST(QTMovieTest, FramesMayChangeTheirSize) {
    const TemporaryFolder folder;
    movieFile(folder, "small.ts", countedFrames("2") + wellEncoded);
    movieFile(folder, "large.ts", countedFrames("2") + "-s 128x96" + wellEncoded + "-output_ts_offset 2.4");
    const auto movie = movieAt(folder.write("both.ts", folder.read("small.ts") + folder.read("large.ts")));
    ASSERT_TRUE(movie);
    for (const auto& [seconds, frame] : {std::pair(0, 0), {1, 5}, {3, 5}}) {
        const auto image = movie->frameImageAtTime(QTMakeTimeWithTimeInterval(seconds));
        EXPECT_EQ(numberOfFrame(image), frame) << seconds;
        EXPECT_EQ(image->size(), (NSSize{64, 48})) << seconds;
    }
}

TEST(QTMovieTest, AnotherEngineGoesOn) {
    const TemporaryFolder folder;
    const auto movie = movieAt(movieFile(folder, "film.mp4", countedFrames("2") + wellEncoded));
    ::kill(MovieEngine::sharedEngine().processIdentifier(), SIGKILL);
    try {
        // Or it has been found out before.
        movie->posterImage();
    } catch (const NSException& exception) {
        EXPECT_TRUE(exception.name().characters().starts_with(u"Engine"));
    }
    EXPECT_EQ(numberOfFrame(movie->posterImage()), 0);
    // The name may be another's by now.
    std::filesystem::remove(folder.path("film.mp4"));
    EXPECT_EQ(numberOfFrame(movie->frameImageAtTime(QTMakeTimeWithTimeInterval(1))), 5);
    const auto attributes = [](const char16_t* type) {
        return NSMutableDictionary::dictionaryWithObjectsAndKeys({{type, QTMovieFrameImageType}});
    };
    EXPECT_TRUE(movie->frameImageAtTime_withAttributes_error(
        {1, 1, 0}, attributes(QTMovieFrameImageTypeNSImage), nullptr));
    EXPECT_FALSE(movie->frameImageAtTime_withAttributes_error({1, 1, 0}, attributes(u"other"), nullptr));
    EXPECT_FALSE(movie->frameImageAtTime({1, 0, 0}));
}

TEST(QTTimeTest, SecondsAndBack) {
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    for (const auto& [seconds, units] : {std::pair(0.0, std::int64_t{0}),
                                         {1.5, 1'500'000},
                                         {-0.25, -250'000},
                                         {1e300, most},
                                         {9223372036854.775807, most},
                                         {-1e300, -most - 1},
                                         {std::nan(""), 0}})
        EXPECT_EQ(QTMakeTimeWithTimeInterval(seconds).timeValue, units) << seconds;
    double seconds = 7;
    EXPECT_TRUE(QTGetTimeInterval({3, 2, 0}, &seconds));
    EXPECT_EQ(seconds, 1.5);
    for (const QTTime& none :
         {QTTime{1, 0, 0}, QTTime{1, -1, 0}, QTTime{1, 1, kQTTimeIsIndefinite}, QTTimeValue(u"1")})
        EXPECT_FALSE(QTGetTimeInterval(none, &seconds));
    EXPECT_EQ(QTTimeValue(valueWithQTTime({3, 2, 1})), (QTTime{3, 2, 1}));
}

TEST(MovieFormatsTest, AllOfTheTableAreThere) {
    for (const MovieFormat& format : movieFormats()) {
        const AVInputFormat* const found = av_find_input_format(format.demuxer);
        ASSERT_TRUE(found) << format.demuxer;
        EXPECT_STREQ(found->name, format.demuxer);
        EXPECT_EQ(found->flags & AVFMT_NOFILE, 0) << format.demuxer;
    }
}

} // namespace
} // namespace kelvo
