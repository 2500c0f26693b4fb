#pragma once

#include "platform/foundation/NSURL.h"
#include "platform/foundation/files/NSBundle.h"
#include "platform/plugins/CFUUID.h"

#include <chrono>
#include <optional>
#include <vector>

namespace kelvo {

/// A bundle as a plug-in: what its information says of its factories. None of its code is loaded for that. Shared by
/// reference; default-constructed it is nil.
class CFPlugIn {
public:
    CFPlugIn() noexcept = default;
    CFPlugIn(std::nullptr_t) noexcept {}

    bool isNil() const noexcept { return bundle_.isNil(); }
    /// Its executablePath is the library with the functions.
    const NSBundle& bundle() const noexcept { return bundle_; }
    /// Of the time that its code has in all.
    double secondsLeft() const;

private:
    friend CFPlugIn CFPlugInCreate(const NSURL& url);
    NSBundle bundle_;
    std::chrono::steady_clock::time_point creation_ = std::chrono::steady_clock::now();
};

/// Nil when the URL names no folder. A bundle that has no factories is a plug-in too.
CFPlugIn CFPlugInCreate(const NSURL& url);

/// The factories of the plug-in for a type ("CFPlugInTypes"), in the order in which they are to be tried, each once;
/// what is no identifier is left out. Absent, which differs from an empty list, when the type has none, or no array.
std::optional<std::vector<CFUUID>> CFPlugInFindFactoriesForPlugInTypeInPlugIn(const CFUUID& type,
                                                                              const CFPlugIn& plugIn);

/// The name of the function that makes the factory's instances ("CFPlugInFactories"). Nil when there is none: the
/// factory then makes no instance.
NSString nameOfFactoryFunction(const CFUUID& factory, const CFPlugIn& plugIn);

} // namespace kelvo
