#include "platform/qtkit/engine/OpenedMovie.h"

#include "platform/foundation/Value.h"
#include "platform/qtkit/MovieEngineMessages.h"
#include "platform/qtkit/MovieFormats.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/opt.h>
}

namespace kelvo {
namespace {

using namespace movieengine;

/// How far into a file the library looks for what its streams are.
constexpr std::int64_t bytesToProbe = 2 << 20;
/// What the library takes for a movie with less certainty than this is as a rule none.
constexpr int leastCertainty = AVPROBE_SCORE_RETRY;

int refuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EACCES);
}

int isInterrupted(void* input) {
    return static_cast<const MovieInput*>(input)->isLate() ? 1 : 0;
}

const std::string& namesOfFormats() {
    static const std::string names = [] {
        std::string all;
        for (const MovieFormat& format : movieFormats())
            all += (all.empty() ? "" : ",") + std::string(format.demuxer);
        return all;
    }();
    return names;
}

/// Whether the beginning is that of a container that is read, so that it is what comes after it that cannot be.
bool beginsLikeMovie(const MovieInput& input) {
    constexpr std::size_t bytesOfBeginning = 4096;
    std::vector<unsigned char> beginning(bytesOfBeginning + AVPROBE_PADDING_SIZE);
    avio_seek(input.context(), 0, SEEK_SET);
    const int length = avio_read(input.context(), beginning.data(), static_cast<int>(bytesOfBeginning));
    const AVProbeData data{"", beginning.data(), std::max(length, 0), nullptr};
    int certainty = 0;
    const AVInputFormat* const found = av_probe_input_format3(&data, 1, &certainty);
    return found && certainty > AVPROBE_SCORE_EXTENSION &&
           std::ranges::any_of(movieFormats(), [found](const MovieFormat& format) {
               return std::string_view(format.demuxer) == found->name;
           });
}

[[noreturn]] void failToOpen(int error, const MovieInput& input) {
    if (error == AVERROR(ENOMEM))
        throw MovieFailure(Outcome::outOfMemory, u"it takes more memory than a movie may");
    if (input.isLate())
        throw MovieFailure(Outcome::timedOut, u"what is in it was not found within the time");
    if (beginsLikeMovie(input))
        throw MovieFailure(Outcome::broken,
                           u"it is damaged, or what says how to read it is missing from its end");
    throw MovieFailure(Outcome::unsupported, u"it is no movie or sound of a kind that can be read");
}

/// A picture that is put into the file, and no track of it.
bool isPicture(const AVStream& stream) {
    constexpr int pictures = AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS;
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && (stream.disposition & pictures) != 0;
}

bool isBetter(const AVStream& stream, const AVStream* other) {
    const auto rank = [](const AVStream& of) {
        const std::int64_t pixels = std::int64_t{of.codecpar->width} * of.codecpar->height;
        return std::pair((of.disposition & AV_DISPOSITION_DEFAULT) != 0, pixels);
    };
    return !other || rank(stream) > rank(*other);
}

} // namespace

void prepareMovieLibraries() {
    av_log_set_level(AV_LOG_QUIET);
}

OpenedMovie::OpenedMovie(const NSData& data, double seconds) : data_(data) {
    input_ = std::make_unique<MovieInput>(data_);
    allow(seconds);
    open();
}

void OpenedMovie::allow(double seconds) {
    constexpr double mostSeconds = 3600;
    input_->setDeadline(Clock::now() +
                        std::chrono::duration_cast<Clock::duration>(
                            std::chrono::duration<double>(std::clamp(seconds, 0.0, mostSeconds))));
}

void OpenedMovie::open() {
    video_ = nullptr;
    cover_ = nullptr;
    isBegun_ = false;
    format_ = nullptr;
    avio_seek(input_->context(), 0, SEEK_SET);
    AVFormatContext* format = avformat_alloc_context();
    if (!format)
        throw std::bad_alloc();
    format->pb = input_->context();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    // Whatever a file names stays unopened, also where the confinement would let it.
    format->io_open = refuseToOpen;
    format->interrupt_callback = {isInterrupted, input_.get()};
    format->probesize = bytesToProbe;
    // Nobody asks how many frames a second has.
    format->fps_probe_size = 0;
    av_opt_set(format, "format_whitelist", namesOfFormats().c_str(), 0);
    // It frees the format when it fails.
    if (const int error = avformat_open_input(&format, "", nullptr, nullptr); error < 0)
        failToOpen(error, *input_);
    format_ = Format(format);
    if (format_->probe_score < leastCertainty)
        failToOpen(AVERROR_INVALIDDATA, *input_);
    // What cannot be found out is not known; that is no failure.
    avformat_find_stream_info(format_.get(), nullptr);

    for (unsigned index = 0; index < format_->nb_streams; ++index) {
        AVStream& stream = *format_->streams[index];
        hasAudio_ = hasAudio_ || stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
        if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 && stream.attached_pic.size > 0 &&
            !cover_)
            cover_ = &stream;
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !isPicture(stream) &&
            isBetter(stream, video_))
            video_ = &stream;
    }
    if (!video_ && !cover_ && !hasAudio_)
        throw MovieFailure(Outcome::unsupported, u"there is neither video nor sound in it");
    for (unsigned index = 0; index < format_->nb_streams; ++index) {
        if (format_->streams[index] != video_)
            format_->streams[index]->discard = AVDISCARD_ALL;
    }
    if (video_)
        geometry_ = geometryOf(video_->codecpar->width, video_->codecpar->height,
                               av_guess_sample_aspect_ratio(format_.get(), video_, nullptr),
                               reinterpret_cast<const std::int32_t*>(
                                   av_stream_get_side_data(video_, AV_PKT_DATA_DISPLAYMATRIX, nullptr)));
}

NSDictionary OpenedMovie::facts() const {
    auto facts = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithBool(video_ != nullptr), hasVideoKey},
         {NSNumber::numberWithBool(hasAudio_), hasAudioKey}});
    if (format_->duration > 0)
        facts.setObject_forKey(NSNumber::numberWithLongLong(format_->duration), durationKey);
    if (video_ && geometry_.width > 0 && geometry_.height > 0) {
        facts.setObject_forKey(NSNumber::numberWithLongLong(geometry_.widthSeen()), widthKey);
        facts.setObject_forKey(NSNumber::numberWithLongLong(geometry_.heightSeen()), heightKey);
    }
    return facts;
}

std::optional<MoviePicture> OpenedMovie::frame(std::int64_t microseconds) {
    const Decoder decoder = decoderFor(*video_->codecpar);
    if (!decoder)
        throw MovieFailure(Outcome::unsupported, u"its video is of a kind that cannot be decoded");
    const std::int64_t start = format_->start_time == AV_NOPTS_VALUE ? 0 : format_->start_time;
    std::int64_t place = 0;
    if (microseconds > 0 && __builtin_add_overflow(start, microseconds, &place))
        place = start;
    // Never later than asked for, however coarse the units are.
    const auto unitsOf = [this](std::int64_t at) {
        return av_rescale_q_rnd(at, av_get_time_base_q(), video_->time_base, AV_ROUND_DOWN);
    };
    const std::int64_t time = microseconds <= 0 ? AV_NOPTS_VALUE : unitsOf(place);
    // Where an index is wrong, or there is none, what is found may lie after the time, or be made of nothing: then from
    // further before.
    constexpr std::int64_t second = AV_TIME_BASE;
    constexpr std::int64_t stepsBack[] = {0, 2 * second, 10 * second};
    FoundFrame best;
    if (time != AV_NOPTS_VALUE) {
        for (const std::int64_t back : stepsBack) {
            if (back >= microseconds || input_->isLate())
                break;
            isBegun_ = true;
            if (av_seek_frame(format_.get(), video_->index, unitsOf(place - back), AVSEEK_FLAG_BACKWARD) < 0)
                break;
            avcodec_flush_buffers(decoder.get());
            FoundFrame found = readFrame(*format_, *video_, *decoder, *input_, time);
            if (found.frame && (!best.frame || !found.isDoubtful))
                best = std::move(found);
            if (best.frame && !best.isDoubtful)
                break;
        }
    }
    if ((!best.frame || best.isDoubtful) && !input_->isLate()) {
        if (isBegun_)
            open();
        isBegun_ = true;
        // Opening again may find less than before.
        if (video_) {
            const Decoder again = decoderFor(*video_->codecpar);
            FoundFrame found = again ? readFrame(*format_, *video_, *again, *input_, time) : FoundFrame{};
            if (found.frame && (!best.frame || found.isReached))
                best = std::move(found);
        }
    }
    if (!best.frame) {
        if (input_->isLate())
            throw MovieFailure(Outcome::timedOut, u"no frame of it was decoded within the time");
        return std::nullopt;
    }
    MoviePicture picture = pictureOf(*best.frame, geometry_);
    picture.isEarlier = !best.isReached;
    return picture;
}

std::optional<MoviePicture> OpenedMovie::frameAt(std::int64_t microseconds, double seconds) {
    allow(seconds);
    return video_ ? frame(microseconds) : std::nullopt;
}

std::optional<MoviePicture> OpenedMovie::poster(double seconds) {
    allow(seconds);
    if (video_) {
        try {
            if (auto first = frame(0); first || !cover_)
                return first;
        } catch (const MovieFailure&) {
            if (!cover_)
                throw;
        }
    }
    if (!cover_)
        return std::nullopt;
    const Decoder decoder = decoderFor(*cover_->codecpar);
    const Frame frame = decoder ? frameOfPacket(*decoder, cover_->attached_pic) : nullptr;
    if (!frame)
        return std::nullopt;
    return pictureOf(*frame, geometryOf(frame->width, frame->height, frame->sample_aspect_ratio, nullptr));
}

} // namespace kelvo
