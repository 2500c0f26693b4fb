#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace kelvo {

/// The names in the central directory of a zip file, to tell by them what kind of package it is. Nothing is
/// decompressed. Bytes that are no zip file, or whose directory does not fit them, give an empty one.
class ZipDirectory {
public:
    /// The bytes must outlive this object.
    explicit ZipDirectory(std::string_view bytes);

    bool hasEntry(std::string_view name) const;
    /// Whether any name begins with that.
    bool hasEntryIn(std::string_view folder) const;
    /// What an entry holds that is not compressed; empty when it is, and when there is none.
    std::string_view storedContents(std::string_view name) const;

private:
    struct Entry {
        std::string_view name;
        std::uint32_t method;
        std::uint32_t sizeInBytes;
        std::uint32_t headerOffset;
    };

    std::string_view bytes_;
    std::vector<Entry> entries_;
};

} // namespace kelvo
