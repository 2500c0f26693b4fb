#include "platform/webkit/GMimeLibrary.h"

#include <dlfcn.h>

namespace kelvo {
namespace {

template <typename Function>
bool find(void* library, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(dlsym(library, name));
    return function != nullptr;
}

const GMimeLibrary* load() {
    static GMimeLibrary functions;
    // The name of the interface of every GMime 3, not of one release.
    void* const library = dlopen("libgmime-3.0.so.0", RTLD_NOW | RTLD_LOCAL);
    if (!library)
        return nullptr;
    bool isComplete = true;
#define KELVO_FIND(function) isComplete = find(library, #function, functions.function) && isComplete
    KELVO_GMIME_FUNCTIONS(KELVO_FIND);
#undef KELVO_FIND
    if (!isComplete)
        return nullptr;
    functions.g_mime_init();
    return &functions;
}

} // namespace

const GMimeLibrary* GMimeLibrary::loaded() {
    static const GMimeLibrary* const library = load();
    return library;
}

} // namespace kelvo
