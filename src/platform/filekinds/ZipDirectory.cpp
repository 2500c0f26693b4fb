#include "platform/filekinds/ZipDirectory.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t endRecordLength = 22;
constexpr std::size_t longestComment = 0xFFFF;
constexpr std::size_t entryLength = 46;
constexpr std::size_t localHeaderLength = 30;
/// Stands where the place of the directory would, when that needs more than four bytes.
constexpr std::uint32_t placeOfLargeFile = 0xFFFFFFFF;
/// Names that say what a package is are among the first; the others are not needed.
constexpr std::size_t mostDirectoryBytes = 4 << 20;

/// Little-endian, of two or four bytes that the caller knows to be there.
std::uint32_t number(std::string_view bytes, std::size_t place, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[place + index]);
    return value;
}

/// What stands between the place that the end record names and the end record itself. Absent when that is not there.
std::optional<std::string> directoryOf(const FileContents& contents) {
    const std::uint64_t length = contents.length();
    const std::uint64_t searched = std::min<std::uint64_t>(length, endRecordLength + longestComment);
    const std::string ending = contents.bytes(length - searched, static_cast<std::size_t>(searched));
    const std::size_t record = ending.rfind("PK\x05\x06"sv);
    if (record == std::string::npos || ending.size() - record < endRecordLength)
        return std::nullopt;
    const std::uint64_t end = length - searched + record;
    if (number(ending, record + 16, 4) == placeOfLargeFile)
        return "";
    // Where other bytes were put before the file, the place that is named is too early by as many.
    for (const std::uint64_t start :
         {std::uint64_t{number(ending, record + 16, 4)}, end - number(ending, record + 12, 4)}) {
        if (start > end)
            continue;
        std::string directory = contents.bytes(
            start, static_cast<std::size_t>(std::min<std::uint64_t>(end - start, mostDirectoryBytes)));
        if (directory.empty() || directory.starts_with("PK\x01\x02"sv))
            return directory;
    }
    return std::nullopt;
}

} // namespace

ZipDirectory::ZipDirectory(const FileContents& contents) : contents_(contents) {
    auto directory = directoryOf(contents);
    isDamaged_ = !directory;
    directory_ = std::move(directory).value_or("");
    std::string_view rest = directory_;
    while (rest.size() >= entryLength && rest.starts_with("PK\x01\x02"sv)) {
        const std::size_t nameLength = number(rest, 28, 2);
        const std::size_t length = entryLength + nameLength + number(rest, 30, 2) + number(rest, 32, 2);
        if (rest.size() < length)
            return;
        entries_.push_back({rest.substr(entryLength, nameLength), number(rest, 10, 2), number(rest, 24, 4),
                            number(rest, 42, 4)});
        rest.remove_prefix(length);
    }
}

bool ZipDirectory::hasEntry(std::string_view name) const {
    return std::ranges::find(entries_, name, &Entry::name) != entries_.end();
}

bool ZipDirectory::hasEntryIn(std::string_view folder) const {
    return std::ranges::any_of(entries_, [&](const Entry& entry) { return entry.name.starts_with(folder); });
}

std::string ZipDirectory::storedContents(std::string_view name, std::size_t mostBytes) const {
    const auto entry = std::ranges::find(entries_, name, &Entry::name);
    if (entry == entries_.end() || entry->method != 0)
        return {};
    const std::string header = contents_.bytes(entry->headerOffset, localHeaderLength);
    if (header.size() < localHeaderLength)
        return {};
    const std::uint64_t start = std::uint64_t{entry->headerOffset} + localHeaderLength +
                                number(header, 26, 2) + number(header, 28, 2);
    return contents_.bytes(start, std::min<std::size_t>(entry->sizeInBytes, mostBytes));
}

} // namespace kelvo
