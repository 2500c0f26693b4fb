#include "platform/appkit/documents/engine/ZipEntries.h"

#include <zlib.h>

#include <utility>

namespace kelvo::documentengine {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t entryLength = 46;
constexpr std::size_t localHeaderLength = 30;
constexpr std::size_t mostEntries = 65535;
constexpr std::uint32_t stored = 0;
constexpr std::uint32_t deflated = 8;

} // namespace

std::uint32_t number(std::string_view bytes, std::size_t place, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[place + index]);
    return value;
}

std::optional<std::vector<ZipEntry>> entriesOfZip(std::string_view zip) {
    const std::size_t end = zip.rfind("PK\x05\x06"sv);
    if (end == std::string_view::npos || zip.size() - end < endRecordLengthOfZip)
        return std::nullopt;
    std::vector<ZipEntry> entries;
    std::size_t place = number(zip, end + 16, 4);
    while (place <= end && end - place >= entryLength && zip.substr(place, 4) == "PK\x01\x02"sv) {
        ZipEntry entry;
        const std::size_t nameLength = number(zip, place + 28, 2);
        const std::size_t length =
            entryLength + nameLength + number(zip, place + 30, 2) + number(zip, place + 32, 2);
        if (end - place < length || entries.size() == mostEntries)
            return std::nullopt;
        entry.record = zip.substr(place, length);
        entry.name = zip.substr(place + entryLength, nameLength);
        const std::size_t header = number(zip, place + 42, 4);
        const std::size_t size = number(zip, place + 20, 4);
        if (header > zip.size() || zip.size() - header < localHeaderLength ||
            zip.substr(header, 4) != "PK\x03\x04"sv)
            return std::nullopt;
        const std::size_t start =
            header + localHeaderLength + number(zip, header + 26, 2) + number(zip, header + 28, 2);
        if (start > zip.size() || zip.size() - start < size)
            return std::nullopt;
        entry.data = zip.substr(start, size);
        entries.push_back(std::move(entry));
        place += length;
    }
    return entries;
}

std::optional<std::string> contentsOf(const ZipEntry& entry) {
    if (entry.isEncrypted())
        return std::nullopt;
    if (entry.method() == stored)
        return std::string(entry.data);
    if (entry.method() != deflated)
        return std::nullopt;
    std::string contents(entry.length(), '\0');
    z_stream stream{};
    // Without a head of zlib's own.
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return std::nullopt;
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(entry.data.data()));
    stream.avail_in = static_cast<uInt>(entry.data.size());
    stream.next_out = reinterpret_cast<Bytef*>(contents.data());
    stream.avail_out = static_cast<uInt>(contents.size());
    const int result = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    if (result != Z_STREAM_END || stream.avail_out != 0)
        return std::nullopt;
    return contents;
}

} // namespace kelvo::documentengine
