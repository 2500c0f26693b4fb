#include "movies/MovieFileTypes.h"

#include "movies/KelvoQTMovieExtensions.h"
#include "movies/NSMovieCompatibility.h"
#include "platform/foundation/Value.h"
#include "support/Movies.h"

#include <set>

namespace kelvo {
namespace {

using namespace KelvoQTMovieExtensions;

TEST(MovieFileTypesTest, EachTypeOnce) {
    const NSArray types = QuickTimeFileTypes();
    std::set<std::string> known;
    for (const Value& type : types)
        EXPECT_TRUE(known.insert(type.string().UTF8String()).second) << type.string().UTF8String();
    const NSArray own = QTMovie::movieFileTypes(QTIncludeCommonTypes);
    for (std::size_t index = 0; index < own.count(); ++index)
        EXPECT_EQ(types.objectAtIndex(index), own.objectAtIndex(index));
    // The first and the last that the library has not itself.
    EXPECT_EQ(types.objectAtIndex(own.count()), Value(u"'MPG '"));
    EXPECT_EQ(types.objectAtIndex(own.count() + 1), Value(u"m3u"));
    EXPECT_EQ(types.objectAtIndex(types.count() - 2), Value(u"'Midi'"));
    EXPECT_EQ(types.objectAtIndex(types.count() - 1), Value(u"'MPGv'"));
}

TEST(MovieFileTypesTest, ExtensionsAndTypeCodes) {
    struct Row {
        const char16_t* extension;
        const char16_t* type;
        bool isMovie;
    };
    const Row rows[] = {{u"MP3", u"", true},         {u"Mov", nullptr, true},   {nullptr, u"'MPG '", true},
                        {nullptr, u"'mpg '", false}, {u"txt", u"'MooV'", true}, {u"'mpg '", u"TEXT", true},
                        {u"txt", u"'TEXT'", false},  {nullptr, nullptr, false}, {u"", u"", false}};
    for (const Row& row : rows)
        EXPECT_EQ(isQuickTimeExtension_type(NSString(row.extension), NSString(row.type)), row.isMovie)
            << NSString(row.extension).UTF8String() << ' ' << NSString(row.type).UTF8String();
    EXPECT_TRUE(isQuickTimeFile(u"/nonexistent/film.QT"));
    EXPECT_FALSE(isQuickTimeFile(u"/nonexistent/film.txt"));
}

TEST(NSMovieCompatibilityTest, LoopModes) {
    const tests::TemporaryFolder folder;
    const auto movie = QTMovie::initWithFile_error(
        tests::stringOf(tests::movieFile(folder, "a.wav", tests::toneOfOneSecond)), nullptr);
    ASSERT_TRUE(movie);
    EXPECT_EQ(loopMode(*movie), 0);
    for (const auto& [set, expected] : {std::pair(1, 1), {2, 2}, {3, 0}, {2, 2}, {1, 1}, {-1, 0}}) {
        setLoopMode(*movie, set);
        EXPECT_EQ(loopMode(*movie), expected) << set;
    }
    movie->setAttribute_forKey(NSNumber::numberWithBool(true), QTMovieLoopsAttribute);
    movie->setAttribute_forKey(NSNumber::numberWithBool(true), QTMovieLoopsBackAndForthAttribute);
    EXPECT_EQ(loopMode(*movie), 2);
    setMovieTime(*movie, 0.5);
    EXPECT_EQ(movieTime(*movie), 0.5);
}

} // namespace
} // namespace kelvo
