#include "platform/appkit/documents/engine/FrozenWordFields.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::documentengine {
namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t firstSpecialSector = 0xFFFFFFFA;

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

/// A file of streams in sectors, as far as it takes to find a stream by its name.
class CompoundFile {
public:
    explicit CompoundFile(std::string& bytes) : bytes_(bytes) {
        if (bytes.size() < headerLength || !bytes.starts_with("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv))
            return;
        const std::uint32_t shift = number(30, 2);
        if (shift != 9 && shift != 12)
            return;
        sectorLength_ = std::size_t{1} << shift;
        readTable();
        const auto directory = sectorsFrom(number(48, 4), table_);
        for (const std::uint32_t sector : directory)
            for (std::size_t entry = 0; entry < sectorLength_; entry += entryLength)
                entries_.push_back(placeOf(sector) + entry);
        if (entries_.empty())
            return;
        for (const std::uint32_t sector : sectorsFrom(number(60, 4), table_))
            appendNumbers(sector, sectorLength_ / 4, smallTable_);
        smallSectors_ = placesOf(sectorsFrom(number(entries_[0] + 116, 4), table_));
    }

    /// The name in UTF-16.
    std::optional<Stream> streamNamed(std::string_view name) const {
        for (const std::size_t entry : entries_) {
            if (number(entry + 64, 2) != name.size() + 2 || bytes_.compare(entry, name.size(), name) != 0)
                continue;
            Stream stream;
            stream.length = number(entry + 120, 4);
            const std::uint32_t first = number(entry + 116, 4);
            if (stream.length >= number(56, 4)) {
                stream.sectorLength = sectorLength_;
                stream.sectors = placesOf(sectorsFrom(first, table_));
            } else {
                stream.sectorLength = smallSectorLength;
                const std::size_t perSector = sectorLength_ / smallSectorLength;
                for (const std::uint32_t small : sectorsFrom(first, smallTable_)) {
                    if (small / perSector >= smallSectors_.size())
                        break;
                    stream.sectors.push_back(smallSectors_[small / perSector] +
                                             small % perSector * smallSectorLength);
                }
            }
            return stream;
        }
        return std::nullopt;
    }

    /// Little-endian.
    std::optional<std::uint32_t> number(const Stream& stream, std::size_t offset, std::size_t count) const {
        std::uint32_t value = 0;
        for (std::size_t index = count; index-- > 0;) {
            const auto place = stream.place(offset + index);
            if (!place)
                return std::nullopt;
            value = value << 8 | static_cast<unsigned char>(bytes_[*place]);
        }
        return value;
    }

private:
    static constexpr std::size_t headerLength = 512;
    static constexpr std::size_t entryLength = 128;
    static constexpr std::size_t smallSectorLength = 64;
    static constexpr std::size_t tableSectorsInHeader = 109;

    std::uint32_t number(std::size_t place, std::size_t count) const {
        std::uint32_t value = 0;
        for (std::size_t index = count; index-- > 0;)
            value = value << 8 | static_cast<unsigned char>(bytes_[place + index]);
        return value;
    }
    std::size_t placeOf(std::uint32_t sector) const { return (std::size_t{sector} + 1) * sectorLength_; }
    bool isWhole(std::uint32_t sector) const {
        return sector < firstSpecialSector && placeOf(sector) + sectorLength_ <= bytes_.size();
    }
    void appendNumbers(std::uint32_t sector, std::size_t count, std::vector<std::uint32_t>& numbers) const {
        for (std::size_t index = 0; index < count; ++index)
            numbers.push_back(number(placeOf(sector) + 4 * index, 4));
    }

    /// Which sector follows which. Where the sectors of that table are stands in the header, and from there
    /// on in a chain of sectors.
    void readTable() {
        std::vector<std::uint32_t> places;
        for (std::size_t index = 0; index < tableSectorsInHeader; ++index)
            places.push_back(number(76 + 4 * index, 4));
        const std::size_t mostSectors = bytes_.size() / sectorLength_;
        std::uint32_t more = number(68, 4);
        for (std::size_t count = 0; count < mostSectors && isWhole(more); ++count) {
            appendNumbers(more, sectorLength_ / 4, places);
            more = places.back();
            places.pop_back();
        }
        for (const std::uint32_t sector : places) {
            if (isWhole(sector) && table_.size() < mostSectors)
                appendNumbers(sector, sectorLength_ / 4, table_);
        }
    }

    /// A chain that leads nowhere, or in a circle, ends there.
    std::vector<std::uint32_t> sectorsFrom(std::uint32_t sector,
                                           const std::vector<std::uint32_t>& table) const {
        std::vector<std::uint32_t> chain;
        const bool isSmall = &table == &smallTable_;
        while (sector < table.size() && chain.size() < table.size() && (isSmall || isWhole(sector))) {
            chain.push_back(sector);
            sector = table[sector];
        }
        return chain;
    }
    std::vector<std::size_t> placesOf(const std::vector<std::uint32_t>& sectors) const {
        std::vector<std::size_t> places;
        places.reserve(sectors.size());
        for (const std::uint32_t sector : sectors)
            places.push_back(placeOf(sector));
        return places;
    }

    std::string& bytes_;
    std::size_t sectorLength_ = 0;
    std::vector<std::uint32_t> table_;
    std::vector<std::uint32_t> smallTable_;
    std::vector<std::size_t> entries_;
    std::vector<std::size_t> smallSectors_;
};

// In the first stream: what it is, of which version, which of two streams has the tables, and where in it are
// those of the fields in the text, headers, footnotes, comments, endnotes, and text boxes of both kinds.
constexpr std::uint32_t signature = 0xA5EC;
constexpr std::uint32_t firstKnownVersion = 105;
constexpr std::uint32_t secondTableFlag = 0x200;
constexpr std::array fieldTables{0x11A, 0x122, 0x12A, 0x132, 0x21A, 0x262, 0x272};

constexpr std::uint32_t beginOfField = 0x13;
constexpr std::uint32_t fileNameField = 29;
/// Which nobody computes.
constexpr char quoteField = 35;

} // namespace

void freezeWordFields(std::string& document) {
    const CompoundFile file(document);
    const auto text = file.streamNamed("W\0o\0r\0d\0D\0o\0c\0u\0m\0e\0n\0t\0"sv);
    if (!text || file.number(*text, 0, 2) != signature ||
        file.number(*text, 2, 2).value_or(0) < firstKnownVersion)
        return;
    const bool isSecond = (file.number(*text, 10, 2).value_or(0) & secondTableFlag) != 0;
    const auto tables = file.streamNamed(isSecond ? "1\0T\0a\0b\0l\0e\0"sv : "0\0T\0a\0b\0l\0e\0"sv);
    if (!tables)
        return;
    for (const int table : fieldTables) {
        const auto start = file.number(*text, static_cast<std::size_t>(table), 4);
        const auto length = file.number(*text, static_cast<std::size_t>(table) + 4, 4);
        if (!start || !length || *length < 4)
            continue;
        // Positions of four bytes, one more than there are marks of two.
        const std::size_t count = std::min<std::size_t>(*length, tables->length) / 6;
        const std::size_t marks = std::size_t{*start} + 4 * (count + 1);
        for (std::size_t index = 0; index < count; ++index) {
            const auto mark = file.number(*tables, marks + 2 * index, 2);
            if (mark && (*mark & 0x1F) == beginOfField && *mark >> 8 == fileNameField)
                document[*tables->place(marks + 2 * index + 1)] = quoteField;
        }
    }
}

} // namespace kelvo::documentengine
