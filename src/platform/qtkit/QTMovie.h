#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Value.h"
#include "platform/qtkit/QTTime.h"

#include <cstdint>
#include <memory>

namespace kelvo {

// Attributes of movies, with the types of their values:

/// A size in pixels, as the movie is seen: 0 by 0 without video, and a picture of a record's cover is none.
inline constexpr const char16_t* QTMovieNaturalSizeAttribute = u"QTMovieNaturalSizeAttribute";
/// A time (valueWithQTTime).
inline constexpr const char16_t* QTMovieDurationAttribute = u"QTMovieDurationAttribute";
inline constexpr const char16_t* QTMovieHasVideoAttribute = u"QTMovieHasVideoAttribute"; // boolean
inline constexpr const char16_t* QTMovieHasAudioAttribute = u"QTMovieHasAudioAttribute"; // boolean
// Booleans that can be set; at first false.
inline constexpr const char16_t* QTMovieLoopsAttribute = u"QTMovieLoopsAttribute";
inline constexpr const char16_t* QTMovieLoopsBackAndForthAttribute = u"QTMovieLoopsBackAndForthAttribute";

// Attributes of frame images:

/// Only images of this type are made.
inline constexpr const char16_t* QTMovieFrameImageType = u"QTMovieFrameImageType";
inline constexpr const char16_t* QTMovieFrameImageTypeNSImage = u"QTMovieFrameImageTypeNSImage";
/// A boolean. Frames are of high quality in any case.
inline constexpr const char16_t* QTMovieFrameImageHighQuality = u"QTMovieFrameImageHighQuality";

/// The common types of movieFileTypes.
inline constexpr unsigned QTIncludeCommonTypes = 0;

/// What the classic functions ask; it lives as long as its movie.
struct ClassicMovie {
    std::int64_t duration = 0;
    std::int64_t time = 0;
    std::int32_t timeScale = movieTimeScale;
    NSSize size;
};
using Movie = const ClassicMovie*;

/// In whole pixels, 0 at the top and at the left.
struct MovieBox {
    std::int32_t top = 0;
    std::int32_t left = 0;
    std::int32_t bottom = 0;
    std::int32_t right = 0;
};

/// In units, of which GetMovieTimeScale (above 0) make a second. None of these takes null.
std::int64_t GetMovieDuration(Movie movie);
std::int64_t GetMovieTime(Movie movie);
std::int32_t GetMovieTimeScale(Movie movie);
MovieBox GetMovieBox(Movie movie);

/// A movie or a piece of sound in a file, which is read by plumwick-movie-engine. What became of the file is noted with
/// the current request.
class QTMovie : public NSObject {
public:
    /// Null when the file cannot be read or is no movie; `error` (may be null) says why. Throws NSException
    /// (EngineExceptions.h) when the engine failed. Runs the current run loop.
    static std::shared_ptr<QTMovie> initWithFile_error(const NSString& path, NSString* error);
    ~QTMovie() override;

    /// What the files are called that can be read: extensions in small letters and quoted type codes. There are no other
    /// than the common ones.
    static NSArray movieFileTypes(unsigned options);

    NSString className() const override { return u"QTMovie"; }
    bool respondsToSelector(const NSString& selector) const override;

    NSDictionary movieAttributes() const { return attributes_; }
    Value attributeForKey(const NSString& key) const { return attributes_.objectForKey(key); }
    /// Throws NSException (NSInvalidArgumentException) for nil.
    void setAttribute_forKey(const Value& value, const NSString& key);

    /// 0 when the file does not tell.
    virtual QTTime duration() const;
    virtual QTTime currentTime() const;
    void setCurrentTime(const QTTime& time);

    /// The frame that is seen at that time; the first one before it, the last one after the end. As large as the movie,
    /// up to 4096 x 2304 pixels, and shrunk beyond. Where that frame is not reached within the time that a request has,
    /// it is the one that was, which is noted. Null when there is no video that can be decoded, and for another type of
    /// image. Throws NSException (EngineExceptions.h) when the engine failed. Runs the current run loop.
    std::shared_ptr<NSImage> frameImageAtTime_withAttributes_error(const QTTime& time,
                                                                   const NSDictionary& attributes,
                                                                   NSString* error) const;
    std::shared_ptr<NSImage> frameImageAtTime(const QTTime& time) const;
    /// The first frame; without video the picture that is put into the file for its cover. Otherwise as above.
    std::shared_ptr<NSImage> posterImage() const;

    /// For the classic functions; never null for a movie that was opened from a file.
    virtual Movie quickTimeMovie() const;

protected:
    QTMovie();

private:
    struct File;

    std::unique_ptr<const File> file_;
    NSMutableDictionary attributes_ = NSMutableDictionary::dictionary();
    ClassicMovie classic_;
};

} // namespace kelvo
