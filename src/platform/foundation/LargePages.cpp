#include "platform/foundation/LargePages.h"

#include <sys/mman.h>

#include <cstdint>

namespace kelvo {

void preferLargePages(void* memory, std::size_t sizeInBytes) noexcept {
    // From here on malloc gives each block a mapping of its own, whatever was allocated before.
    constexpr std::size_t leastSize = std::size_t{32} << 20;
    constexpr std::uintptr_t largePage = std::uintptr_t{2} << 20;
    if (!memory || sizeInBytes < leastSize)
        return;
    const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + largePage - 1) & ~(largePage - 1);
    const auto end = (reinterpret_cast<std::uintptr_t>(memory) + sizeInBytes) & ~(largePage - 1);
    // A system that has none goes on with small ones.
    static_cast<void>(::madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE));
}

} // namespace kelvo
