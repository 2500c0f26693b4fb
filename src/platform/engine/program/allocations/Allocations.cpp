// malloc and its like for engine programs: what fails for want of memory ends the engine with a status of its own, so
// that whoever asked learns that it was memory, and not whatever a library does without it.

#include "platform/engine/EngineExceptions.h"

#include <cstddef>

#include <sys/resource.h>
#include <unistd.h>

#ifndef KELVO_SANITIZED

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

} // extern "C"

namespace {

/// What no process could be given is what a damaged file asks for. Libraries know what to do about that.
constexpr std::size_t mostPlausibleBytes = std::size_t{1} << 40;

void* checked(void* block, std::size_t size) {
    if (!block && size > 0 && size < mostPlausibleBytes)
        ::_exit(kelvo::engineStatusOutOfMemory);
    return block;
}

} // namespace

extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    return checked(__libc_malloc(size), size);
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes))
        return nullptr;
    return checked(__libc_calloc(count, size), bytes);
}

[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) {
    return checked(__libc_realloc(block, size), size);
}

} // extern "C"

#endif
