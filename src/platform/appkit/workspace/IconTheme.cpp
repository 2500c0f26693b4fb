#include "platform/appkit/workspace/IconTheme.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string_view>

namespace kelvo {
namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t mostBytesOfIndex = std::uintmax_t{1} << 20;
constexpr std::size_t mostThemes = 16;

/// Groups of keys, as desktop files have them.
using KeyFile = std::map<std::string, std::map<std::string, std::string>, std::less<>>;

KeyFile readKeyFile(const fs::path& path) {
    KeyFile groups;
    std::error_code error;
    if (!fs::is_regular_file(path, error) || fs::file_size(path, error) > mostBytesOfIndex)
        return groups;
    std::ifstream file(path);
    std::string group;
    for (std::string line; std::getline(file, line);) {
        const std::size_t equals = line.find('=');
        if (line.size() > 2 && line.front() == '[' && line.back() == ']')
            group = line.substr(1, line.size() - 2);
        else if (equals != std::string::npos && line.front() != '#')
            groups[group][line.substr(0, equals)] = line.substr(equals + 1);
    }
    return groups;
}

std::vector<std::string> split(std::string_view list, char separator) {
    std::vector<std::string> items;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(separator), list.size());
        if (end > 0)
            items.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return items;
}

std::string valueIn(const KeyFile& file, std::string_view group, const std::string& key) {
    const auto found = file.find(group);
    if (found == file.end())
        return {};
    const auto value = found->second.find(key);
    return value == found->second.end() ? std::string() : value->second;
}

std::string variableOr(const char* name, std::string otherwise) {
    const char* const value = std::getenv(name);
    return value && *value ? value : std::move(otherwise);
}

std::string home() {
    return variableOr("HOME", "/");
}

/// The theme and those that it inherits from, each once, with what their first index says.
std::vector<std::pair<std::string, KeyFile>> chainOfThemes(const std::vector<std::string>& folders,
                                                           const std::string& first) {
    std::vector<std::pair<std::string, KeyFile>> chain;
    std::vector<std::string> waiting{first};
    std::set<std::string> seen{first, "hicolor"};
    const auto add = [&](const std::string& theme) {
        for (const std::string& folder : folders) {
            KeyFile index = readKeyFile(fs::path(folder) / theme / "index.theme");
            if (index.empty())
                continue;
            for (const std::string& parent : split(valueIn(index, "Icon Theme", "Inherits"), ',')) {
                if (seen.insert(parent).second)
                    waiting.push_back(parent);
            }
            chain.emplace_back(theme, std::move(index));
            return;
        }
    };
    for (std::size_t index = 0; index < waiting.size() && index < mostThemes; ++index)
        add(std::string(waiting[index]));
    add("hicolor");
    return chain;
}

std::vector<IconFile> filesInTheme(const std::vector<std::string>& folders, const std::string& theme,
                                   const KeyFile& index, const std::string& name) {
    std::map<int, IconFile> bySize;
    for (const std::string& place : split(valueIn(index, "Icon Theme", "Directories"), ',')) {
        const std::string sizeText = valueIn(index, place, "Size");
        int size = 0;
        std::from_chars(sizeText.data(), sizeText.data() + sizeText.size(), size);
        if (size <= 0 || bySize.contains(size) || valueIn(index, place, "Scale").find_first_not_of('1') == 0)
            continue;
        for (const std::string& folder : folders) {
            for (const char* extension : {".png", ".svg"}) {
                const fs::path path = fs::path(folder) / theme / place / (name + extension);
                std::error_code error;
                if (!bySize.contains(size) && fs::is_regular_file(path, error))
                    bySize[size] = {path.native(), size};
            }
        }
    }
    std::vector<IconFile> files;
    files.reserve(bySize.size());
    for (auto& [size, file] : bySize)
        files.push_back(std::move(file));
    return files;
}

} // namespace

std::vector<std::string> foldersOfIconThemes() {
    std::vector<std::string> folders{home() + "/.icons",
                                     variableOr("XDG_DATA_HOME", home() + "/.local/share") + "/icons"};
    for (const std::string& data : split(variableOr("XDG_DATA_DIRS", "/usr/local/share:/usr/share"), ':'))
        folders.push_back(data + "/icons");
    return folders;
}

std::string nameOfIconTheme() {
    const fs::path settings = variableOr("XDG_CONFIG_HOME", home() + "/.config");
    for (const char* file : {"gtk-4.0/settings.ini", "gtk-3.0/settings.ini"}) {
        std::string name = valueIn(readKeyFile(settings / file), "Settings", "gtk-icon-theme-name");
        if (!name.empty() && name.find('/') == std::string::npos)
            return name;
    }
    return "Adwaita";
}

std::vector<IconFile> iconFiles(const std::vector<std::string>& folders, const std::string& theme,
                                const std::vector<std::string>& names) {
    for (const auto& [name, index] : chainOfThemes(folders, theme)) {
        for (const std::string& icon : names) {
            std::vector<IconFile> files = filesInTheme(folders, name, index, icon);
            if (!files.empty())
                return files;
        }
    }
    return {};
}

} // namespace kelvo
