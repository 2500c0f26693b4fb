#pragma once

#include <string>
#include <vector>

namespace kelvo {

struct LandlockRules {
    /// Each file, or folder with all below it.
    std::vector<std::string> readable;
    /// Whether what is readable may be started as a program as well.
    bool readableMayBeStarted = false;
    /// Files and devices to be written, none to be made.
    std::vector<std::string> rewritable;
    /// Folders in which things may be made, sockets too.
    std::vector<std::string> writable;
    /// Whether TCP, sockets without a path and signals are left alone.
    bool areOfFilesAlone = false;
};

/// The version that the kernel has; 0 when it has none or it is switched off.
int versionOfLandlock();

/// Keeps the calling thread, and those that it starts from now on, from all files that no rule names, from TCP,
/// from sockets without a path that others have bound and from signals to others, as far as the version goes. No
/// new privileges must have been renounced before. False when the kernel refuses.
bool restrictByLandlock(const LandlockRules& rules, int version);

} // namespace kelvo
