#pragma once

#include "platform/foundation/NSURL.h"
#include "platform/foundation/files/NSBundle.h"
#include "platform/plugins/CFUUID.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// A bundle as a plug-in: what its information says of its factories. None of its code is loaded for that. Shared by
/// reference; default-constructed it is nil. What has been found out about a bundle is kept as long as its information
/// property list stays the same file.
class CFPlugIn {
public:
    CFPlugIn() noexcept = default;
    CFPlugIn(std::nullptr_t) noexcept {}

    bool isNil() const noexcept { return !facts_; }
    /// Nil for nil.
    NSBundle bundle() const { return facts_ ? facts_->bundle : NSBundle(); }
    /// Where the library with the functions is, in file-system bytes; absent when there is none.
    std::optional<std::string> library() const { return facts_ ? facts_->library : std::nullopt; }
    /// Whether the bundle really lies in the system's own folder of importers.
    bool isOfSystem() const { return facts_ && facts_->isOfSystem; }
    /// Of the time that its code has in all.
    double secondsLeft() const;

private:
    friend CFPlugIn CFPlugInCreate(const NSURL& url);
    struct Facts {
        NSBundle bundle;
        std::optional<std::string> library;
        bool isOfSystem = false;
    };
    static std::shared_ptr<const Facts> factsOfBundle(const NSString& path);

    std::shared_ptr<const Facts> facts_;
    std::chrono::steady_clock::time_point creation_ = std::chrono::steady_clock::now();
};

/// The system's own folder of importers, with all links followed; empty when there is none.
std::string systemFolderOfImporters();

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
