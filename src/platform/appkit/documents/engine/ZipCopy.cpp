#include "platform/appkit/documents/engine/ZipCopy.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo::documentengine {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t endRecordLength = 22;
constexpr std::size_t entryLength = 46;
constexpr std::size_t localHeaderLength = 30;
constexpr std::size_t mostEntries = 65535;
constexpr std::uint32_t stored = 0;
constexpr std::uint32_t deflated = 8;
constexpr std::uint32_t isEncryptedFlag = 1;
constexpr std::uint32_t hasDescriptorFlag = 8;
/// All parts of a document that are looked at, together. What is beyond is left to the office suite.
constexpr std::size_t mostInflatedBytes = std::size_t{512} << 20;

std::uint32_t number(std::string_view bytes, std::size_t place, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[place + index]);
    return value;
}

void setNumber(std::string& bytes, std::size_t place, std::size_t value, std::size_t count) {
    for (std::size_t index = 0; index < count; ++index)
        bytes[place + index] = static_cast<char>(value >> (8 * index));
}

struct Entry {
    /// As the directory has it.
    std::string record;
    std::string_view name;
    std::string_view data;
    std::optional<std::string> changed;

    std::uint32_t flags() const { return number(record, 8, 2); }
    std::uint32_t method() const { return number(record, 10, 2); }
    std::size_t length() const { return number(record, 24, 4); }
};

/// Nothing when the bytes are no zip file, or any entry does not stand in them whole.
std::optional<std::vector<Entry>> entriesOf(std::string_view zip) {
    const std::size_t end = zip.rfind("PK\x05\x06"sv);
    if (end == std::string_view::npos || zip.size() - end < endRecordLength)
        return std::nullopt;
    std::vector<Entry> entries;
    std::size_t place = number(zip, end + 16, 4);
    while (place <= end && end - place >= entryLength && zip.substr(place, 4) == "PK\x01\x02"sv) {
        Entry entry;
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

/// Nothing when it is not compressed in a way that documents use, or not what it says.
std::optional<std::string> contentsOf(const Entry& entry) {
    if (entry.flags() & isEncryptedFlag)
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

bool changeEntries(std::vector<Entry>& entries, bool (*change)(std::string& contents)) {
    bool isChanged = false;
    std::size_t left = mostInflatedBytes;
    for (Entry& entry : entries) {
        if (!entry.name.ends_with(".xml") || entry.length() > left)
            continue;
        left -= entry.length();
        auto contents = contentsOf(entry);
        if (contents && change(*contents)) {
            entry.changed = std::move(contents);
            isChanged = true;
        }
    }
    return isChanged;
}

void putChangeInto(Entry& entry) {
    const std::string& contents = *entry.changed;
    const auto sum =
        crc32(0, reinterpret_cast<const Bytef*>(contents.data()), static_cast<uInt>(contents.size()));
    entry.data = contents;
    setNumber(entry.record, 10, stored, 2);
    setNumber(entry.record, 16, sum, 4);
    setNumber(entry.record, 20, contents.size(), 4);
    setNumber(entry.record, 24, contents.size(), 4);
}

} // namespace

void changeXMLInZip(std::string& zip, bool (*change)(std::string& contents)) {
    auto entries = entriesOf(zip);
    if (!entries || !changeEntries(*entries, change))
        return;
    std::string copy;
    std::string directory;
    for (Entry& entry : *entries) {
        if (entry.changed)
            putChangeInto(entry);
        setNumber(entry.record, 8, entry.flags() & ~hasDescriptorFlag, 2);
        setNumber(entry.record, 42, copy.size(), 4);
        directory += entry.record;
        // The same facts in the same order, of which the name alone is of any length.
        std::string header = "PK\x03\x04" + entry.record.substr(6, 26);
        setNumber(header, 28, 0, 2);
        copy.append(header).append(entry.name).append(entry.data);
    }
    std::string end = "PK\x05\x06" + std::string(endRecordLength - 4, '\0');
    for (const std::size_t place : {8, 10})
        setNumber(end, place, entries->size(), 2);
    setNumber(end, 12, directory.size(), 4);
    setNumber(end, 16, copy.size(), 4);
    copy.append(directory).append(end);
    if (copy.size() <= std::numeric_limits<std::uint32_t>::max())
        zip = std::move(copy);
}

} // namespace kelvo::documentengine
