#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KELVO_PUBLIC kelvo {

/// Immutable bytes, shared by reference. Default-constructed it is nil; nil is not empty data, but both have
/// length 0. Data past maximumSizeInBytes is refused with NSException (NSMallocException).
class NSData {
public:
    NSData() noexcept = default;
    NSData(std::nullptr_t) noexcept {}

    static NSData data();
    /// A copy of the bytes.
    static NSData dataWithBytes(const void* bytes, std::size_t lengthInBytes);
    static NSData dataWithBytes(std::string_view bytes) { return dataWithBytes(bytes.data(), bytes.size()); }
    /// Takes the container over; nothing is copied.
    static NSData dataWithBytesNoCopy(std::vector<std::uint8_t> bytes);
    static NSData dataWithBytesNoCopy(std::string bytes);
    /// Bytes that `owner` keeps alive and unchanged.
    static NSData dataWithBytesNoCopy(std::span<const std::uint8_t> bytes, std::shared_ptr<const void> owner);
    /// The whole file, nil when it cannot be read, is not a regular file or is too large.
    static NSData dataWithContentsOfFile(const NSString& path);
    /// The same, but the bytes are read when they are first asked for, all at once; before that there are only
    /// the open file and the length that it has now. What a file that was cut short since then does not have
    /// any more reads as zeros.
    static NSData dataWithContentsOfFileWhenNeeded(const NSString& path);
    /// The same of an open regular file, by a descriptor that is taken over. Nil when it is none or too large.
    static NSData dataWithContentsOfDescriptorWhenNeeded(int descriptor);
    /// Memory that another process can be shown by its descriptor: `owner` keeps both alive and unchanged, and
    /// the bytes are all that the descriptor stands for.
    static NSData dataWithBytesNoCopy_descriptor(std::span<const std::uint8_t> bytes,
                                                 std::shared_ptr<const void> owner, int descriptor);

    bool isNil() const noexcept { return !rep_; }
    std::size_t length() const noexcept { return rep_ ? rep_->length : 0; }
    bool isEmpty() const noexcept { return length() == 0; }
    /// Valid as long as any handle on this data. Throws NSException (NSMallocException) when a file is to be
    /// read now and there is no memory for it.
    std::span<const std::uint8_t> bytes() const {
        return !rep_ ? std::span<const std::uint8_t>() : rep_->file ? bytesOfFile() : rep_->bytes;
    }
    std::string_view characters() const;
    /// Of the file or the memory that these bytes are the whole of, valid as long as any handle on this data;
    /// -1 when there is none.
    int descriptor() const noexcept { return rep_ ? rep_->descriptor : -1; }
    /// Whether the bytes are still on the disk alone.
    bool isUnread() const noexcept;
    bool isIdenticalTo(const NSData& other) const noexcept { return rep_ == other.rep_; }
    /// Shares the receiver's bytes; where they are unread, that range alone is read. Throws NSException (NSRangeException) when the range passes the end.
    NSData subdataWithRange(NSRange range) const;
    /// False when the file could not be written whole, and for nil. Only regular files are written: a pipe or
    /// device under that name is left alone. Atomically: through a new file beside it with the rights of the
    /// old one, which takes its place at the end (also that of a link) and is removed on failure; otherwise a
    /// failure may leave part of the data.
    bool writeToFile_atomically(const NSString& path, bool atomically) const;

    /// In base64 after RFC 4648, section 4, in one line. Nil for nil. Throws NSException (NSMallocException)
    /// when the text would pass maximumSizeInBytes.
    NSString base64EncodedString() const;

    KELVO_PUBLIC_FRIEND bool operator==(const NSData& left, const NSData& right);

private:
    struct File;
    struct Rep {
        std::span<const std::uint8_t> bytes;
        std::shared_ptr<const void> owner;
        std::size_t length = 0;
        int descriptor = -1;
        /// Held by the owner.
        const File* file = nullptr;
    };
    std::span<const std::uint8_t> bytesOfFile() const;

    std::shared_ptr<const Rep> rep_;
};

} // namespace kelvo
