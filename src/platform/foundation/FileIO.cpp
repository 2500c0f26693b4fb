#include "platform/foundation/FileIO.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace kelvo {

ssize_t readSome(int descriptor, void* buffer, std::size_t capacityInBytes) {
    for (;;) {
        const ssize_t count = ::read(descriptor, buffer, capacityInBytes);
        if (count >= 0 || errno != EINTR)
            return count;
    }
}

bool writeAll(int descriptor, const void* bytes, std::size_t lengthInBytes) {
    const auto* next = static_cast<const char*>(bytes);
    while (lengthInBytes > 0) {
        const ssize_t count = ::write(descriptor, next, lengthInBytes);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        next += count;
        lengthInBytes -= static_cast<std::size_t>(count);
    }
    return true;
}

FileDescriptor openRegularFile(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
        return FileDescriptor();
    // Another file may have taken the name since, hence O_NONBLOCK and the second look.
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)))
        return FileDescriptor();
    return file;
}

} // namespace kelvo
