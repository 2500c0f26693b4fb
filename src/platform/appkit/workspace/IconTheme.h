#pragma once

#include <string>
#include <vector>

namespace kelvo {

/// An icon in one size.
struct IconFile {
    std::string path;
    /// In points of each side; what can be drawn at any size has that at which it was meant to be.
    int size = 0;

    friend bool operator==(const IconFile&, const IconFile&) = default;
};

/// Where the icons of desktops stand: folders in file-system bytes, those of the user first.
std::vector<std::string> foldersOfIconThemes();
/// The theme that the user has chosen for GTK's programs, else "Adwaita".
std::string nameOfIconTheme();

/// The files of the first of the icons that the theme has, or a theme that it inherits from ("hicolor" at the end), as
/// freedesktop.org has laid down for icon themes: PNG and SVG, one for each size, the smallest first. Empty when there is
/// none. An icon by a better name in a theme that is inherited from comes after all names in the theme itself.
std::vector<IconFile> iconFiles(const std::vector<std::string>& folders, const std::string& theme,
                                const std::vector<std::string>& names);

} // namespace kelvo
