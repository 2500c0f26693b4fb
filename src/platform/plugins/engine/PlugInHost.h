#pragma once

#include "platform/foundation/Value.h"
#include "platform/plugins/engine/PlugInAttributes.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace kelvo {

/// The objects of plug-ins in this process, by numbers. A library is loaded once, and stays. What plug-ins throw leaves
/// these functions.
class PlugInHost {
public:
    /// The object that the function makes for the type; 0 when it makes none. Throws NSException
    /// (NSInvalidArgumentException) when the library cannot be loaded or has no such function.
    std::uint64_t create(const std::string& library, const std::string& function, const MDUUID& type);
    /// The object that has the interface; 0 when it has not.
    std::uint64_t query(std::uint64_t number, const MDUUID& interface);
    /// The number is not used again. What has no number is left alone.
    void release(std::uint64_t number);
    /// Throws PlugInRaise when the plug-in raises.
    bool import(std::uint64_t number, PlugInAttributes& attributes, const std::string& contentType,
                const std::string& path) const;

private:
    std::uint64_t keep(void* object);
    /// Throws NSException (NSInvalidArgumentException) when the number has no object.
    void* object(std::uint64_t number) const;

    std::map<std::string, void*> libraries_;
    std::map<std::uint64_t, void*> objects_;
    std::uint64_t lastNumber_ = 0;
};

} // namespace kelvo
