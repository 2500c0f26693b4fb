#include "platform/qtkit/engine/MovieInput.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {
namespace {

/// Frames lie far apart, and what is read beyond them is read in vain.
constexpr int bytesOfPiece = 64 << 10;

std::int64_t lengthOf(const NSData& data) {
    struct stat status = {};
    if (data.descriptor() >= 0 && ::fstat(data.descriptor(), &status) == 0)
        return status.st_size;
    return static_cast<std::int64_t>(data.length());
}

} // namespace

MovieInput::MovieInput(NSData data) : data_(std::move(data)), length_(lengthOf(data_)) {
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bytesOfPiece));
    if (buffer)
        context_ = avio_alloc_context(buffer, bytesOfPiece, 0, this, &read, nullptr, &seek);
    if (!context_) {
        av_free(buffer);
        throw std::bad_alloc();
    }
}

MovieInput::~MovieInput() {
    // The library may have put another in its place.
    av_freep(&context_->buffer);
    avio_context_free(&context_);
}

void MovieInput::setDeadline(Clock::time_point deadline) noexcept {
    deadline_ = deadline;
    context_->eof_reached = 0;
    context_->error = 0;
}

int MovieInput::read(void* self, std::uint8_t* bytes, int count) {
    auto& input = *static_cast<MovieInput*>(self);
    if (input.isLate())
        return AVERROR_EXIT;
    if (count <= 0 || input.place_ >= input.length_)
        return AVERROR_EOF;
    auto got = static_cast<ssize_t>(std::min<std::int64_t>(count, input.length_ - input.place_));
    if (input.data_.descriptor() >= 0) {
        const auto wanted = static_cast<std::size_t>(got);
        do
            got = ::pread(input.data_.descriptor(), bytes, wanted, static_cast<off_t>(input.place_));
        while (got < 0 && errno == EINTR);
        if (got < 0)
            return AVERROR(errno);
        // It was cut short meanwhile.
        if (got == 0)
            return AVERROR_EOF;
    } else {
        std::memcpy(bytes, input.data_.bytes().data() + input.place_, static_cast<std::size_t>(got));
    }
    input.place_ += got;
    input.bytesRead_ += static_cast<std::uint64_t>(got);
    return static_cast<int>(got);
}

std::int64_t MovieInput::seek(void* self, std::int64_t offset, int whence) {
    auto& input = *static_cast<MovieInput*>(self);
    std::int64_t place = offset;
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return input.length_;
    case SEEK_SET:
        break;
    case SEEK_CUR:
        if (__builtin_add_overflow(input.place_, offset, &place))
            return AVERROR(EINVAL);
        break;
    case SEEK_END:
        if (__builtin_add_overflow(input.length_, offset, &place))
            return AVERROR(EINVAL);
        break;
    default:
        return AVERROR(EINVAL);
    }
    if (place < 0)
        return AVERROR(EINVAL);
    return input.place_ = place;
}

} // namespace kelvo
