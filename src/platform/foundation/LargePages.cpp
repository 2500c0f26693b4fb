#include "platform/foundation/LargePages.h"

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>

namespace kelvo {

void preferLargePages(void* memory, std::size_t sizeInBytes) noexcept {
    // From here on malloc gives each block a mapping of its own, whatever was allocated before.
    constexpr std::size_t leastSize = std::size_t{32} << 20;
    constexpr std::uintptr_t largePage = std::uintptr_t{2} << 20;
    if (!memory || sizeInBytes < leastSize)
        return;
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::size_t before = (largePage - address % largePage) % largePage;
    const std::size_t whole = (sizeInBytes - before) / largePage * largePage;
    // A system that has none goes on with small ones.
    static_cast<void>(::madvise(static_cast<std::byte*>(memory) + before, whole, MADV_HUGEPAGE));
}

} // namespace kelvo
