#include "platform/appkit/documents/ZipDirectory.h"

#include <algorithm>
#include <cstddef>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t endRecordLength = 22;
constexpr std::size_t longestComment = 0xFFFF;
constexpr std::size_t entryLength = 46;
constexpr std::size_t localHeaderLength = 30;
/// Names that say what a package is are among the first; the others are not needed.
constexpr std::size_t mostEntries = 65535;

/// Little-endian, of two or four bytes that the caller knows to be there.
std::uint32_t number(std::string_view bytes, std::size_t place, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[place + index]);
    return value;
}

/// The place of the record that ends a zip file; absent as npos.
std::size_t endRecord(std::string_view bytes) {
    const std::size_t searched = std::min(bytes.size(), endRecordLength + longestComment);
    const std::size_t place = bytes.substr(bytes.size() - searched).rfind("PK\x05\x06"sv);
    const std::size_t found = place == std::string_view::npos ? place : bytes.size() - searched + place;
    return found == std::string_view::npos || bytes.size() - found < endRecordLength ? std::string_view::npos
                                                                                     : found;
}

} // namespace

ZipDirectory::ZipDirectory(std::string_view bytes) : bytes_(bytes) {
    const std::size_t end = endRecord(bytes);
    if (end == std::string_view::npos)
        return;
    std::size_t place = number(bytes, end + 16, 4);
    while (entries_.size() < mostEntries && place <= end && end - place >= entryLength &&
           bytes.substr(place, 4) == "PK\x01\x02"sv) {
        const std::size_t nameLength = number(bytes, place + 28, 2);
        const std::size_t length =
            entryLength + nameLength + number(bytes, place + 30, 2) + number(bytes, place + 32, 2);
        if (end - place < length)
            return;
        entries_.push_back({bytes.substr(place + entryLength, nameLength), number(bytes, place + 10, 2),
                            number(bytes, place + 24, 4), number(bytes, place + 42, 4)});
        place += length;
    }
}

bool ZipDirectory::hasEntry(std::string_view name) const {
    return std::ranges::find(entries_, name, &Entry::name) != entries_.end();
}

bool ZipDirectory::hasEntryIn(std::string_view folder) const {
    return std::ranges::any_of(entries_, [&](const Entry& entry) { return entry.name.starts_with(folder); });
}

std::string_view ZipDirectory::storedContents(std::string_view name) const {
    const auto entry = std::ranges::find(entries_, name, &Entry::name);
    if (entry == entries_.end() || entry->method != 0)
        return {};
    const std::size_t header = entry->headerOffset;
    if (header > bytes_.size() || bytes_.size() - header < localHeaderLength)
        return {};
    const std::size_t start =
        header + localHeaderLength + number(bytes_, header + 26, 2) + number(bytes_, header + 28, 2);
    if (start > bytes_.size() || bytes_.size() - start < entry->sizeInBytes)
        return {};
    return bytes_.substr(start, entry->sizeInBytes);
}

} // namespace kelvo
