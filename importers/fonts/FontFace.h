#pragma once

#include "importers/support/Deadline.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {

/// What a font says of itself, in UTF-8; empty where it says nothing.
struct FontFace {
    std::string fullName;
    std::string family;
    std::string style;
    std::string postScriptName;
    std::string version;
    std::string copyright;
    std::string trademark;
    std::string manufacturer;
    std::string designer;
    std::string description;
    std::string license;
    std::string URL;
    std::int64_t glyphs = 0;
    /// From 1 to 1000, 400 for what is regular; absent when it is not said.
    std::optional<int> weight;
    /// "wght 200–900", of a font that can be varied.
    std::vector<std::string> axes;
    /// Their names in English, those with the most letters first.
    std::vector<std::string> scripts;
};

class FontFile {
public:
    /// The bytes must outlive this object.
    explicit FontFile(std::string_view bytes);
    FontFile(const FontFile&) = delete;
    FontFile& operator=(const FontFile&) = delete;
    ~FontFile();

    /// 0 when it is no font.
    int faceCount() const { return faceCount_; }
    /// Absent when it is damaged.
    std::optional<FontFace> face(int index, const Deadline& deadline) const;

private:
    struct Library;

    std::string_view bytes_;
    std::unique_ptr<Library> library_;
    int faceCount_ = 0;
};

} // namespace kelvo::importers
