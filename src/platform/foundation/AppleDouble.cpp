#include "platform/foundation/AppleDouble.h"

#include "platform/foundation/BigEndian.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

constexpr std::uint32_t magic = 0x00051607, firstVersion = 0x00010000, version = 0x00020000;
constexpr std::size_t countOffset = 24, headerSize = 26, lineSize = 12;
constexpr std::size_t finderInfoSizeInBytes = 32;

constexpr std::size_t endOfHeader(std::size_t entryCount) {
    return headerSize + lineSize * entryCount;
}

void appendLine(std::vector<std::uint8_t>& bytes, AppleDouble::EntryID id, std::size_t offset,
                std::size_t length) {
    appendBigEndian(bytes, static_cast<std::uint32_t>(id), 4);
    appendBigEndian(bytes, offset, 4);
    appendBigEndian(bytes, length, 4);
}

void append(std::vector<std::uint8_t>& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

} // namespace

AppleDouble::AppleDouble(NSData data, std::vector<Entry> entries)
    : data_(std::move(data)), entries_(std::move(entries)) {}

std::optional<AppleDouble> AppleDouble::withData(const NSData& data) {
    if (data.length() < headerSize)
        return std::nullopt;
    const NSData header = data.subdataWithRange({0, headerSize});
    const std::span<const std::uint8_t> bytes = header.bytes();
    const std::uint32_t itsVersion = bigEndian32(bytes, 4);
    const std::size_t count = bigEndian16(bytes, countOffset);
    if (bigEndian32(bytes, 0) != magic || (itsVersion != version && itsVersion != firstVersion) ||
        data.length() < endOfHeader(count))
        return std::nullopt;
    const NSData lines = data.subdataWithRange({headerSize, lineSize * count});
    std::vector<Entry> entries;
    for (std::size_t at = 0; at < lines.length(); at += lineSize)
        entries.push_back({static_cast<EntryID>(bigEndian32(lines.bytes(), at)),
                           bigEndian32(lines.bytes(), at + 4), bigEndian32(lines.bytes(), at + 8)});
    return AppleDouble(data, std::move(entries));
}

NSData AppleDouble::dataWithResourceFork(const NSData& fork) {
    constexpr std::size_t infoOffset = endOfHeader(2);
    constexpr std::size_t forkOffset = infoOffset + finderInfoSizeInBytes;
    if (fork.length() > maximumSizeInBytes - forkOffset)
        return nullptr;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(forkOffset + fork.length());
    appendBigEndian(bytes, magic, 4);
    appendBigEndian(bytes, version, 4);
    bytes.resize(countOffset);
    appendBigEndian(bytes, 2, 2);
    appendLine(bytes, EntryID::finderInfo, infoOffset, finderInfoSizeInBytes);
    appendLine(bytes, EntryID::resourceFork, forkOffset, fork.length());
    bytes.resize(forkOffset);
    append(bytes, fork.bytes());
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

const AppleDouble::Entry* AppleDouble::find(EntryID id) const {
    const auto found = std::ranges::find(entries_, id, &Entry::id);
    return found == entries_.end() ? nullptr : &*found;
}

NSData AppleDouble::entry(EntryID id, std::size_t atMostBytes) const {
    const Entry* const entry = find(id);
    if (!entry || !rangeFits({entry->offset, entry->length}, data_.length()))
        return nullptr;
    return data_.subdataWithRange({entry->offset, std::min(entry->length, atMostBytes)});
}

bool AppleDouble::isWhole() const {
    return std::ranges::all_of(entries_, [this](const Entry& entry) {
        return rangeFits({entry.offset, entry.length}, data_.length()) &&
               (entry.length == 0 || entry.offset >= endOfHeader(entries_.size()));
    });
}

NSData AppleDouble::dataByReplacingResourceFork(const NSData& fork) const {
    if (data_.length() > maximumSizeInBytes || !isWhole())
        return nullptr;
    const Entry* const old = find(EntryID::resourceFork);
    const std::size_t oldHeader = endOfHeader(entries_.size());
    std::size_t start = data_.length(), end = oldHeader;
    for (const Entry& entry : entries_) {
        if (&entry == old || entry.length == 0)
            continue;
        start = std::min(start, entry.offset);
        end = std::max(end, entry.offset + entry.length);
    }
    const std::size_t header = endOfHeader(entries_.size() + (old ? 0 : 1));
    const std::size_t shift = start < header && start < end ? lineSize : 0;
    // What follows the information proper is a block of attributes, which tells places in the whole file.
    const Entry* const info = find(EntryID::finderInfo);
    if (shift > 0 && info && info->length > finderInfoSizeInBytes)
        return nullptr;
    const std::size_t roundedEnd = (std::max(end + shift, header) + 3) / 4 * 4;
    const std::size_t place = old && old->offset >= end ? old->offset : roundedEnd;
    if (place > maximumSizeInBytes || fork.length() > maximumSizeInBytes - place ||
        entries_.size() + (old ? 0 : 1) > 0xFFFF)
        return nullptr;

    const std::span<const std::uint8_t> before = data_.bytes();
    std::vector<std::uint8_t> bytes;
    bytes.reserve(place + fork.length());
    append(bytes, before.first(countOffset));
    appendBigEndian(bytes, entries_.size() + (old ? 0 : 1), 2);
    for (const Entry& entry : entries_) {
        if (&entry == old)
            appendLine(bytes, entry.id, place, fork.length());
        else
            appendLine(bytes, entry.id, entry.offset + (entry.length > 0 ? shift : 0), entry.length);
    }
    if (!old)
        appendLine(bytes, EntryID::resourceFork, place, fork.length());
    const std::size_t from = bytes.size() - shift, kept = old && place == old->offset ? place : end;
    if (from < kept)
        append(bytes, before.subspan(from, kept - from));
    bytes.resize(place);
    append(bytes, fork.bytes());
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

} // namespace kelvo
