#include "importers/archives/ArchiveReader.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <new>

#include <locale.h>

namespace kelvo::importers {
namespace {

/// How often the time is looked at. What is made of four kilobytes that are packed as tightly as can be takes half a
/// second.
constexpr std::size_t bytesAtOnce = 4096;

/// libarchive brings names into the charset of the locale, and an engine has none.
class UTF8Locale {
public:
    UTF8Locale() : previous_(::uselocale(shared())) {}
    UTF8Locale(const UTF8Locale&) = delete;
    UTF8Locale& operator=(const UTF8Locale&) = delete;
    ~UTF8Locale() { ::uselocale(previous_); }

private:
    static locale_t shared() {
        static const locale_t made = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return made;
    }

    locale_t previous_;
};

bool isZip(std::string_view file) {
    return file.starts_with("PK\x03\x04");
}

} // namespace

struct ArchiveReader::Source {
    Source(std::string_view bytes, const Deadline& until)
        : file(bytes), deadline(until), archive(archive_read_new(), archive_read_free) {
        if (!archive)
            throw std::bad_alloc();
    }

    /// When it is decided what is read.
    void open() {
        struct archive* const opened = archive.get();
        place = 0;
        archive_read_set_callback_data(opened, this);
        archive_read_set_read_callback(opened, readBytes);
        archive_read_set_skip_callback(opened, skipBytes);
        archive_read_set_seek_callback(opened, seekByte);
        isOpen = archive_read_open1(opened) >= ARCHIVE_WARN;
        isDamaged = !isOpen;
    }

    /// Null at the end, whatever that is.
    struct archive_entry* nextEntry() {
        struct archive_entry* entry = nullptr;
        int status = ARCHIVE_RETRY;
        while (status == ARCHIVE_RETRY && !isDamaged && !deadline.isOver())
            status = archive_read_next_header(archive.get(), &entry);
        isLate = isLate || (status == ARCHIVE_RETRY && !isDamaged);
        if (status == ARCHIVE_EOF || isLate)
            return nullptr;
        // What is raw without having been unpacked is no archive.
        isDamaged =
            isDamaged || status < ARCHIVE_WARN ||
            (archive_format(archive.get()) == ARCHIVE_FORMAT_RAW && archive_filter_count(archive.get()) < 2);
        return isDamaged ? nullptr : entry;
    }

    static la_ssize_t readBytes(struct archive* archive, void* self, const void** buffer) {
        auto& source = *static_cast<Source*>(self);
        if (source.deadline.isOver()) {
            source.isLate = true;
            archive_set_error(archive, EIO, "late");
            return ARCHIVE_FATAL;
        }
        const std::string_view piece = source.file.substr(source.place, bytesAtOnce);
        *buffer = piece.data();
        source.place += piece.size();
        return static_cast<la_ssize_t>(piece.size());
    }

    static la_int64_t skipBytes(struct archive*, void* self, la_int64_t count) {
        auto& source = *static_cast<Source*>(self);
        const std::size_t left = source.file.size() - source.place;
        const std::size_t skipped = count < 0 ? 0 : std::min(left, static_cast<std::size_t>(count));
        source.place += skipped;
        return static_cast<la_int64_t>(skipped);
    }

    static la_int64_t seekByte(struct archive*, void* self, la_int64_t offset, int whence) {
        auto& source = *static_cast<Source*>(self);
        const auto size = static_cast<la_int64_t>(source.file.size());
        const la_int64_t base = whence == SEEK_CUR   ? static_cast<la_int64_t>(source.place)
                                : whence == SEEK_END ? size
                                                     : 0;
        if (offset < -base || offset > size - base)
            return ARCHIVE_FATAL;
        source.place = static_cast<std::size_t>(base + offset);
        return base + offset;
    }

    std::string_view file;
    const Deadline& deadline;
    std::size_t place = 0;
    bool isLate = false;
    bool isOpen = false;
    bool isDamaged = false;
    std::unique_ptr<struct archive, int (*)(struct archive*)> archive;
};

ArchiveReader::ArchiveReader(std::string_view file, Kind kind, const Deadline& deadline)
    : source_(std::make_unique<Source>(file, deadline)) {
    const UTF8Locale locale;
    struct archive* const archive = source_->archive.get();
    archive_read_support_format_zip(archive);
    if (kind != Kind::zip) {
        // All but those that unpack with another program, and mtree, for which much passes that is no archive.
        for (const auto support : {archive_read_support_format_7zip,     archive_read_support_format_ar,
                                   archive_read_support_format_cab,      archive_read_support_format_cpio,
                                   archive_read_support_format_iso9660,  archive_read_support_format_lha,
                                   archive_read_support_format_rar,      archive_read_support_format_rar5,
                                   archive_read_support_format_tar,      archive_read_support_format_warc,
                                   archive_read_support_format_xar,      archive_read_support_filter_bzip2,
                                   archive_read_support_filter_compress, archive_read_support_filter_gzip,
                                   archive_read_support_filter_lz4,      archive_read_support_filter_lzip,
                                   archive_read_support_filter_lzma,     archive_read_support_filter_rpm,
                                   archive_read_support_filter_uu,       archive_read_support_filter_xz,
                                   archive_read_support_filter_zstd})
            support(archive);
    }
    if (kind == Kind::compressed)
        archive_read_support_format_raw(archive);
    source_->open();
}

ArchiveReader::~ArchiveReader() = default;

std::optional<ArchiveEntry> ArchiveReader::next() {
    if (isEnded_)
        return std::nullopt;
    const UTF8Locale locale;
    struct archive_entry* entry = source_->nextEntry();
    if (!entry && !source_->isLate && !hasEntries_ && isZip(source_->file)) {
        // Its directory is not where it should be, but each file stands behind its name as well.
        isDamaged_ = true;
        source_->archive.reset(archive_read_new());
        if (!source_->archive)
            throw std::bad_alloc();
        archive_read_support_format_zip_streamable(source_->archive.get());
        source_->open();
        entry = source_->nextEntry();
    }
    hasEntries_ = true;
    isEnded_ = !entry;
    isDamaged_ = isDamaged_ || source_->isDamaged;
    if (!entry)
        return std::nullopt;
    ArchiveEntry result;
    const char* name = archive_entry_pathname(entry);
    if (!name)
        name = archive_entry_pathname_utf8(entry);
    result.name = name ? name : "";
    if (archive_entry_size_is_set(entry))
        result.size = static_cast<std::uint64_t>(std::max<la_int64_t>(archive_entry_size(entry), 0));
    result.isFolder = archive_entry_filetype(entry) == AE_IFDIR;
    result.isEncrypted = archive_entry_is_encrypted(entry) > 0;
    return result;
}

std::string_view ArchiveReader::read() {
    const UTF8Locale locale;
    const void* bytes = nullptr;
    std::size_t length = 0;
    la_int64_t offset = 0;
    int status = ARCHIVE_OK;
    // A piece may be empty before the last one.
    do {
        status = archive_read_data_block(source_->archive.get(), &bytes, &length, &offset);
    } while (status == ARCHIVE_OK && length == 0 && !source_->deadline.isOver());
    if (status == ARCHIVE_EOF)
        return {};
    if (status < ARCHIVE_WARN) {
        isDamaged_ = isDamaged_ || !source_->isLate;
        return {};
    }
    return {static_cast<const char*>(bytes), length};
}

bool ArchiveReader::isLate() const {
    return source_->isLate;
}

bool ArchiveReader::isEncrypted() const {
    // libarchive asks a format that it does not have when it could not open the file.
    return source_->isOpen && archive_read_has_encrypted_entries(source_->archive.get()) > 0;
}

} // namespace kelvo::importers
