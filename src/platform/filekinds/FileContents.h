#pragma once

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSData.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kelvo {

/// The bytes of a file, in memory or still on the disk, for those who look at a few places of it.
class FileContents {
public:
    /// The bytes must outlive this object.
    explicit FileContents(std::string_view bytes);
    /// Of an open regular file. None at all when the descriptor owns nothing.
    explicit FileContents(FileDescriptor file);
    /// Data that stands on a file is not read for it.
    explicit FileContents(const NSData& data);

    std::uint64_t length() const noexcept { return length_; }
    /// A copy of up to `count` bytes from that place on; fewer where the file ends or cannot be read.
    std::string bytes(std::uint64_t place, std::size_t count) const;
    /// Whether any of the parts, of at most 1 KiB each, stands anywhere in the first 512 MiB. Reads a piece at a
    /// time.
    bool containAny(std::initializer_list<std::string_view> parts) const;

private:
    std::string_view inMemory_;
    NSData data_;
    FileDescriptor file_;
    /// What is read from; -1 when the bytes are in memory.
    int descriptor_ = -1;
    std::uint64_t length_ = 0;
};

} // namespace kelvo
