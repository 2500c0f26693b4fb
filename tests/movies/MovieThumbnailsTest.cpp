#include "movies/MovieThumbnails.h"

#include "movies/MovieTimes.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSRunLoop.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/qtkit/MovieEngine.h"
#include "support/MoviePixels.h"
#include "support/Movies.h"

#include <csignal>
#include <string>

namespace kelvo {
namespace {

using namespace tests;
using namespace KelvoQTMovieExtensions;
using namespace std::string_literals;

TEST(MovieThumbnailsTest, TheFrameIsThatOfTheMiddle) {
    const TemporaryFolder folder;
    struct Row {
        const char* name;
        std::string arguments;
        double seconds;
        int frame;
    };
    const Row rows[] = {
        {"31.9.mp4", countedFrames("31.9") + wellEncoded, 32, 75},
        {"29.mp4", countedFrames("29") + wellEncoded, 29, 70},
        {"10.mkv", countedFrames("10") + wellEncoded, 10, 25},
        {"7.mov", countedFrames("7") + wellEncoded, 7, 15},
        {"1.5.avi", countedFrames("1.5") + "-c:v mpeg4 -q:v 1", 1.6, 0},
        {"0.h264", countedFrames("1") + wellEncoded + "-frames:v 1", 0, 0},
        {"transport stream.ts", countedFrames("10") + wellEncoded, 10, 25},
        {"one key frame.mp4", countedFrames("31") + wellEncoded + "-g 1000 -keyint_min 1000", 31, 75},
        {"each a key frame.mov", countedFrames("12") + "-c:v prores", 12, 30},
        // The 15th is seen from 3 to 7 s.
        {"variable.mp4",
         countedFrames("14") +
             "-vf \"select='not(between(n,16,34))'\" -vsync vfr -video_track_timescale 1000" + wellEncoded,
         14, 35},
        {"variable, before.mp4",
         countedFrames("14") +
             "-vf \"select='not(between(n,16,36))'\" -vsync vfr -video_track_timescale 1000" + wellEncoded,
         14, 15},
    };
    for (const Row& row : rows) {
        const NSString path = stringOf(movieFile(folder, row.name, row.arguments));
        NSDictionary attributes;
        EXPECT_NEAR(numberOfFrame(thumbnailImageForMovieWithFile_attributes(path, &attributes)), row.frame, 0)
            << row.name;
        double seconds = -1;
        EXPECT_TRUE(
            QTGetTimeInterval(QTTimeValue(attributes.objectForKey(QTMovieDurationAttribute)), &seconds));
        EXPECT_NEAR(seconds, row.seconds, 0.11) << row.name;
    }
    const NSString path = stringOf(folder.path("10.mkv"));
    EXPECT_EQ(numberOfFrame(middleImageForMovieWithFile(path)), 25);
    EXPECT_EQ(numberOfFrame(posterImageForMovieWithFile(path)), 0);
    EXPECT_EQ(numberOfFrame(thumbnailImageForMovieWithFile(path)), 25);
}

TEST(MovieThumbnailsTest, SoundHasNoPictureButItsCover) {
    const TemporaryFolder folder;
    const std::string tone = "-f lavfi -i sine=d=2 ";
    movieFile(folder, "cover.png", "-f lavfi -i color=red:s=40x30 -frames:v 1");
    const std::string covered = tone + "-i cover.png -map 0 -map 1 -c:v copy -disposition:v attached_pic ";
    struct Row {
        const char* name;
        std::string arguments;
        bool hasPicture;
    };
    const Row rows[] = {{"plain.wav", tone, false},
                        {"plain.m4a", tone, false},
                        {"covered.m4a", covered, true},
                        {"covered.flac", covered, true}};
    for (const Row& row : rows) {
        const NSString path = stringOf(movieFile(folder, row.name, row.arguments));
        NSDictionary attributes;
        const auto image = thumbnailImageForMovieWithFile_attributes(path, &attributes);
        EXPECT_EQ(image != nullptr, row.hasPicture) << row.name;
        if (image) {
            EXPECT_EQ(image->size(), (NSSize{40, 30})) << row.name;
            EXPECT_GT(pixelAt(*image, 0.5, 0.5)[0], 250) << row.name;
        }
        EXPECT_EQ(middleImageForMovieWithFile(path), nullptr) << row.name;
        EXPECT_EQ(attributes.objectForKey(QTMovieNaturalSizeAttribute), Value(NSSize{})) << row.name;
        double seconds = 0;
        EXPECT_TRUE(
            QTGetTimeInterval(QTTimeValue(attributes.objectForKey(QTMovieDurationAttribute)), &seconds));
        EXPECT_NEAR(seconds, 2, 0.1) << row.name;
    }
}

TEST(MovieThumbnailsTest, WhatIsNoMovieHasNothing) {
    const TemporaryFolder folder;
    const NSLogCapture log;
    for (const std::string& path : {folder.path("missing"), folder.path(), folder.write("empty.mov", ""),
                                    folder.write("text.mp4", "words")}) {
        NSDictionary attributes = NSDictionary::dictionary();
        EXPECT_EQ(thumbnailImageForMovieWithFile_attributes(stringOf(path), &attributes), nullptr) << path;
        EXPECT_TRUE(attributes.isNil()) << path;
    }
    EXPECT_EQ(thumbnailImageForMovieWithFile(nullptr), nullptr);
    EXPECT_TRUE(log.messages().empty());
}

/// Ends the engine as soon as the attributes are there, while it is at work on the frame.
class Assassin final : public NSObject {
public:
    explicit Assassin(const NSDictionary& attributes) : attributes_(attributes) {}

    void wait() {
        NSRunLoop::currentRunLoop().performSelector_target_argument_afterDelay(u"look", shared_from_this(),
                                                                               {}, 0);
    }
    Value performSelector_withObject(const NSString&, const Value&) override {
        if (attributes_.isNil())
            wait();
        else
            ::kill(MovieEngine::sharedEngine().processIdentifier(), SIGSEGV);
        return {};
    }

private:
    const NSDictionary& attributes_;
};

TEST(MovieThumbnailsTest, WhatTheMovieThrowsIsLogged) {
    const TemporaryFolder folder;
    // So many frames take longer than the run loop does to come round.
    const NSString path = stringOf(movieFile(
        folder, "long.mp4",
        "-f lavfi -i color=s=640x480:r=25:d=31 -c:v libx264 -preset ultrafast -g 1000 -keyint_min 1000"));
    NSDictionary attributes;
    const auto assassin = std::make_shared<Assassin>(attributes);
    const RequestNotes notes;
    const NSLogCapture log;
    assassin->wait();
    EXPECT_EQ(thumbnailImageForMovieWithFile_attributes(path, &attributes), nullptr);
    EXPECT_EQ(attributes.objectForKey(QTMovieNaturalSizeAttribute), Value(NSSize{640, 480}));
    const auto messages = log.messages();
    ASSERT_EQ(messages.size(), 1U);
    const std::string beginning =
        "thumbnailImageForMovieWithFile:attributes: (QTMovie):\nEngineCrashedException\n";
    const std::string line = messages.front().UTF8String();
    EXPECT_EQ(line.substr(0, beginning.size()), beginning);
    EXPECT_GT(line.size(), beginning.size());
    EXPECT_EQ(line.find('\n', beginning.size()), line.npos);
    EXPECT_EQ(notes.outcome(), Outcome::crashed);
    EXPECT_TRUE(notes.sentenceOfResult().characters().starts_with(u"there is no picture: "));
}

/// A movie whose classic handle is as the test has it.
class OddMovie final : public QTMovie {
public:
    Movie quickTimeMovie() const override {
        if (isBroken)
            throw NSException(NSGenericException, u"There is none.");
        return classic;
    }
    QTTime duration() const override { return time; }
    QTTime currentTime() const override { return time; }

    bool isBroken = false;
    Movie classic = nullptr;
    QTTime time{90, 30, 0};
};

TEST(MovieTimesTest, WhoIsAsked) {
    OddMovie movie;
    movie.setAttribute_forKey(NSSize{8, 6}, QTMovieNaturalSizeAttribute);
    EXPECT_EQ(movieDuration(movie), 0);
    EXPECT_EQ(movieTime(movie), 0);
    EXPECT_EQ(movieSize(movie), NSSize{});
    const ClassicMovie classic{5, 1, 2, {4, 3}};
    movie.classic = &classic;
    EXPECT_EQ(movieDuration(movie), 2.5);
    EXPECT_EQ(movieTime(movie), 0.5);
    EXPECT_EQ(movieSize(movie), (NSSize{4, 3}));
    movie.isBroken = true;
    EXPECT_EQ(movieDuration(movie), 3);
    EXPECT_EQ(movieTime(movie), 3);
    EXPECT_EQ(movieSize(movie), (NSSize{8, 6}));
    movie.time.flags = kQTTimeIsIndefinite;
    EXPECT_EQ(movieDuration(movie), 0);
}

} // namespace
} // namespace kelvo
