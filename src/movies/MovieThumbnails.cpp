#include "movies/MovieThumbnails.h"

#include "movies/MovieTimes.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"

#include <algorithm>
#include <cmath>

namespace kelvo {
namespace {

/// Films have begun by then, and it is soon reached.
constexpr double latestSecond = 15;

/// What `make` makes of the movie in the file, where all that it throws is logged under the operation's name.
template <typename Make>
std::shared_ptr<NSImage> imageOfFile(const NSString& path, const char16_t* operation, const Make& make) {
    try {
        const auto movie = QTMovie::initWithFile_error(path, nullptr);
        return movie ? make(*movie) : nullptr;
    } catch (const NSException& exception) {
        NSLog(u"%@ (%@):\n%@\n%@", NSString(operation), NSString(u"QTMovie"), exception.name(),
              exception.reason());
        noteOutcome(
            Outcome::answered,
            NSString(u"there is no picture: ").stringByAppendingString(sentenceOfReason(exception.reason())));
        return nullptr;
    }
}

} // namespace

std::shared_ptr<NSImage> middleImage(const QTMovie& movie) {
    const double middle = movieDuration(movie) * 0.5;
    const double seconds = std::floor(middle >= 0 ? std::min(latestSecond, middle) : 0);
    const QTTime time = QTMakeTimeWithTimeInterval(seconds);
    if (!movie.respondsToSelector(u"frameImageAtTime:withAttributes:error:"))
        return movie.frameImageAtTime(time);
    return movie.frameImageAtTime_withAttributes_error(
        time,
        NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{QTMovieFrameImageTypeNSImage, QTMovieFrameImageType},
             {NSNumber::numberWithBool(true), QTMovieFrameImageHighQuality}}),
        nullptr);
}

std::shared_ptr<NSImage> thumbnailImage(const QTMovie& movie) {
    auto image = middleImage(movie);
    return image ? image : movie.posterImage();
}

namespace KelvoQTMovieExtensions {

std::shared_ptr<NSImage> thumbnailImageForMovieWithFile_attributes(const NSString& path,
                                                                   NSDictionary* attributes) {
    if (attributes)
        *attributes = nullptr;
    return imageOfFile(path, u"thumbnailImageForMovieWithFile:attributes:",
                       [attributes](const QTMovie& movie) {
                           if (attributes)
                               *attributes = movie.movieAttributes();
                           return thumbnailImage(movie);
                       });
}

std::shared_ptr<NSImage> thumbnailImageForMovieWithFile(const NSString& path) {
    return thumbnailImageForMovieWithFile_attributes(path, nullptr);
}

std::shared_ptr<NSImage> middleImageForMovieWithFile(const NSString& path) {
    return imageOfFile(path, u"middleImageForMovieWithFile:", middleImage);
}

std::shared_ptr<NSImage> posterImageForMovieWithFile(const NSString& path) {
    return imageOfFile(path, u"posterImageForMovieWithFile:",
                       [](const QTMovie& movie) { return movie.posterImage(); });
}

} // namespace KelvoQTMovieExtensions

} // namespace kelvo
