#include "platform/pdfkit/engine/LateLibrary.h"

#include <dlfcn.h>

namespace kelvo {

LateLibrary::LateLibrary(const char* fileName) : handle_(::dlopen(fileName, RTLD_LAZY | RTLD_LOCAL)) {}

void* LateLibrary::address(const char* name) {
    void* const found = handle_ ? ::dlsym(handle_, name) : nullptr;
    isComplete_ = isComplete_ && found;
    return found;
}

} // namespace kelvo
