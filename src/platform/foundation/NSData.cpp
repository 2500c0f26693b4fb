#include "platform/foundation/NSData.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>

namespace kelvo {
namespace {

// A new file in the folder of `path`, with those of the rights that the umask lets through; `temporaryPath` is
// set to its name. The name is short and does not grow with that of `path`, which may be as long as names can
// be.
FileDescriptor createFileBeside(const std::string& path, mode_t rights, std::string& temporaryPath) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    for (int attempt = 0; attempt < 100; ++attempt) {
        std::array<unsigned char, 10> random;
        if (::getrandom(random.data(), random.size(), 0) != static_cast<ssize_t>(random.size()))
            return FileDescriptor();
        temporaryPath = folder + ".tmp-";
        for (const unsigned char byte : random)
            temporaryPath += static_cast<char>('a' + byte % 26);
        FileDescriptor file(::open(temporaryPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, rights));
        if (file || errno != EEXIST)
            return file;
    }
    return FileDescriptor();
}

bool writeBeside(const std::string& path, std::string_view contents) {
    struct stat status = {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        return false;
    std::string temporaryPath;
    // What takes the place of a private file is private from the first byte on.
    FileDescriptor file = createFileBeside(path, exists ? 0600 : 0666, temporaryPath);
    if (!file)
        return false;
    bool written = writeAll(file.get(), contents.data(), contents.size());
    if (exists)
        written = ::fchmod(file.get(), status.st_mode & 0777) == 0 && written;
    // Else a crash soon after could leave the new name with nothing in it.
    written = written && ::fsync(file.get()) == 0;
    written = file.close() && written;
    if (written && ::rename(temporaryPath.c_str(), path.c_str()) == 0)
        return true;
    ::unlink(temporaryPath.c_str());
    return false;
}

bool writeInPlace(const std::string& path, std::string_view contents) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        return false;
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666));
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        ::ftruncate(file.get(), 0) != 0)
        return false;
    const bool written = writeAll(file.get(), contents.data(), contents.size());
    return file.close() && written;
}

} // namespace

/// Bytes that are read at most once, by whichever thread is first.
struct NSData::File {
    File(FileDescriptor given, std::size_t size) : descriptor(std::move(given)), length(size) {}

    std::span<const std::uint8_t> read() const {
        std::call_once(once, [this] {
            bytes.reset(static_cast<std::uint8_t*>(std::calloc(std::max<std::size_t>(length, 1), 1)));
            if (!bytes)
                throw NSException(NSMallocException, u"There is no memory for the contents of a file.");
            std::size_t place = 0;
            while (place < length) {
                const ssize_t count =
                    ::pread(descriptor.get(), bytes.get() + place, length - place, static_cast<off_t>(place));
                if (count == 0 || (count < 0 && errno != EINTR))
                    break;
                place += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
            }
            isRead.store(true, std::memory_order_release);
        });
        return {bytes.get(), length};
    }

    /// What the file does not have any more is left as it is.
    void readInto(std::uint8_t* to, std::size_t from, std::size_t count) const {
        std::size_t done = 0;
        while (done < count) {
            const ssize_t got =
                ::pread(descriptor.get(), to + done, count - done, static_cast<off_t>(from + done));
            if (got == 0 || (got < 0 && errno != EINTR))
                break;
            done += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
        }
    }

    const FileDescriptor descriptor;
    const std::size_t length;
    mutable std::once_flag once;
    mutable std::atomic<bool> isRead = false;
    mutable std::unique_ptr<std::uint8_t, decltype(&std::free)> bytes{nullptr, &std::free};
};

NSData NSData::dataWithBytesNoCopy(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner) {
    return dataWithBytesNoCopy_descriptor(bytes, std::move(owner), -1);
}

NSData NSData::dataWithBytesNoCopy_descriptor(std::span<const std::uint8_t> bytes,
                                              std::shared_ptr<const void> owner, int descriptor) {
    checkedSizeInBytes(bytes.size(), 1);
    NSData result;
    result.rep_ =
        std::make_shared<const Rep>(Rep{bytes, std::move(owner), bytes.size(), descriptor, nullptr});
    return result;
}

NSData NSData::dataWithContentsOfDescriptorWhenNeeded(int descriptor) {
    FileDescriptor file(descriptor);
    struct stat status = {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0 ||
        static_cast<std::uint64_t>(status.st_size) > maximumSizeInBytes)
        return nullptr;
    const auto owner =
        std::make_shared<const File>(std::move(file), static_cast<std::size_t>(status.st_size));
    NSData result;
    result.rep_ =
        std::make_shared<const Rep>(Rep{{}, owner, owner->length, owner->descriptor.get(), owner.get()});
    return result;
}

NSData NSData::dataWithContentsOfFileWhenNeeded(const NSString& path) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    FileDescriptor file = bytes ? openRegularFile(*bytes) : FileDescriptor();
    const NSData data = dataWithContentsOfDescriptorWhenNeeded(file.release());
    // The kernel's own files have no length before they are read.
    return data.isEmpty() ? dataWithContentsOfFile(path) : data;
}

std::span<const std::uint8_t> NSData::bytesOfFile() const {
    return rep_->file->read();
}

bool NSData::isUnread() const noexcept {
    return rep_ && rep_->file && !rep_->file->isRead.load(std::memory_order_acquire);
}

NSData NSData::data() {
    static const NSData empty = dataWithBytesNoCopy({}, nullptr);
    return empty;
}

NSData NSData::dataWithBytes(const void* bytes, std::size_t lengthInBytes) {
    checkedSizeInBytes(lengthInBytes, 1);
    const auto* first = static_cast<const std::uint8_t*>(bytes);
    return dataWithBytesNoCopy(std::vector<std::uint8_t>(first, first + lengthInBytes));
}

NSData NSData::dataWithBytesNoCopy(std::vector<std::uint8_t> bytes) {
    auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    const std::span<const std::uint8_t> view(*owner);
    return dataWithBytesNoCopy(view, std::move(owner));
}

NSData NSData::dataWithBytesNoCopy(std::string bytes) {
    auto owner = std::make_shared<const std::string>(std::move(bytes));
    const std::span<const std::uint8_t> view(reinterpret_cast<const std::uint8_t*>(owner->data()),
                                             owner->size());
    return dataWithBytesNoCopy(view, std::move(owner));
}

NSData NSData::dataWithContentsOfFile(const NSString& path) {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    const FileDescriptor file = bytes ? openRegularFile(*bytes) : FileDescriptor();
    struct stat status = {};
    if (!file || ::fstat(file.get(), &status) != 0 || status.st_size < 0 ||
        static_cast<std::uint64_t>(status.st_size) > maximumSizeInBytes)
        return nullptr;
    // The size is a hint: the file may be growing, and the kernel's own files say 0. One byte more shows the
    // end without growing the buffer. Not mapped: a file cut short by someone else would end this process.
    std::size_t capacity = static_cast<std::size_t>(status.st_size) + 1;
    std::size_t length = 0;
    std::unique_ptr<std::uint8_t, decltype(&std::free)> buffer(nullptr, &std::free);
    for (bool grow = true;;) {
        if (grow) {
            void* grown = std::realloc(buffer.get(), capacity);
            if (!grown)
                return nullptr;
            static_cast<void>(buffer.release());
            buffer.reset(static_cast<std::uint8_t*>(grown));
        }
        const ssize_t count = readSome(file.get(), buffer.get() + length, capacity - length);
        if (count < 0)
            return nullptr;
        if (count == 0)
            break;
        length += static_cast<std::size_t>(count);
        if (length > maximumSizeInBytes)
            return nullptr;
        grow = length == capacity;
        if (grow)
            capacity = std::min(std::max<std::size_t>(capacity * 2, 16384), maximumSizeInBytes + 1);
    }
    std::shared_ptr<const std::uint8_t> owner(buffer.release(), &std::free);
    const std::span<const std::uint8_t> view(owner.get(), length);
    return dataWithBytesNoCopy(view, std::move(owner));
}

bool NSData::writeToFile_atomically(const NSString& path, bool atomically) const {
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    if (isNil() || !bytes)
        return false;
    return atomically ? writeBeside(*bytes, characters()) : writeInPlace(*bytes, characters());
}

std::string_view NSData::characters() const {
    return {reinterpret_cast<const char*>(bytes().data()), length()};
}

NSData NSData::subdataWithRange(NSRange range) const {
    if (!rangeFits(range, length()))
        throw NSException(NSRangeException, u"The range passes the end of the data.");
    if (isUnread()) {
        std::vector<std::uint8_t> part(range.length);
        rep_->file->readInto(part.data(), range.location, range.length);
        return dataWithBytesNoCopy(std::move(part));
    }
    return isNil() ? NSData()
                   : dataWithBytesNoCopy(bytes().subspan(range.location, range.length), rep_->owner);
}

bool operator==(const NSData& left, const NSData& right) {
    return left.rep_ == right.rep_ || (left.rep_ && right.rep_ && left.length() == right.length() &&
                                       std::ranges::equal(left.bytes(), right.bytes()));
}

NSString NSData::base64EncodedString() const {
    constexpr char16_t alphabet[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    if (isNil())
        return nullptr;
    const std::span<const std::uint8_t> from = bytes();
    const std::size_t size = checkedSizeInBytes((from.size() + 2) / 3 * 4, sizeof(char16_t));
    auto* const units = static_cast<char16_t*>(std::malloc(std::max<std::size_t>(size, 1)));
    if (!units)
        throw std::bad_alloc();
    char16_t* at = units;
    for (std::size_t index = 0; index < from.size(); index += 3) {
        const std::size_t count = from.size() - index;
        const std::uint32_t bits = std::uint32_t{from[index]} << 16 |
                                   (count > 1 ? std::uint32_t{from[index + 1]} << 8 : 0) |
                                   (count > 2 ? std::uint32_t{from[index + 2]} : 0);
        *at++ = alphabet[bits >> 18];
        *at++ = alphabet[bits >> 12 & 63];
        *at++ = count > 1 ? alphabet[bits >> 6 & 63] : u'=';
        *at++ = count > 2 ? alphabet[bits & 63] : u'=';
    }
    return NSString::stringWithCharactersNoCopy(units, size / sizeof(char16_t));
}

} // namespace kelvo
