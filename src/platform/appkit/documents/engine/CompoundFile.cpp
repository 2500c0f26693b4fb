#include "platform/appkit/documents/engine/CompoundFile.h"

namespace kelvo::documentengine {
namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t firstSpecialSector = 0xFFFFFFFA;
constexpr std::size_t headerLength = 512;
constexpr std::size_t entryLength = 128;
constexpr std::size_t smallSectorLength = 64;
constexpr std::size_t tableSectorsInHeader = 109;

} // namespace

CompoundFile::CompoundFile(std::string_view bytes) : bytes_(bytes) {
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

std::optional<CompoundFile::Stream> CompoundFile::streamNamed(std::string_view name) const {
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

std::optional<std::uint32_t> CompoundFile::number(const Stream& stream, std::size_t offset,
                                                  std::size_t count) const {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;) {
        const auto place = stream.place(offset + index);
        if (!place)
            return std::nullopt;
        value = value << 8 | static_cast<unsigned char>(bytes_[*place]);
    }
    return value;
}

std::uint32_t CompoundFile::number(std::size_t place, std::size_t count) const {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes_[place + index]);
    return value;
}

bool CompoundFile::isWhole(std::uint32_t sector) const {
    return sector < firstSpecialSector && placeOf(sector) + sectorLength_ <= bytes_.size();
}

void CompoundFile::appendNumbers(std::uint32_t sector, std::size_t count,
                                 std::vector<std::uint32_t>& numbers) const {
    for (std::size_t index = 0; index < count; ++index)
        numbers.push_back(number(placeOf(sector) + 4 * index, 4));
}

/// Which sector follows which. Where the sectors of that table are stands in the header, and from there
/// on in a chain of sectors.
void CompoundFile::readTable() {
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
std::vector<std::uint32_t> CompoundFile::sectorsFrom(std::uint32_t sector,
                                                     const std::vector<std::uint32_t>& table) const {
    std::vector<std::uint32_t> chain;
    const bool isSmall = &table == &smallTable_;
    while (sector < table.size() && chain.size() < table.size() && (isSmall || isWhole(sector))) {
        chain.push_back(sector);
        sector = table[sector];
    }
    return chain;
}

std::vector<std::size_t> CompoundFile::placesOf(const std::vector<std::uint32_t>& sectors) const {
    std::vector<std::size_t> places;
    places.reserve(sectors.size());
    for (const std::uint32_t sector : sectors)
        places.push_back(placeOf(sector));
    return places;
}

} // namespace kelvo::documentengine
