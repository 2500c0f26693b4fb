#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo::documentengine {

/// A file of streams in sectors, as far as it takes to find a stream by its name. Any bytes will do: what is no such file,
/// or leads nowhere, has no streams, or shorter ones than it says.
class CompoundFile {
public:
    /// The sectors of one stream within the file, as places in its bytes.
    struct Stream {
        std::vector<std::size_t> sectors;
        std::size_t sectorLength = 0;
        std::size_t length = 0;

        /// Where the byte stands in the file.
        std::optional<std::size_t> place(std::size_t offset) const {
            if (offset >= length || offset / sectorLength >= sectors.size())
                return std::nullopt;
            return sectors[offset / sectorLength] + offset % sectorLength;
        }
    };

    /// The bytes must outlive this object, where they are.
    explicit CompoundFile(std::string_view bytes);

    /// The name in UTF-16.
    std::optional<Stream> streamNamed(std::string_view name) const;
    /// Little-endian.
    std::optional<std::uint32_t> number(const Stream& stream, std::size_t offset, std::size_t count) const;

private:
    std::uint32_t number(std::size_t place, std::size_t count) const;
    std::size_t placeOf(std::uint32_t sector) const { return (std::size_t{sector} + 1) * sectorLength_; }
    bool isWhole(std::uint32_t sector) const;
    void appendNumbers(std::uint32_t sector, std::size_t count, std::vector<std::uint32_t>& numbers) const;
    void readTable();
    std::vector<std::uint32_t> sectorsFrom(std::uint32_t sector,
                                           const std::vector<std::uint32_t>& table) const;
    std::vector<std::size_t> placesOf(const std::vector<std::uint32_t>& sectors) const;

    std::string_view bytes_;
    std::size_t sectorLength_ = 0;
    std::vector<std::uint32_t> table_;
    std::vector<std::uint32_t> smallTable_;
    std::vector<std::size_t> entries_;
    std::vector<std::size_t> smallSectors_;
};

/// The stream with the text of a document of Word, the name in UTF-16, and what its first two bytes are.
inline constexpr std::string_view nameOfWordText{"W\0o\0r\0d\0D\0o\0c\0u\0m\0e\0n\0t\0", 24};
inline constexpr std::uint32_t signatureOfWordText = 0xA5EC;

} // namespace kelvo::documentengine
