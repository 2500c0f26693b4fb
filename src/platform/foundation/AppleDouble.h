#pragma once

#include "platform/foundation/NSData.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

/// What a file has besides its contents, in the form of RFC 1740 (AppleDouble): numbered entries, each of
/// them a stretch of bytes. It stands in a file "._name" beside the file, or in an attribute of it.
///
/// Where one comes from nothing is known of it: each entry's place is checked when it is asked for.
class AppleDouble {
public:
    enum class EntryID : std::uint32_t { resourceFork = 2, finderInfo = 9 };

    /// Far more than resources and attributes take. What is longer is not changed.
    static constexpr std::size_t maximumSizeInBytes = std::size_t{64} << 20;

    /// Absent when the bytes do not begin with a whole header. No more than that is read of unread data.
    static std::optional<AppleDouble> withData(const NSData& data);
    /// That fork, and beside it what other readers expect to find, empty.
    static NSData dataWithResourceFork(const NSData& fork);

    /// The first bytes, at most so many, of the first entry of that kind; nil when there is none, or when it
    /// passes the end of the data.
    NSData entry(EntryID id, std::size_t atMostBytes) const;

    /// All of it with that resource fork in place of its own. Whatever else is in there stays as it is, also
    /// what is only known by its place in the file. Nil when that cannot be had: entries that pass the end or
    /// lie in the header, no room for the header's new line before something that must stay where it is, too
    /// many bytes.
    NSData dataByReplacingResourceFork(const NSData& fork) const;

private:
    struct Entry {
        EntryID id;
        std::size_t offset, length;
    };

    explicit AppleDouble(NSData data, std::vector<Entry> entries);
    const Entry* find(EntryID id) const;
    bool isWhole() const;

    NSData data_;
    std::vector<Entry> entries_;
};

} // namespace kelvo
