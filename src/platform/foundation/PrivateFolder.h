#pragma once

#include <string>
#include <utility>

namespace kelvo {

/// A folder for temporary files, of mode 0700, that goes with all it holds when this object does.
class PrivateFolder {
public:
    /// Nothing is made yet. `name` is how its name begins.
    explicit PrivateFolder(std::string name) : name_(std::move(name)) {}
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder() { remove(); }

    /// In file-system bytes; the folder is made at the first call. Empty when it cannot be made.
    const std::string& path();
    bool exists() const noexcept { return !path_.empty(); }
    /// The next call of path() makes another.
    void remove() noexcept;

private:
    std::string name_;
    std::string path_;
};

} // namespace kelvo
