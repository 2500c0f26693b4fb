#include "importers/support/PartPath.h"

#include <algorithm>
#include <vector>

namespace kelvo::importers {

std::string pathOfReference(std::string_view part, std::string_view reference) {
    std::vector<std::string_view> names;
    const auto append = [&](std::string_view path) {
        while (!path.empty()) {
            const std::string_view name = path.substr(0, path.find('/'));
            if (name == "..") {
                if (!names.empty())
                    names.pop_back();
            } else if (!name.empty() && name != ".") {
                names.push_back(name);
            }
            path.remove_prefix(std::min(path.size(), name.size() + 1));
        }
    };
    if (const std::size_t slash = part.rfind('/');
        slash != std::string_view::npos && !reference.starts_with('/'))
        append(part.substr(0, slash));
    append(reference);
    std::string path;
    for (const std::string_view name : names)
        path.append(path.empty() ? "" : "/").append(name);
    return path;
}

} // namespace kelvo::importers
