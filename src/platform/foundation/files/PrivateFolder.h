#pragma once

#include "platform/foundation/FileIO.h"

#include <climits>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

/// A folder for temporary files, of mode 0700, that goes with all it holds when this object does. When one is
/// made, those of the same name that killed processes have left in the same place go; never one that its
/// owner, or another process that said so (openFolderInUse), still uses.
class PrivateFolder {
public:
    /// Nothing is made yet. `name` is how its name begins. It is made in the first of `parents` (absolute
    /// paths in file-system bytes; others are passed over) in which that can be done with a path of at most
    /// `longestPath` bytes; without any, in NSTemporaryDirectory.
    explicit PrivateFolder(std::string name, std::vector<std::string> parents = {},
                           std::size_t longestPath = PATH_MAX - 1)
        : name_(std::move(name)), parents_(std::move(parents)), longestPath_(longestPath) {}
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder() { remove(); }

    /// In file-system bytes; the folder is made at the first call. Empty when it cannot be made.
    const std::string& path();
    /// The next call of path() makes another.
    void remove() noexcept;

private:
    bool makeIn(std::string parent);

    std::string name_;
    std::vector<std::string> parents_;
    std::size_t longestPath_;
    std::string path_;
    FileDescriptor use_;
};

} // namespace kelvo
