#pragma once

#include <cstddef>

namespace kelvo {

/// For memory that was just allocated to be written once from its beginning: where it is tens of megabytes the system is
/// asked for large pages, because it takes longer to hand out the small ones of a large text than to write it. Smaller
/// blocks are left alone, which malloc hands out again and again.
void preferLargePages(void* memory, std::size_t sizeInBytes) noexcept;

} // namespace kelvo
