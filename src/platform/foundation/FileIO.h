#pragma once

#include <cstddef>
#include <string>
#include <utility>

#include <unistd.h>

namespace kelvo {

/// Owns a file descriptor; -1 owns none.
class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor = -1) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    int get() const noexcept { return descriptor_; }
    /// The descriptor, for somebody else to close.
    int release() noexcept { return std::exchange(descriptor_, -1); }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    /// False when the kernel reports an error that it kept until now. The descriptor is gone in any case.
    bool close() noexcept {
        const int descriptor = release();
        return descriptor < 0 || ::close(descriptor) == 0;
    }

private:
    int descriptor_;
};

/// Like read(2), and goes on after a signal.
ssize_t readSome(int descriptor, void* buffer, std::size_t capacityInBytes);
/// Like write(2) until all is written. False on an error.
bool writeAll(int descriptor, const void* bytes, std::size_t lengthInBytes);

/// A regular file opened for reading, or none. What is no regular file is not opened at all, because opening
/// a pipe can wait for ever and opening a device can do anything.
FileDescriptor openRegularFile(const std::string& path);

} // namespace kelvo
