#include "platform/qtkit/QTMovie.h"

#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/coregraphics/CGImage.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/qtkit/MovieEngine.h"
#include "platform/qtkit/MovieEngineMessages.h"
#include "platform/qtkit/MovieFormats.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

namespace kelvo {

using namespace movieengine;

struct QTMovie::File {
    NSData data;
    std::int64_t number = 0;
};

namespace {

/// How long the engine may look for an answer, and how long it is waited for. All three together are less than 10 s.
struct Allowance {
    double seconds;
    double secondsToWait;
};
constexpr Allowance forFacts{2.5, 3.5};
constexpr Allowance forFrame{3.5, 4.2};
constexpr Allowance forPoster{1.5, 2.2};

std::int64_t nextNumber() {
    static std::int64_t number = 0;
    return ++number;
}

std::int64_t numberIn(const NSDictionary& fields, const char16_t* key) {
    const NSNumber* const number = fields.objectForKey(key).numberIfAny();
    return number ? number->longLongValue() : 0;
}

Value flagIn(const NSDictionary& fields, const char16_t* key) {
    return NSNumber::numberWithBool(numberIn(fields, key) != 0);
}

NSMutableDictionary messageAbout(std::int64_t number, const NSData& data, Want want, double seconds) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithLongLong(number), numberKey},
         {data, movieKey},
         {NSNumber::numberWithDouble(seconds), secondsKey},
         {NSNumber::numberWithInt(static_cast<int>(want)), wantKey}});
}

NSData openedFile(const NSString& path) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    return bytes ? dataWithOpenFile(openRegularFile(*bytes)) : NSData();
}

std::shared_ptr<NSImage> imageOf(const NSDictionary& pixels) {
    const CGImage decoded(static_cast<std::size_t>(numberIn(pixels, widthKey)),
                          static_cast<std::size_t>(numberIn(pixels, heightKey)),
                          numberIn(pixels, alphaKey) != 0 ? kCGImageAlphaLast : kCGImageAlphaNoneSkipLast,
                          pixels.objectForKey(bytesKey).data());
    if (decoded.isNil())
        return nullptr;
    Bitmap bitmap;
    bitmap.width = static_cast<std::uint32_t>(decoded.width());
    bitmap.height = static_cast<std::uint32_t>(decoded.height());
    bitmap.bytesPerRow = decoded.bytesPerRow();
    bitmap.alpha = decoded.alphaInfo() == kCGImageAlphaLast ? BitmapAlpha::last : BitmapAlpha::skipLast;
    bitmap.data = decoded.data();
    auto image = std::make_shared<NSImage>(
        NSSize{static_cast<float>(bitmap.width), static_cast<float>(bitmap.height)});
    image->addRepresentation(
        NSBitmapImageRep::initWithBitmap(std::make_shared<const Bitmap>(std::move(bitmap))));
    return image;
}

} // namespace

QTMovie::QTMovie() = default;
QTMovie::~QTMovie() = default;

std::shared_ptr<QTMovie> QTMovie::initWithFile_error(const NSString& path, NSString* error) {
    const auto fail = [error](const char16_t* sentence) {
        if (error)
            *error = sentence;
        return nullptr;
    };
    auto file = std::make_unique<File>();
    file->data = openedFile(path);
    file->number = nextNumber();
    if (file->data.isNil())
        return fail(u"the file cannot be read");
    const NSDictionary facts = MovieEngine::sharedEngine()
                                   .ask(messageAbout(file->number, file->data, Want::facts, forFacts.seconds),
                                        forFacts.secondsToWait)
                                   .dictionary();
    if (facts.isNil())
        return fail(u"it is no movie that can be read");
    std::shared_ptr<QTMovie> movie(new QTMovie);
    movie->classic_.duration = std::max<std::int64_t>(numberIn(facts, durationKey), 0);
    movie->classic_.size = {static_cast<float>(numberIn(facts, widthKey)),
                            static_cast<float>(numberIn(facts, heightKey))};
    movie->attributes_ = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{movie->classic_.size, QTMovieNaturalSizeAttribute},
         {valueWithQTTime(movie->duration()), QTMovieDurationAttribute},
         {flagIn(facts, hasVideoKey), QTMovieHasVideoAttribute},
         {flagIn(facts, hasAudioKey), QTMovieHasAudioAttribute},
         {NSNumber::numberWithBool(false), QTMovieLoopsAttribute},
         {NSNumber::numberWithBool(false), QTMovieLoopsBackAndForthAttribute}});
    movie->file_ = std::move(file);
    return movie;
}

NSArray QTMovie::movieFileTypes(unsigned) {
    NSMutableArray types = NSMutableArray::array();
    for (const MovieFormat& format : movieFormats()) {
        // Quoted type codes may have spaces in them.
        for (std::u16string_view rest = format.types; !rest.empty();) {
            const std::size_t quoted = rest.front() == u'\'' ? rest.find(u'\'', 1) : 0;
            const std::size_t end = std::min(rest.find(u' ', quoted), rest.size());
            types.addObject(NSString(rest.substr(0, end)));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }
    return types;
}

bool QTMovie::respondsToSelector(const NSString& selector) const {
    return selector == u"frameImageAtTime:withAttributes:error:" || NSObject::respondsToSelector(selector);
}

void QTMovie::setAttribute_forKey(const Value& value, const NSString& key) {
    attributes_.setObject_forKey(value, key);
}

QTTime QTMovie::duration() const {
    return {classic_.duration, classic_.timeScale, 0};
}

QTTime QTMovie::currentTime() const {
    return {classic_.time, classic_.timeScale, 0};
}

void QTMovie::setCurrentTime(const QTTime& time) {
    double seconds = 0;
    if (QTGetTimeInterval(time, &seconds))
        classic_.time = QTMakeTimeWithTimeInterval(seconds).timeValue;
}

std::shared_ptr<NSImage> QTMovie::frameImageAtTime_withAttributes_error(const QTTime& time,
                                                                        const NSDictionary& attributes,
                                                                        NSString* error) const {
    const Value& type = attributes.objectForKey(QTMovieFrameImageType);
    std::shared_ptr<NSImage> image;
    if (type.isNil() || type == Value(QTMovieFrameImageTypeNSImage))
        image = frameImageAtTime(time);
    if (!image && error)
        *error = u"there is no such frame";
    return image;
}

std::shared_ptr<NSImage> QTMovie::frameImageAtTime(const QTTime& time) const {
    double seconds = 0;
    if (!file_ || !QTGetTimeInterval(time, &seconds))
        return nullptr;
    NSMutableDictionary message = messageAbout(file_->number, file_->data, Want::frame, forFrame.seconds);
    message.setObject_forKey(NSNumber::numberWithLongLong(QTMakeTimeWithTimeInterval(seconds).timeValue),
                             timeKey);
    return imageOf(MovieEngine::sharedEngine().ask(message, forFrame.secondsToWait).dictionary());
}

std::shared_ptr<NSImage> QTMovie::posterImage() const {
    if (!file_)
        return nullptr;
    return imageOf(MovieEngine::sharedEngine()
                       .ask(messageAbout(file_->number, file_->data, Want::poster, forPoster.seconds),
                            forPoster.secondsToWait)
                       .dictionary());
}

Movie QTMovie::quickTimeMovie() const {
    return file_ ? &classic_ : nullptr;
}

std::int64_t GetMovieDuration(Movie movie) {
    return movie->duration;
}

std::int64_t GetMovieTime(Movie movie) {
    return movie->time;
}

std::int32_t GetMovieTimeScale(Movie movie) {
    return movie->timeScale;
}

MovieBox GetMovieBox(Movie movie) {
    return {0, 0, static_cast<std::int32_t>(movie->size.height),
            static_cast<std::int32_t>(movie->size.width)};
}

} // namespace kelvo
