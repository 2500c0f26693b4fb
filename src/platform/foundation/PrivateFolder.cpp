#include "platform/foundation/PrivateFolder.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace kelvo {

const std::string& PrivateFolder::path() {
    if (path_.empty()) {
        const auto place =
            NSFileManager::defaultManager().fileSystemRepresentationWithPath(NSTemporaryDirectory());
        std::string pattern = place.value_or("/tmp/") + name_ + "-XXXXXX";
        if (::mkdtemp(pattern.data()))
            path_ = std::move(pattern);
    }
    return path_;
}

void PrivateFolder::remove() noexcept {
    std::error_code ignored;
    if (!path_.empty())
        std::filesystem::remove_all(path_, ignored);
    path_.clear();
}

} // namespace kelvo
