#include "importers/epub/BookImport.h"

#include "importers/archives/ArchiveReader.h"
#include "importers/epub/BookPackage.h"
#include "importers/pages/PageSource.h"
#include "importers/support/DayText.h"
#include "importers/support/Texts.h"

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace kelvo::importers {
namespace {

/// A chapter of ten times as many pages as any book's takes less than a second.
constexpr std::size_t mostBytesOfFile = std::size_t{8} << 20;
/// Of all chapters together, which a few bytes may be packed for.
constexpr std::size_t mostBytesUnpacked = std::size_t{256} << 20;

constexpr const char* cut = "not all of the book is read";
constexpr const char* containerPath = "META-INF/container.xml";
constexpr const char* encryptionPath = "META-INF/encryption.xml";

class BookReading {
public:
    explicit BookReading(std::string_view file) : file_(file) {}

    /// False when it is no book.
    bool read() {
        std::unordered_map<std::string, std::string> documents;
        std::string firstPackage;
        const bool isWhole = visit([&](const std::string& name, ArchiveReader& archive) {
            if (name == containerPath || name == encryptionPath)
                documents.emplace(name, contents(archive));
            else if (firstPackage.empty() && name.ends_with(".opf"))
                firstPackage = name;
            return documents.size() < 2;
        });
        std::string path = pathOfPackage(documents[containerPath], deadline_);
        path = path.empty() ? firstPackage : path;
        std::string document;
        visit([&](const std::string& name, ArchiveReader& archive) {
            if (name != path)
                return true;
            document = contents(archive);
            return false;
        });
        const auto package = readBookPackage(document, path, deadline_);
        if (!package)
            return false;
        package_ = *package;
        const auto encrypted = encryptedPaths(documents[encryptionPath], deadline_);
        readChapters({encrypted.begin(), encrypted.end()});
        if (!isWhole)
            note(MDNoteIncomplete, "the book is damaged");
        return true;
    }

    void setAttributes(Attributes& attributes) const {
        const std::pair<const char*, const std::string*> texts[] = {
            {"kMDItemTitle", &package_.title},
            {"kMDItemRights", &package_.rights},
            {"kMDItemCoverage", &package_.coverage},
            {"kMDItemIdentifier", &package_.identifier},
            {"kMDItemCreator", &package_.producer}};
        for (const auto& [name, text] : texts)
            attributes.set(name, stringOf(*text));
        const std::pair<const char*, const std::vector<std::string>*> lists[] = {
            {"kMDItemAuthors", &package_.authors},
            {"kMDItemContributors", &package_.contributors},
            {"kMDItemLanguages", &package_.languages},
            {"kMDItemPublishers", &package_.publishers},
            {"kMDItemKeywords", &package_.subjects}};
        for (const auto& [name, list] : lists)
            attributes.set(name, arrayOf(*list));
        // Many are pages.
        const bool isMarkup = package_.description.find('<') != std::string::npos;
        attributes.set("kMDItemDescription",
                       isMarkup ? NSString(textOfMarkup(package_.description, u"utf-8", nullptr))
                                : stringOf(package_.description));
        setDate(attributes, "kMDItemContentCreationDate", package_.published);
        setDate(attributes, "kMDItemContentModificationDate", package_.modified);
        if (isEncrypted_)
            attributes.set("kMDItemSecurityMethod", u"Encrypted");
        attributes.setText(text_);
        if (note_)
            attributes.note(noteKind_, note_);
    }

private:
    static void setDate(Attributes& attributes, const char* name, const std::string& text) {
        if (const auto date = dayOfText(trimmed(stringOf(text)).characters()))
            attributes.setDate(name, *date);
    }

    /// Of each file in the archive, as long as it answers true. False when the archive is damaged.
    bool visit(const std::function<bool(const std::string& name, ArchiveReader& archive)>& visitor) const {
        ArchiveReader archive(file_, ArchiveReader::Kind::zip, deadline_);
        while (const auto entry = archive.next()) {
            if (!entry->isFolder && !visitor(entry->name, archive))
                break;
        }
        return !archive.isDamaged();
    }

    static std::string contents(ArchiveReader& archive) {
        std::string bytes;
        for (std::string_view piece = archive.read(); !piece.empty() && bytes.size() < mostBytesOfFile;
             piece = archive.read())
            bytes += piece;
        return bytes;
    }

    void readChapters(const std::unordered_set<std::string>& encrypted) {
        std::unordered_map<std::string, std::u16string> chapters;
        for (const std::string& path : package_.spine) {
            if (encrypted.contains(path))
                isEncrypted_ = true;
            else
                chapters.try_emplace(path);
        }
        if (isEncrypted_)
            note(chapters.empty() ? MDNoteLocked : MDNoteIncomplete, "the book is encrypted");
        std::size_t bytesLeft = mostBytesUnpacked;
        std::size_t unitsLeft = mostUnitsOfText;
        std::size_t missing = chapters.size();
        visit([&](const std::string& name, ArchiveReader& archive) {
            const auto chapter = chapters.find(name);
            if (chapter == chapters.end())
                return true;
            if (bytesLeft == 0 || unitsLeft == 0 || deadline_.isOver()) {
                note(MDNoteIncomplete, cut);
                return false;
            }
            const std::string bytes = contents(archive);
            if (bytes.size() >= mostBytesOfFile)
                note(MDNoteIncomplete, cut);
            bytesLeft -= std::min(bytesLeft, bytes.size());
            chapter->second = textOfMarkup(bytes, nullptr, nullptr);
            unitsLeft -= std::min(unitsLeft, chapter->second.size());
            return --missing > 0;
        });
        if (missing > 0)
            note(MDNoteIncomplete, "a part of the book is missing");
        for (const std::string& path : package_.spine)
            append(chapters[path]);
    }

    void append(std::u16string_view chapter) {
        if (chapter.empty() || text_.size() > mostUnitsOfText)
            return;
        if (!text_.empty())
            text_ += u"\n\n";
        text_ += chapter;
    }

    void note(int kind, const char* sentence) {
        if (note_)
            return;
        noteKind_ = kind;
        note_ = sentence;
    }

    std::string_view file_;
    Deadline deadline_;
    BookPackage package_;
    std::u16string text_;
    bool isEncrypted_ = false;
    int noteKind_ = 0;
    const char* note_ = nullptr;
};

} // namespace

void importBook(Attributes& attributes) {
    BookReading reading(attributes.file());
    if (reading.read())
        reading.setAttributes(attributes);
    else
        attributes.note(MDNoteBroken, "the file is damaged, or no book");
}

} // namespace kelvo::importers
