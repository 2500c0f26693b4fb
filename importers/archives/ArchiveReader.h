#pragma once

#include "importers/support/Deadline.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::importers {

struct ArchiveEntry {
    /// As it stands in the archive, which need not be UTF-8 unless that says so.
    std::string name;
    /// Unpacked, in bytes; absent where only unpacking tells.
    std::optional<std::uint64_t> size;
    bool isFolder = false;
    bool isEncrypted = false;
};

/// The entries of an archive one after the other, with libarchive. Nothing is written to disk, and no program is started
/// to unpack.
class ArchiveReader {
public:
    enum class Kind : std::uint8_t {
        zip,        ///< of a zip file, in the order in which they are in the file
        archive,    ///< of whatever is recognized
        compressed, ///< an archive, or a single file that is compressed
    };

    /// The bytes must outlive this object. Reading ends at the deadline.
    ArchiveReader(std::string_view file, Kind kind, const Deadline& deadline);
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;
    ~ArchiveReader();

    /// Absent behind the last one, and where the archive is damaged.
    std::optional<ArchiveEntry> next();
    /// A further piece of the entry's contents, valid until the next call; empty at their end, and where they are damaged.
    std::string_view read();

    /// It was not read to its end, because the time was over.
    bool isLate() const;
    /// It is damaged, or no archive, and was not read to its end, or in another order than its own.
    bool isDamaged() const { return isDamaged_; }
    bool isEncrypted() const;

private:
    struct Source;

    std::unique_ptr<Source> source_;
    bool hasEntries_ = false;
    bool isEnded_ = false;
    bool isDamaged_ = false;
};

} // namespace kelvo::importers
