#include "platform/engine/EngineReports.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace kelvo {
namespace {

constexpr int seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;

} // namespace

struct EngineReports::Layout {
    /// Of what is whole. Appended bytes count from the moment on when it says so.
    std::atomic<std::uint32_t> length;
    char bytes[sizeInBytes - sizeof length];
};

EngineReports EngineReports::create() {
    FileDescriptor memory(::memfd_create("engine-reports", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!memory || ::ftruncate(memory.get(), sizeInBytes) != 0 ||
        ::fcntl(memory.get(), F_ADD_SEALS, seals) != 0)
        return {};
    return EngineReports(std::move(memory));
}

EngineReports::EngineReports(FileDescriptor memory) : memory_(std::move(memory)) {
    static_assert(sizeof(Layout) == sizeInBytes && std::atomic<std::uint32_t>::is_always_lock_free);
    struct stat facts {};
    const int present = memory_ ? ::fcntl(memory_.get(), F_GET_SEALS) : -1;
    // Systems may add seals of their own.
    const bool isSealed = present >= 0 && (present & seals) == seals;
    if (isSealed && ::fstat(memory_.get(), &facts) == 0 && facts.st_size == static_cast<off_t>(sizeInBytes)) {
        void* const mapped =
            ::mmap(nullptr, sizeInBytes, PROT_READ | PROT_WRITE, MAP_SHARED, memory_.get(), 0);
        if (mapped != MAP_FAILED)
            layout_ = static_cast<Layout*>(mapped);
    }
    // Whatever else it is, nobody waits here for its end.
    if (!layout_)
        memory_.close();
}

EngineReports::EngineReports(EngineReports&& other) noexcept
    : memory_(std::move(other.memory_)), layout_(std::exchange(other.layout_, nullptr)) {}

EngineReports& EngineReports::operator=(EngineReports&& other) noexcept {
    std::swap(memory_, other.memory_);
    std::swap(layout_, other.layout_);
    return *this;
}

EngineReports::~EngineReports() {
    if (layout_)
        ::munmap(layout_, sizeInBytes);
}

bool EngineReports::append(std::string_view frame) noexcept {
    if (!layout_)
        return false;
    const std::size_t length = layout_->length.load(std::memory_order_acquire);
    if (length > sizeof layout_->bytes || frame.size() > sizeof layout_->bytes - length)
        return false;
    std::memcpy(layout_->bytes + length, frame.data(), frame.size());
    layout_->length.store(static_cast<std::uint32_t>(length + frame.size()), std::memory_order_release);
    return true;
}

std::string EngineReports::take() {
    if (!layout_)
        return {};
    const std::size_t length = layout_->length.exchange(0, std::memory_order_acquire);
    return {layout_->bytes, std::min(length, sizeof layout_->bytes)};
}

} // namespace kelvo
