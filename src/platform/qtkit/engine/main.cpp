#include "platform/engine/program/EngineProgram.h"
#include "platform/qtkit/MovieEngineMessages.h"
#include "platform/qtkit/engine/OpenedMovie.h"

#include <memory>
#include <optional>

#include <malloc.h>

namespace kelvo {
namespace {

using namespace movieengine;

class MovieProgram final : public EngineProgram {
public:
    // Movies may be larger than what is mapped, and little of them is looked at.
    EngineFrameData acceptedData() const override { return EngineFrameData::openFilesAndSealedMemory; }

    ConfinementProfile profile(const std::string& folder) override {
        ConfinementProfile profile = EngineProgram::profile(folder);
        profile.addressSpaceBytes = std::uint64_t{3} << 30;
        return profile;
    }

    void prepare(const std::string&) override {
        prepareMovieLibraries();
        silenceLibraries();
    }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        try {
            return answer(message.dictionary(), channel);
        } catch (const MovieFailure& failure) {
            channel.note(failure.outcome(), failure.sentence());
            // Its length and its size are an answer without a picture, too.
            if (movie_)
                channel.note(Outcome::answered, failure.sentence());
            return {};
        }
    }

private:
    static double numberIn(const NSDictionary& fields, const char16_t* key) {
        const NSNumber* const number = fields.objectForKey(key).numberIfAny();
        return number ? number->doubleValue() : 0;
    }

    static std::int64_t integerIn(const NSDictionary& fields, const char16_t* key) {
        const NSNumber* const number = fields.objectForKey(key).numberIfAny();
        return number ? number->longLongValue() : 0;
    }

    Value answer(const NSDictionary& fields, EngineChannel& channel) {
        const std::int64_t number = integerIn(fields, numberKey);
        const double seconds = numberIn(fields, secondsKey);
        if (!movie_ || number_ != number) {
            movie_ = nullptr;
            movie_ = std::make_unique<OpenedMovie>(fields.objectForKey(movieKey).data(), seconds);
            number_ = number;
        }
        switch (static_cast<Want>(integerIn(fields, wantKey))) {
        case Want::facts:
            return movie_->facts();
        case Want::frame:
            return pixels(movie_->frameAt(integerIn(fields, timeKey), seconds), channel);
        case Want::poster:
            if (auto poster = movie_->poster(seconds); poster || !movie_->hasVideo())
                return pixels(poster, channel);
            throw MovieFailure(Outcome::broken, u"no frame of it can be decoded");
        }
        return {};
    }

    static Value pixels(const std::optional<MoviePicture>& picture, EngineChannel& channel) {
        // Large frames leave much that the next does not need.
        ::malloc_trim(0);
        if (!picture)
            return {};
        if (picture->isEarlier)
            channel.note(Outcome::answered, u"the picture is from before its time, which was not reached");
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSNumber::numberWithLongLong(picture->width), widthKey},
             {NSNumber::numberWithLongLong(picture->height), heightKey},
             {NSNumber::numberWithBool(picture->hasAlpha), alphaKey},
             {picture->bytes, bytesKey}});
    }

    std::unique_ptr<OpenedMovie> movie_;
    std::int64_t number_ = 0;
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    kelvo::MovieProgram program;
    return kelvo::runEngine(program, argumentCount, arguments);
}
