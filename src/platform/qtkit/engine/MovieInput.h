#pragma once

#include "platform/foundation/NSData.h"
#include "platform/qtkit/engine/MovieLibrary.h"

#include <cstdint>

namespace kelvo {

/// The bytes of a file as the library asks for them: piece by piece from the open file, or from memory. It has an end to
/// its time, from when on the library is told that it was interrupted. Stays where it is while the library has it.
class MovieInput {
public:
    explicit MovieInput(NSData data);
    MovieInput(const MovieInput&) = delete;
    MovieInput& operator=(const MovieInput&) = delete;
    ~MovieInput();

    AVIOContext* context() const noexcept { return context_; }
    /// What was interrupted can go on.
    void setDeadline(Clock::time_point deadline) noexcept;
    bool isLate() const noexcept { return Clock::now() >= deadline_; }
    /// All that was read of the file so far.
    std::uint64_t bytesRead() const noexcept { return bytesRead_; }

private:
    static int read(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seek(void* self, std::int64_t offset, int whence);

    NSData data_;
    AVIOContext* context_ = nullptr;
    std::int64_t length_ = 0;
    std::int64_t place_ = 0;
    std::uint64_t bytesRead_ = 0;
    Clock::time_point deadline_ = Clock::time_point::max();
};

} // namespace kelvo
