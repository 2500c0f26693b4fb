#pragma once

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSData.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

// Memory that can be handed to another process by its descriptor, without a copy. Once it is sealed nobody can
// change it any more, nor make it longer or shorter, so that who gets it may read it in place.

/// Smaller data is copied faster than it is sealed.
inline constexpr std::size_t leastSealedBytes = std::size_t{64} << 10;

/// Such memory while it is being written. Throws NSException (NSMallocException) when there is none.
class SealedMemory {
public:
    explicit SealedMemory(std::size_t lengthInBytes);
    SealedMemory(const SealedMemory&) = delete;
    SealedMemory& operator=(const SealedMemory&) = delete;
    ~SealedMemory();

    /// All zero at first.
    std::span<std::uint8_t> bytes() noexcept { return bytes_; }
    /// The bytes as they are now, sealed; data of that length. Nothing can be written after it.
    NSData seal();
    /// The first `lengthInBytes` of them.
    NSData seal(std::size_t lengthInBytes);

private:
    FileDescriptor file_;
    std::span<std::uint8_t> bytes_;
};

/// A copy of the bytes: sealed when they are more than leastSealedBytes and there is a descriptor left.
NSData dataForOtherProcesses(std::string_view bytes);

/// Data that an engine was handed as an open file, read in place: where the file is cut short afterwards, reading past
/// its end raises SIGBUS. Not for the service. Nil when it cannot be mapped, is no regular file or is too large.
NSData dataWithMappedFile(FileDescriptor descriptor);

/// Empty data that stands for an open file of whatever length by its descriptor, for who reads it piece by piece. Nil when
/// it is no regular file.
NSData dataWithOpenFile(FileDescriptor descriptor);

/// Whether writing to it, and making it longer or shorter, is sealed for good.
bool isSealedMemory(int descriptor);
/// The memory that another process has sent, read in place. Nil when it is not sealed, or too large.
NSData dataWithSealedMemory(FileDescriptor descriptor);

} // namespace kelvo
