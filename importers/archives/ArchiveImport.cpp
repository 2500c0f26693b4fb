#include "importers/archives/ArchiveImport.h"

#include "importers/archives/ArchiveNames.h"
#include "importers/archives/ArchiveReader.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo::importers {
namespace {

constexpr std::size_t mostEntries = 1'000'000;
/// Of a single file that is compressed, which has to be unpacked to be counted.
constexpr std::uint64_t mostBytesCounted = std::uint64_t{1} << 30;

/// For which types a file that is compressed is not damaged when there is no archive in it. The others of that kind have
/// types that nobody has declared.
bool mayBeSingleFile(std::string_view type) {
    for (const std::string_view each :
         {"org.gnu.gnu-zip-archive", "public.bzip2-archive", "org.tukaani.xz-archive", "public.z-archive",
          "public.uuencoded-archive"}) {
        if (type == each)
            return true;
    }
    return type.starts_with("dyn.");
}

std::optional<std::uint64_t> sizeByUnpacking(ArchiveReader& archive) {
    std::uint64_t size = 0;
    for (std::string_view piece = archive.read(); !piece.empty(); piece = archive.read()) {
        size += piece.size();
        if (size > mostBytesCounted)
            return std::nullopt;
    }
    return archive.isLate() || archive.isDamaged() ? std::nullopt : std::optional(size);
}

/// What an archive holds, all in all.
class Inventory {
public:
    void read(ArchiveReader& archive) {
        while (const auto entry = archive.next()) {
            if (names_.size() == mostEntries || bytesOfNames_ > mostUnitsOfText) {
                isCut_ = true;
                return;
            }
            add(*entry, archive);
        }
    }

    void setAttributes(Attributes& attributes) const {
        attributes.setInteger("plumwick_files", files_);
        if (unpackedSize_)
            attributes.setInteger("plumwick_unpackedSize", static_cast<std::int64_t>(*unpackedSize_));
        attributes.setTextOfUTF8(textOfNames(names_));
    }

    bool isEmpty() const { return names_.empty(); }
    bool isCut() const { return isCut_; }
    bool isEncrypted() const { return isEncrypted_; }

private:
    void add(const ArchiveEntry& entry, ArchiveReader& archive) {
        names_.push_back(entry.name);
        bytesOfNames_ += entry.name.size() + 1;
        isEncrypted_ = isEncrypted_ || entry.isEncrypted;
        if (entry.isFolder)
            return;
        ++files_;
        if (!unpackedSize_)
            return;
        const auto size = entry.size ? entry.size : sizeByUnpacking(archive);
        constexpr std::uint64_t most = INT64_MAX;
        unpackedSize_ =
            size && *size <= most - *unpackedSize_ ? std::optional(*unpackedSize_ + *size) : std::nullopt;
    }

    std::vector<std::string> names_;
    std::size_t bytesOfNames_ = 0;
    std::int64_t files_ = 0;
    /// Absent when it is not known of every file.
    std::optional<std::uint64_t> unpackedSize_ = 0;
    bool isEncrypted_ = false;
    bool isCut_ = false;
};

} // namespace

void importArchive(Attributes& attributes) {
    const Deadline deadline;
    ArchiveReader archive(attributes.file(),
                          mayBeSingleFile(attributes.contentType()) ? ArchiveReader::Kind::compressed
                                                                    : ArchiveReader::Kind::archive,
                          deadline);
    Inventory inventory;
    inventory.read(archive);
    const bool isEncrypted = inventory.isEncrypted() || archive.isEncrypted();
    if (isEncrypted)
        attributes.set("kMDItemSecurityMethod", u"Password Encrypted");
    if (inventory.isEmpty() && isEncrypted) {
        attributes.note(MDNoteLocked, "the names in the archive are encrypted");
        return;
    }
    if (inventory.isEmpty() && archive.isDamaged()) {
        attributes.note(MDNoteBroken, "the file is damaged, or no archive");
        return;
    }
    inventory.setAttributes(attributes);
    if (archive.isDamaged())
        attributes.note(MDNoteIncomplete, "the archive is damaged");
    else if (archive.isLate() || inventory.isCut())
        attributes.note(MDNoteIncomplete, "not all of the archive is listed");
}

} // namespace kelvo::importers
