#include "platform/foundation/files/PrivateFolder.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/files/Leftovers.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <system_error>

#include <fcntl.h>

namespace kelvo {
namespace {

constexpr std::string_view randomPart = "XXXXXX";
/// New folders may be taken for leftovers before they are marked as in use; so many times another is made.
constexpr int mostAttempts = 8;

std::string temporaryDirectory() {
    return NSFileManager::defaultManager()
        .fileSystemRepresentationWithPath(NSTemporaryDirectory())
        .value_or("/tmp");
}

void removeUnusedFolders(const std::string& parent, const std::string& prefix) {
    const FileDescriptor place(::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!place)
        return;
    forEachLeftover(place.get(), prefix, randomPart.size(), [&](const std::string& name) {
        const FileDescriptor folder(
            ::openat(place.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (folder && isFolderOutOfUse(folder.get()))
            removeEntry(place.get(), name);
    });
}

} // namespace

const std::string& PrivateFolder::path() {
    if (path_.empty()) {
        const std::vector<std::string> own =
            parents_.empty() ? std::vector{temporaryDirectory()} : std::vector<std::string>();
        static_cast<void>(std::ranges::any_of(own.empty() ? parents_ : own,
                                              [this](const std::string& parent) { return makeIn(parent); }));
    }
    return path_;
}

bool PrivateFolder::makeIn(std::string parent) {
    if (!parent.starts_with('/'))
        return false;
    parent.resize(parent.find_last_not_of('/') + 1);
    const std::string prefix = name_ + '-';
    const std::string pattern = parent + '/' + prefix + std::string(randomPart);
    if (pattern.size() > longestPath_)
        return false;
    removeUnusedFolders(parent + '/', prefix);
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        std::string made = pattern;
        if (!::mkdtemp(made.data()))
            return false;
        use_ = openFolderInUse(AT_FDCWD, made);
        if (use_) {
            path_ = std::move(made);
            return true;
        }
        ::rmdir(made.c_str());
    }
    return false;
}

void PrivateFolder::remove() noexcept {
    std::error_code ignored;
    if (!path_.empty())
        std::filesystem::remove_all(path_, ignored);
    path_.clear();
    use_.close();
}

} // namespace kelvo
