// Whatever stands in a container, the engine's own functions answer: what is in it, the frame of a time, the poster.

#include "Input.h"
#include "platform/foundation/Value.h"
#include "platform/qtkit/MovieEngineMessages.h"
#include "platform/qtkit/engine/OpenedMovie.h"

#include <new>

using namespace kelvo;

namespace {

/// What takes long is for the limits of the process, which are not here.
constexpr double seconds = 1;
constexpr std::int64_t mostPixels = 1'000'000;

std::int64_t numberAt(const NSDictionary& facts, const char16_t* key) {
    const NSNumber* const number = facts.objectForKey(key).numberIfAny();
    return number ? number->longLongValue() : 0;
}

void requireWhole(const std::optional<MoviePicture>& picture) {
    if (!picture)
        return;
    require(picture->width > 0 && picture->height > 0);
    require(picture->width <= movieengine::mostPixelsOfPicture / picture->height);
    require(picture->bytes.length() ==
            static_cast<std::size_t>(picture->width * picture->height) * movieengine::bytesOfPixel);
}

template <typename Ask>
void ask(const Ask& question) {
    try {
        requireWhole(question());
    } catch (const MovieFailure&) {
    } catch (const std::bad_alloc&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool isReady = (prepareMovieLibraries(), true);
    require(isReady);
    if (size == 0)
        return 0;
    try {
        OpenedMovie movie(NSData::dataWithBytes(bytes + 1, size - 1), seconds);
        const NSDictionary facts = movie.facts();
        const std::int64_t width = numberAt(facts, movieengine::widthKey);
        const std::int64_t height = numberAt(facts, movieengine::heightKey);
        require(width >= 0 && height >= 0 && (width > 0) == (height > 0));
        require(numberAt(facts, movieengine::durationKey) >= 0);
        if (width * height > mostPixels)
            return 0;
        ask([&] { return movie.frameAt(std::int64_t{bytes[0]} * 100'000, seconds); });
        ask([&] { return movie.poster(seconds); });
    } catch (const MovieFailure&) {
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
