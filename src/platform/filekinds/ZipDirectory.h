#pragma once

#include "platform/filekinds/FileContents.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// The names in the central directory of a zip file, which tell what kind of package it is. Nothing is
/// decompressed. What is no zip file, or has a directory that does not fit it, gives an empty one, and so does a
/// zip file of more than 4 GiB; of a directory of more than 4 MiB only what fits into that is known.
class ZipDirectory {
public:
    /// The contents must outlive this object.
    explicit ZipDirectory(const FileContents& contents);

    /// Whether there is no directory where one must be.
    bool isDamaged() const noexcept { return isDamaged_; }
    bool hasEntry(std::string_view name) const;
    /// Whether any name begins with that.
    bool hasEntryIn(std::string_view folder) const;
    /// The first `mostBytes` of an entry that is not compressed; empty when it is, and when there is none.
    /// Fewer where the file ends.
    std::string storedContents(std::string_view name, std::size_t mostBytes) const;

private:
    struct Entry {
        std::string_view name;
        std::uint32_t method;
        std::uint32_t sizeInBytes;
        std::uint32_t headerOffset;
    };

    const FileContents& contents_;
    bool isDamaged_ = false;
    std::string directory_;
    std::vector<Entry> entries_;
};

} // namespace kelvo
