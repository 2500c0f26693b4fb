#include "movies/MovieTimes.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"

namespace kelvo {
namespace {

double secondsOf(const QTTime& time) {
    double seconds = 0;
    return QTGetTimeInterval(time, &seconds) ? seconds : 0;
}

double classicSeconds(Movie movie, std::int64_t (*units)(Movie)) {
    return movie ? static_cast<double>(units(movie)) / static_cast<double>(GetMovieTimeScale(movie)) : 0;
}

} // namespace

double movieDuration(const QTMovie& movie) {
    try {
        return classicSeconds(movie.quickTimeMovie(), GetMovieDuration);
    } catch (const NSException&) {
        return secondsOf(movie.duration());
    }
}

double movieTime(const QTMovie& movie) {
    try {
        return classicSeconds(movie.quickTimeMovie(), GetMovieTime);
    } catch (const NSException&) {
        return secondsOf(movie.currentTime());
    }
}

void setMovieTime(QTMovie& movie, double seconds) {
    movie.setCurrentTime(QTMakeTimeWithTimeInterval(seconds));
}

NSSize movieSize(const QTMovie& movie) {
    try {
        const Movie classic = movie.quickTimeMovie();
        if (!classic)
            return {};
        const MovieBox box = GetMovieBox(classic);
        return {static_cast<float>(box.right - box.left), static_cast<float>(box.bottom - box.top)};
    } catch (const NSException&) {
        const Value value = movie.attributeForKey(QTMovieNaturalSizeAttribute);
        const NSSize* const size = value.sizeIfAny();
        return size ? *size : NSSize{};
    }
}

} // namespace kelvo
