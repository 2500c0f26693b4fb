#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::documentengine {

inline constexpr std::size_t endRecordLengthOfZip = 22;

/// Little-endian, of bytes that the caller knows to be there.
std::uint32_t number(std::string_view bytes, std::size_t place, std::size_t count);

struct ZipEntry {
    /// As the directory has it.
    std::string record;
    std::string_view name;
    /// As it stands in the file.
    std::string_view data;

    std::uint32_t flags() const { return number(record, 8, 2); }
    std::uint32_t method() const { return number(record, 10, 2); }
    std::uint32_t checksum() const { return number(record, 16, 4); }
    /// Not compressed.
    std::size_t length() const { return number(record, 24, 4); }
    bool isEncrypted() const { return (flags() & 1) != 0; }
};

/// Nothing when the bytes, which must outlive the entries, are no zip file, or any entry does not stand in them whole.
std::optional<std::vector<ZipEntry>> entriesOfZip(std::string_view zip);

/// Nothing when it is encrypted, not compressed in a way that documents use, or not of the length that it says.
std::optional<std::string> contentsOf(const ZipEntry& entry);

} // namespace kelvo::documentengine
