#include "platform/appkit/documents/engine/ZipCopy.h"

#include "platform/appkit/documents/engine/ZipEntries.h"

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

constexpr std::uint32_t stored = 0;
constexpr std::uint32_t hasDescriptorFlag = 8;
/// All parts of a document that are looked at, together. What is beyond is left to the office suite.
constexpr std::size_t mostInflatedBytes = std::size_t{512} << 20;

void setNumber(std::string& bytes, std::size_t place, std::size_t value, std::size_t count) {
    for (std::size_t index = 0; index < count; ++index)
        bytes[place + index] = static_cast<char>(value >> (8 * index));
}

struct Entry : ZipEntry {
    std::optional<std::string> changed;
};

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
    auto found = entriesOfZip(zip);
    if (!found)
        return;
    std::vector<Entry> entries;
    entries.reserve(found->size());
    for (ZipEntry& entry : *found)
        entries.push_back({std::move(entry), std::nullopt});
    if (!changeEntries(entries, change))
        return;
    std::string copy;
    std::string directory;
    for (Entry& entry : entries) {
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
    std::string end = "PK\x05\x06" + std::string(endRecordLengthOfZip - 4, '\0');
    for (const std::size_t place : {8, 10})
        setNumber(end, place, entries.size(), 2);
    setNumber(end, 12, directory.size(), 4);
    setNumber(end, 16, copy.size(), 4);
    copy.append(directory).append(end);
    if (copy.size() <= std::numeric_limits<std::uint32_t>::max())
        zip = std::move(copy);
}

} // namespace kelvo::documentengine
