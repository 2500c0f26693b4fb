#include "platform/engine/program/EngineProgram.h"
#include "platform/imageio/ImageEngineMessages.h"
#include "platform/imageio/engine/ImageEncoder.h"
#include "platform/imageio/engine/OpenedImage.h"

#include <algorithm>
#include <memory>
#include <optional>

#include <malloc.h>

namespace kelvo {
namespace {

using namespace imageengine;

class ImageProgram final : public EngineProgram {
public:
    ConfinementProfile profile(const std::string& folder) override {
        ConfinementProfile profile = EngineProgram::profile(folder);
        // For text in drawings.
        profile.readable = {"/usr/share/fonts",      "/usr/local/share/fonts", "/etc/fonts",
                            "/usr/share/fontconfig", "/var/cache/fontconfig",  "/usr/share/mime"};
        profile.addressSpaceBytes = std::uint64_t{3} << 30;
        return profile;
    }

    void prepare(const std::string&) override {
        prepareImageLibraries();
        silenceLibraries();
    }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        try {
            return answer(message.dictionary(), channel);
        } catch (const ImageFailure& failure) {
            channel.note(failure.outcome(), failure.sentence());
            return {};
        }
    }

private:
    static std::int64_t numberIn(const NSDictionary& fields, const char16_t* key) {
        const NSNumber* const number = fields.objectForKey(key).numberIfAny();
        return number ? number->longLongValue() : 0;
    }

    static bool isSet(const NSDictionary& fields, const char16_t* key) { return numberIn(fields, key) != 0; }

    Value answer(const NSDictionary& fields, EngineChannel& channel) {
        const auto want = static_cast<Want>(numberIn(fields, wantKey));
        if (want == Want::file)
            return file(fields);
        const NSData data = fields.objectForKey(imageKey).data();
        if (data.isNil())
            return readableImageTypes();
        const std::int64_t number = numberIn(fields, numberKey);
        if (!image_ || number_ != number) {
            image_ = nullptr;
            image_ = OpenedImage::open(data, fields.objectForKey(hintKey).string());
            number_ = number;
            if (!image_)
                return {};
        }
        const std::int64_t index = numberIn(fields, indexKey);
        switch (want) {
        case Want::facts:
            return image_->facts();
        case Want::pixels:
            return pixels(fields, index, channel);
        case Want::properties:
            return image_->properties(index);
        case Want::rows:
            return NSNumber::numberWithLongLong(static_cast<std::int64_t>(image_->goodRows(index)));
        case Want::file:
            break;
        }
        return {};
    }

    Value pixels(const NSDictionary& fields, std::int64_t index, EngineChannel& channel) {
        DecodeRequest request;
        request.mostPixels =
            static_cast<std::size_t>(std::max<std::int64_t>(numberIn(fields, mostPixelsKey), 0));
        request.mayBeEmbedded = isSet(fields, embeddedKey);
        request.mayBeFromImage = isSet(fields, fromImageKey);
        request.isUpright = isSet(fields, uprightKey);
        const auto decoded = image_->decode(index, request);
        // Large images leave much that the next does not need.
        ::malloc_trim(0);
        if (!decoded)
            return {};
        if (decoded->isPartial)
            channel.note(Outcome::answered, u"the image is damaged, and may not be whole");
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSNumber::numberWithLongLong(static_cast<std::int64_t>(decoded->size.width)), widthKey},
             {NSNumber::numberWithLongLong(static_cast<std::int64_t>(decoded->size.height)), heightKey},
             {NSNumber::numberWithBool(decoded->hasAlpha), alphaKey},
             {decoded->bytes, bytesKey}});
    }

    static NSData file(const NSDictionary& fields) {
        const NSData pixels = fields.objectForKey(bytesKey).data();
        const NSNumber* const quality = fields.objectForKey(qualityKey).numberIfAny();
        const ImageSize size{static_cast<std::size_t>(numberIn(fields, widthKey)),
                             static_cast<std::size_t>(numberIn(fields, heightKey))};
        NSData made = encodedImage(size, isSet(fields, alphaKey), {pixels.bytes().data(), pixels.length()},
                                   fields.objectForKey(typeKey).string(),
                                   quality ? std::optional(quality->doubleValue()) : std::nullopt);
        ::malloc_trim(0);
        return made;
    }

    std::unique_ptr<OpenedImage> image_;
    std::int64_t number_ = 0;
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    kelvo::ImageProgram program;
    return kelvo::runEngine(program, argumentCount, arguments);
}
