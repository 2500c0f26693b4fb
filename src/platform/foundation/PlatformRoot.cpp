#include "platform/foundation/PlatformRoot.h"

#include "platform/foundation/NSFileManager.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

// The first is of every root.
constexpr std::string_view foldersBelowRoot[] = {"/System/Library", "/Library", "/Applications", "/Developer",
                                                 "/usr/bin"};

struct Root {
    std::string folder;
    std::span<const std::string_view> placesBelow;
};

Root& platformRoot() {
    static Root root;
    return root;
}

bool isInFolder(std::string_view path, std::string_view folder) {
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

void setPlatformRoot(std::string root, PlatformPlaces places) {
    std::span<const std::string_view> below = foldersBelowRoot;
    if (places == PlatformPlaces::systemLibrary)
        below = below.first(1);
    if (root.empty())
        below = {};
    platformRoot() = {std::move(root), below};
}

std::optional<std::string> placeOfPath(const NSString& path) {
    auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
    const Root& root = platformRoot();
    if (bytes && std::ranges::any_of(root.placesBelow,
                                     [&](std::string_view folder) { return isInFolder(*bytes, folder); }))
        bytes->insert(0, root.folder);
    return bytes;
}

} // namespace kelvo
