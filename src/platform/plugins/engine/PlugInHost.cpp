#include "platform/plugins/engine/PlugInHost.h"

#include "platform/foundation/NSException.h"

#include <dlfcn.h>

namespace kelvo {
namespace {

/// Objects begin with a pointer to their functions.
const MDImporterInterface& functionsOf(void* object) {
    return **static_cast<const MDImporterInterface**>(object);
}

[[noreturn]] void refuse(const char* what) {
    throw NSException(NSInvalidArgumentException, NSString::stringByRepairingUTF8String(what));
}

/// Why the loader failed, which says it in terms of paths.
std::string lastErrorOfLoader() {
    const char* const error = ::dlerror();
    return error ? error : "it cannot be loaded";
}

} // namespace

std::uint64_t PlugInHost::keep(void* object) {
    if (!object)
        return 0;
    objects_[++lastNumber_] = object;
    return lastNumber_;
}

void* PlugInHost::object(std::uint64_t number) const {
    const auto found = objects_.find(number);
    if (found == objects_.end())
        refuse("There is no such object.");
    return found->second;
}

std::uint64_t PlugInHost::create(const std::string& library, const std::string& function,
                                 const MDUUID& type) {
    void*& handle = libraries_[library];
    if (!handle)
        handle = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        refuse(lastErrorOfLoader().c_str());
    // Functions and data have pointers of one size on this system (POSIX, dlsym).
    auto* const factory = reinterpret_cast<MDImporterFactory*>(::dlsym(handle, function.c_str()));
    if (!factory)
        refuse(lastErrorOfLoader().c_str());
    return keep(factory(nullptr, &type));
}

std::uint64_t PlugInHost::query(std::uint64_t number, const MDUUID& interface) {
    void* const asked = object(number);
    void* result = nullptr;
    return functionsOf(asked).QueryInterface(asked, interface, &result) >= 0 ? keep(result) : 0;
}

void PlugInHost::release(std::uint64_t number) {
    const auto found = objects_.find(number);
    if (found == objects_.end())
        return;
    void* const released = found->second;
    objects_.erase(found);
    functionsOf(released).Release(released);
}

bool PlugInHost::import(std::uint64_t number, PlugInAttributes& attributes, const std::string& contentType,
                        const std::string& path) const {
    void* const importer = object(number);
    return functionsOf(importer).ImporterImportData(importer, &attributes, contentType.c_str(),
                                                    path.c_str()) != 0;
}

} // namespace kelvo
