#include "movies/NSMovieCompatibility.h"

#include "platform/foundation/Value.h"

namespace kelvo {
namespace {

constexpr int looping = 1;
constexpr int loopingBackAndForth = 2;

bool isSet(const QTMovie& movie, const char16_t* attribute) {
    const Value value = movie.attributeForKey(attribute);
    const NSNumber* const number = value.numberIfAny();
    return number && number->boolValue();
}

} // namespace

int loopMode(const QTMovie& movie) {
    if (isSet(movie, QTMovieLoopsBackAndForthAttribute))
        return loopingBackAndForth;
    return isSet(movie, QTMovieLoopsAttribute) ? looping : 0;
}

void setLoopMode(QTMovie& movie, int mode) {
    movie.setAttribute_forKey(NSNumber::numberWithBool(mode == looping), QTMovieLoopsAttribute);
    movie.setAttribute_forKey(NSNumber::numberWithBool(mode == loopingBackAndForth),
                              QTMovieLoopsBackAndForthAttribute);
}

} // namespace kelvo
