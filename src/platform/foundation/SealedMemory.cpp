#include "platform/foundation/SealedMemory.h"

#include "platform/foundation/NSException.h"

#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace kelvo {
namespace {

constexpr int seals = F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

FileDescriptor newMemory() {
    return FileDescriptor(::memfd_create("plumwick", MFD_CLOEXEC | MFD_ALLOW_SEALING));
}

/// What an NSData on a mapping keeps alive.
struct Mapping {
    Mapping(FileDescriptor given, std::span<const std::uint8_t> mapped)
        : file(std::move(given)), bytes(mapped) {}
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;
    ~Mapping() { ::munmap(const_cast<std::uint8_t*>(bytes.data()), bytes.size()); }

    FileDescriptor file;
    std::span<const std::uint8_t> bytes;
};

NSData dataWithMapped(FileDescriptor file, std::size_t length) {
    if (length == 0)
        return NSData::data();
    void* const mapped = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    const auto owner = std::make_shared<const Mapping>(
        std::move(file), std::span<const std::uint8_t>(static_cast<const std::uint8_t*>(mapped), length));
    return NSData::dataWithBytesNoCopy_descriptor(owner->bytes, owner, owner->file.get());
}

} // namespace

SealedMemory::SealedMemory(std::size_t lengthInBytes) : file_(newMemory()) {
    const std::size_t length = checkedSizeInBytes(lengthInBytes, 1);
    if (file_ && length == 0)
        return;
    if (file_ && ::ftruncate(file_.get(), static_cast<off_t>(length)) == 0) {
        void* const mapped =
            ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_POPULATE, file_.get(), 0);
        if (mapped != MAP_FAILED) {
            bytes_ = {static_cast<std::uint8_t*>(mapped), length};
            return;
        }
    }
    throw NSException(NSMallocException, u"There is no memory to share.");
}

SealedMemory::~SealedMemory() {
    if (!bytes_.empty())
        ::munmap(bytes_.data(), bytes_.size());
}

NSData SealedMemory::seal() {
    return seal(bytes_.size());
}

NSData SealedMemory::seal(std::size_t lengthInBytes) {
    const std::size_t length = std::min(lengthInBytes, bytes_.size());
    const bool isShorter = length < bytes_.size();
    // What can still be written to through a mapping cannot be sealed.
    if (!bytes_.empty())
        ::munmap(bytes_.data(), bytes_.size());
    bytes_ = {};
    NSData data;
    if ((!isShorter || ::ftruncate(file_.get(), static_cast<off_t>(length)) == 0) &&
        ::fcntl(file_.get(), F_ADD_SEALS, seals) == 0)
        data = dataWithMapped(std::move(file_), length);
    if (data.isNil())
        throw NSException(NSMallocException, u"Memory cannot be shared.");
    return data;
}

NSData dataForOtherProcesses(std::string_view bytes) {
    if (bytes.size() <= leastSealedBytes)
        return NSData::dataWithBytes(bytes);
    checkedSizeInBytes(bytes.size(), 1);
    // Written rather than mapped: the kernel gives the pages without a fault for each.
    FileDescriptor file = newMemory();
    if (file && writeAll(file.get(), bytes.data(), bytes.size()) &&
        ::fcntl(file.get(), F_ADD_SEALS, seals) == 0) {
        if (NSData data = dataWithMapped(std::move(file), bytes.size()); !data.isNil())
            return data;
    }
    return NSData::dataWithBytes(bytes);
}

NSData dataWithMappedFile(FileDescriptor descriptor) {
    struct stat status = {};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size < 0 || static_cast<std::uint64_t>(status.st_size) > maximumSizeInBytes)
        return nullptr;
    return dataWithMapped(std::move(descriptor), static_cast<std::size_t>(status.st_size));
}

NSData dataWithOpenFile(FileDescriptor descriptor) {
    struct stat status = {};
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return nullptr;
    const auto owner = std::make_shared<const FileDescriptor>(std::move(descriptor));
    return NSData::dataWithBytesNoCopy_descriptor({}, owner, owner->get());
}

bool isSealedMemory(int descriptor) {
    constexpr int needed = F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW;
    const int found = ::fcntl(descriptor, F_GET_SEALS);
    return found >= 0 && (found & needed) == needed;
}

NSData dataWithSealedMemory(FileDescriptor descriptor) {
    struct stat status = {};
    if (!descriptor || !isSealedMemory(descriptor.get()) || ::fstat(descriptor.get(), &status) != 0 ||
        status.st_size < 0 || static_cast<std::uint64_t>(status.st_size) > maximumSizeInBytes)
        return nullptr;
    return dataWithMapped(std::move(descriptor), static_cast<std::size_t>(status.st_size));
}

} // namespace kelvo
