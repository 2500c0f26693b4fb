#include "platform/filekinds/FileContents.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {
namespace {

constexpr std::size_t pieceLength = 1 << 20;
constexpr std::size_t longestPart = 1024;
/// A sparse file can be longer than anybody can read.
constexpr std::uint64_t mostBytesSearched = 512ULL << 20;

} // namespace

FileContents::FileContents(std::string_view bytes) : inMemory_(bytes), length_(bytes.size()) {}

FileContents::FileContents(const NSData& data) : data_(data), length_(data.length()) {
    if (data.isUnread())
        descriptor_ = data.descriptor();
    else
        inMemory_ = data.characters();
}

FileContents::FileContents(FileDescriptor file) : file_(std::move(file)), descriptor_(file_.get()) {
    struct stat facts;
    if (file_ && fstat(file_.get(), &facts) == 0 && facts.st_size > 0)
        length_ = static_cast<std::uint64_t>(facts.st_size);
}

std::string FileContents::bytes(std::uint64_t place, std::size_t count) const {
    if (place >= length_)
        return {};
    count = static_cast<std::size_t>(std::min<std::uint64_t>(count, length_ - place));
    if (descriptor_ < 0)
        return std::string(inMemory_.substr(static_cast<std::size_t>(place), count));
    std::string result(count, '\0');
    std::size_t got = 0;
    while (got < count) {
        const ssize_t length =
            pread(descriptor_, result.data() + got, count - got, static_cast<off_t>(place + got));
        if (length < 0 && errno == EINTR)
            continue;
        if (length <= 0)
            break;
        got += static_cast<std::size_t>(length);
    }
    result.resize(got);
    return result;
}

bool FileContents::containAny(std::initializer_list<std::string_view> parts) const {
    const std::uint64_t end = std::min(length_, mostBytesSearched);
    // Each piece reaches as far into the next as a part may that begins in this one.
    for (std::uint64_t place = 0; place < end; place += pieceLength) {
        const std::string piece = bytes(place, pieceLength + longestPart - 1);
        // std::string::find takes seconds where the file repeats a part's first letter.
        if (std::ranges::any_of(parts, [&](std::string_view part) {
                return memmem(piece.data(), piece.size(), part.data(), part.size()) != nullptr;
            }))
            return true;
    }
    return false;
}

} // namespace kelvo
