#include "platform/imageio/CGImageSource.h"

#include "platform/foundation/SealedMemory.h"
#include "platform/foundation/Value.h"
#include "platform/imageio/ImageEngine.h"
#include "platform/imageio/ImageEngineMessages.h"
#include "platform/ledger/RequestNotes.h"

#include <utility>

namespace kelvo {

using namespace imageengine;

struct CGImageSource::Contents {
    NSData data;
    NSString hint;
    NSString type;
    std::int64_t number = 0;
    std::size_t count = 0;
    bool isIncomplete = false;
};

namespace {

std::int64_t nextNumber() {
    static std::int64_t number = 0;
    return ++number;
}

NSMutableDictionary messageAbout(std::int64_t number, const NSData& data, const NSString& hint, Want want) {
    auto message = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithLongLong(number), numberKey},
         {data, imageKey},
         {NSNumber::numberWithInt(static_cast<int>(want)), wantKey}});
    if (!hint.isNil())
        message.setObject_forKey(hint, hintKey);
    return message;
}

Value answerTo(const NSDictionary& message) {
    return ImageEngine::sharedEngine().answerTo(message);
}

std::int64_t numberIn(const NSDictionary& fields, const char16_t* key) {
    const NSNumber* const number = fields.objectForKey(key).numberIfAny();
    return number ? number->longLongValue() : 0;
}

NSNumber flag(const NSDictionary& options, const char16_t* key) {
    return NSNumber::numberWithBool(numberIn(options, key) != 0);
}

CGImage imageOf(const NSDictionary& pixels) {
    return CGImage(static_cast<std::size_t>(numberIn(pixels, widthKey)),
                   static_cast<std::size_t>(numberIn(pixels, heightKey)),
                   numberIn(pixels, alphaKey) != 0 ? kCGImageAlphaLast : kCGImageAlphaNoneSkipLast,
                   pixels.objectForKey(bytesKey).data());
}

} // namespace

NSArray CGImageSourceCopyTypeIdentifiers() {
    static NSArray types;
    if (types.isNil())
        types = answerTo(NSDictionary::dictionary()).array();
    return types.isNil() ? NSArray::array() : types;
}

CGImageSource CGImageSourceCreateWithData(const NSData& data, const NSDictionary& options) {
    CGImageSource source;
    if (data.isEmpty())
        return source;
    auto contents = std::make_shared<CGImageSource::Contents>();
    // Made for sharing once, and not each time that an engine is given it.
    contents->data = data.descriptor() < 0 && data.length() >= leastSealedBytes
                         ? dataForOtherProcesses(data.characters())
                         : data;
    contents->hint = options.objectForKey(kCGImageSourceTypeIdentifierHint).string();
    contents->number = nextNumber();
    const NSDictionary facts =
        answerTo(messageAbout(contents->number, contents->data, contents->hint, Want::facts)).dictionary();
    if (facts.isNil()) {
        noteOutcome(Outcome::unsupported, u"it is no image of a kind that can be read");
        return source;
    }
    contents->type = facts.objectForKey(typeKey).string();
    contents->count = static_cast<std::size_t>(std::max<std::int64_t>(numberIn(facts, countKey), 0));
    contents->isIncomplete = numberIn(facts, incompleteKey) != 0;
    source.contents_ = std::move(contents);
    return source;
}

std::size_t CGImageSourceGetCount(const CGImageSource& source) {
    return source.contents_ ? source.contents_->count : 0;
}

NSString CGImageSourceGetType(const CGImageSource& source) {
    return source.contents_ ? source.contents_->type : NSString();
}

CGImageSourceStatus CGImageSourceGetStatus(const CGImageSource& source) {
    if (!source.contents_)
        return kCGImageStatusInvalidData;
    return source.contents_->isIncomplete ? kCGImageStatusIncomplete : kCGImageStatusComplete;
}

CGImage CGImageSourceCreateThumbnailAtIndex(const CGImageSource& source, std::size_t index,
                                            const NSDictionary& options) {
    if (index >= CGImageSourceGetCount(source))
        return {};
    const bool isAlwaysFromImage = numberIn(options, kCGImageSourceCreateThumbnailFromImageAlways) != 0;
    const bool isFromImage =
        isAlwaysFromImage || numberIn(options, kCGImageSourceCreateThumbnailFromImageIfAbsent) != 0;
    const CGImageSource::Contents& contents = *source.contents_;
    NSMutableDictionary message = messageAbout(contents.number, contents.data, contents.hint, Want::pixels);
    message.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(index)), indexKey);
    message.setObject_forKey(
        NSNumber::numberWithLongLong(numberIn(options, kCGImageSourceThumbnailMaxPixelSize)), mostPixelsKey);
    message.setObject_forKey(NSNumber::numberWithBool(!isAlwaysFromImage), embeddedKey);
    message.setObject_forKey(NSNumber::numberWithBool(isFromImage), fromImageKey);
    message.setObject_forKey(flag(options, kCGImageSourceCreateThumbnailWithTransform), uprightKey);
    return imageOf(answerTo(message).dictionary());
}

CGImage CGImageSourceCreateImageAtIndex(const CGImageSource& source, std::size_t index,
                                        const NSDictionary& options) {
    if (index >= CGImageSourceGetCount(source))
        return {};
    const CGImageSource::Contents& contents = *source.contents_;
    NSMutableDictionary message = messageAbout(contents.number, contents.data, contents.hint, Want::pixels);
    message.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(index)), indexKey);
    message.setObject_forKey(NSNumber::numberWithBool(true), fromImageKey);
    message.setObject_forKey(flag(options, kCGImageSourceCreateThumbnailWithTransform), uprightKey);
    return imageOf(answerTo(message).dictionary());
}

std::size_t CGImageSourceCountDecodedRows(const CGImageSource& source, std::size_t index) {
    if (index >= CGImageSourceGetCount(source))
        return 0;
    const CGImageSource::Contents& contents = *source.contents_;
    NSMutableDictionary message = messageAbout(contents.number, contents.data, contents.hint, Want::rows);
    message.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(index)), indexKey);
    const Value answer = answerTo(message);
    const NSNumber* const rows = answer.numberIfAny();
    return rows && rows->longLongValue() > 0 ? static_cast<std::size_t>(rows->longLongValue()) : 0;
}

NSDictionary CGImageSourceCopyPropertiesAtIndex(const CGImageSource& source, std::size_t index,
                                                const NSDictionary&) {
    if (index >= CGImageSourceGetCount(source))
        return nullptr;
    const CGImageSource::Contents& contents = *source.contents_;
    NSMutableDictionary message =
        messageAbout(contents.number, contents.data, contents.hint, Want::properties);
    message.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(index)), indexKey);
    return answerTo(message).dictionary();
}

} // namespace kelvo
