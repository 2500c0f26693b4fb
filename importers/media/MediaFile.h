#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

namespace kelvo::importers {

/// A recording or film that FFmpeg has opened, out of bytes that are read in place. No other file is ever opened for it.
class MediaFile {
public:
    /// Null when the bytes are of no format that is known, or damaged at the beginning.
    static std::unique_ptr<MediaFile> open(std::string_view bytes);
    MediaFile(const MediaFile&) = delete;
    MediaFile& operator=(const MediaFile&) = delete;
    ~MediaFile();

    const AVFormatContext& container() const { return *container_; }
    bool isOf(std::string_view format) const;
    /// In seconds; 0 when it is not known.
    double duration() const;
    /// In order. Pictures that are attached, covers, are no tracks.
    const std::vector<AVStream*>& tracks() const { return tracks_; }
    bool hasCover() const { return hasCover_; }
    /// The first of the kind that a player would choose; null when there is none.
    AVStream* track(AVMediaType type) const;
    /// In frames a second; 0 when it is not known.
    double frameRate(AVStream& track) const;
    /// Whether reading was ended before all was found.
    bool isCutShort() const { return isCutShort_; }

private:
    explicit MediaFile(std::string_view bytes);
    static int read(void* self, std::uint8_t* buffer, int size);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);
    bool openContainer();
    bool mustBeProbed() const;
    void sortTracks();

    std::string_view bytes_;
    std::size_t place_ = 0;
    std::size_t bytesRead_ = 0;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool isCutShort_ = false;
    bool hasCover_ = false;
    AVIOContext* reader_ = nullptr;
    AVFormatContext* container_ = nullptr;
    std::vector<AVStream*> tracks_;
};

} // namespace kelvo::importers
