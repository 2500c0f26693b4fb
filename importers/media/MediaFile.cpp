#include "importers/media/MediaFile.h"

#include "importers/support/Importer.h"

#include <algorithm>
#include <climits>
#include <cstring>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

namespace kelvo::importers {
namespace {

/// What hours of film have in tables before a frame of it is reached, and a cover.
constexpr std::size_t mostBytesRead = std::size_t{64} << 20;
constexpr std::size_t mostBytesAtOnce = std::size_t{64} << 20;
constexpr std::int64_t mostBytesProbed = std::int64_t{2} << 20;
constexpr int bytesOfBuffer = 32 * 1024;

/// Formats that name other files are not among them, nor any that is known by its name alone.
constexpr const char* formats = "aa,aac,aax,ac3,aiff,amr,ape,asf,au,avi,caf,dts,dv,eac3,flac,flic,flv,ivf,"
                                "loas,matroska,webm,mov,mp4,m4a,3gp,3g2,mj2,"
                                "mp3,mpc,mpc8,mpeg,mpegts,mpegvideo,mxf,nut,ogg,rm,tak,tta,voc,w64,wav,wv";

int refuse(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
    return AVERROR(EACCES);
}

bool isOfPicture(const AVStream& stream) {
    return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

double seconds(std::int64_t duration, AVRational unit) {
    return duration == AV_NOPTS_VALUE || duration <= 0 ? 0 : static_cast<double>(duration) * av_q2d(unit);
}

} // namespace

MediaFile::MediaFile(std::string_view bytes) : bytes_(bytes) {}

MediaFile::~MediaFile() {
    avformat_close_input(&container_);
    if (reader_)
        av_freep(&reader_->buffer);
    avio_context_free(&reader_);
    av_max_alloc(INT_MAX);
}

std::unique_ptr<MediaFile> MediaFile::open(std::string_view bytes) {
    av_log_set_level(AV_LOG_QUIET);
    // For the whole process, in which others use the library: until the file is closed.
    av_max_alloc(mostBytesAtOnce);
    std::unique_ptr<MediaFile> file(new MediaFile(bytes));
    if (!file->openContainer())
        return nullptr;
    file->sortTracks();
    return file;
}

bool MediaFile::openContainer() {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bytesOfBuffer));
    reader_ = buffer ? avio_alloc_context(buffer, bytesOfBuffer, 0, this, read, nullptr, seek) : nullptr;
    container_ = reader_ ? avformat_alloc_context() : nullptr;
    if (!container_) {
        if (!reader_)
            av_free(buffer);
        return false;
    }
    container_->pb = reader_;
    container_->io_open = refuse;
    container_->probesize = mostBytesProbed;
    container_->format_whitelist = av_strdup(formats);
    // Frees the container when it fails.
    if (avformat_open_input(&container_, nullptr, nullptr, nullptr) < 0)
        return false;
    if (mustBeProbed())
        avformat_find_stream_info(container_, nullptr);
    return true;
}

int MediaFile::read(void* self, std::uint8_t* buffer, int size) {
    auto& file = *static_cast<MediaFile*>(self);
    if (file.place_ >= file.bytes_.size())
        return AVERROR_EOF;
    if (file.bytesRead_ > mostBytesRead ||
        std::chrono::duration<double>(std::chrono::steady_clock::now() - file.start_).count() >
            mostSecondsOfImport) {
        file.isCutShort_ = true;
        return AVERROR_EXIT;
    }
    const std::size_t length = std::min(static_cast<std::size_t>(size), file.bytes_.size() - file.place_);
    std::memcpy(buffer, file.bytes_.data() + file.place_, length);
    file.place_ += length;
    file.bytesRead_ += length;
    return static_cast<int>(length);
}

std::int64_t MediaFile::seek(void* self, std::int64_t offset, int whence) {
    auto& file = *static_cast<MediaFile*>(self);
    const auto size = static_cast<std::int64_t>(file.bytes_.size());
    if ((whence & AVSEEK_SIZE) != 0)
        return size;
    const std::int64_t start = whence == SEEK_CUR   ? static_cast<std::int64_t>(file.place_)
                               : whence == SEEK_END ? size
                                                    : 0;
    if (offset < -start || offset > std::int64_t{1} << 62)
        return AVERROR(EINVAL);
    file.place_ = static_cast<std::size_t>(start + offset);
    return start + offset;
}

/// Most headers say all there is to say; what does not comes out of the first frames.
bool MediaFile::mustBeProbed() const {
    if (container_->nb_streams == 0 || (container_->ctx_flags & AVFMTCTX_NOHEADER) != 0 || duration() == 0)
        return true;
    for (unsigned index = 0; index < container_->nb_streams; ++index) {
        AVStream& stream = *container_->streams[index];
        const AVCodecParameters& codec = *stream.codecpar;
        if (codec.codec_type == AVMEDIA_TYPE_VIDEO && !isOfPicture(stream) &&
            (codec.width <= 0 || codec.height <= 0 || frameRate(stream) == 0))
            return true;
        if (codec.codec_type == AVMEDIA_TYPE_AUDIO &&
            (codec.sample_rate <= 0 || codec.ch_layout.nb_channels <= 0))
            return true;
    }
    return false;
}

void MediaFile::sortTracks() {
    for (unsigned index = 0; index < container_->nb_streams; ++index) {
        AVStream* const stream = container_->streams[index];
        if (isOfPicture(*stream))
            hasCover_ = true;
        else
            tracks_.push_back(stream);
    }
}

bool MediaFile::isOf(std::string_view format) const {
    const std::string_view names = container_->iformat->name;
    const std::size_t start = names.find(format);
    return start != names.npos && (start == 0 || names[start - 1] == ',') &&
           (start + format.size() == names.size() || names[start + format.size()] == ',');
}

double MediaFile::duration() const {
    double longest = seconds(container_->duration, {1, AV_TIME_BASE});
    if (longest > 0)
        return longest;
    for (unsigned index = 0; index < container_->nb_streams; ++index) {
        const AVStream& stream = *container_->streams[index];
        longest = std::max(longest, seconds(stream.duration, stream.time_base));
    }
    return longest;
}

AVStream* MediaFile::track(AVMediaType type) const {
    AVStream* first = nullptr;
    for (AVStream* const track : tracks_) {
        if (track->codecpar->codec_type != type)
            continue;
        if ((track->disposition & AV_DISPOSITION_DEFAULT) != 0)
            return track;
        first = first ? first : track;
    }
    return first;
}

double MediaFile::frameRate(AVStream& track) const {
    for (const AVRational rate : {track.avg_frame_rate, track.r_frame_rate}) {
        if (rate.num > 0 && rate.den > 0)
            return av_q2d(rate);
    }
    const double length = seconds(track.duration, track.time_base);
    return track.nb_frames > 0 && length > 0 ? static_cast<double>(track.nb_frames) / length : 0;
}

} // namespace kelvo::importers
