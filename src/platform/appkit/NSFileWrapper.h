#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

#include <memory>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kelvo {

/// A file, folder or symbolic link in memory, with everything in it. Held by std::shared_ptr; made whole,
/// then only read. Names are strings as NSFileManager makes them from bytes, so that those which are not
/// UTF-8 survive.
class NSFileWrapper {
public:
    enum class Kind : unsigned char { regularFile, directory, symbolicLink };
    /// A child of a folder by the name it has there.
    using Entry = std::pair<NSString, std::shared_ptr<const NSFileWrapper>>;
    /// Folders within folders, in bytes and on the disk alike.
    static constexpr std::size_t maximumDepth = 64;
    /// Files, folders and links in one tree, in bytes and on the disk alike.
    static constexpr std::size_t maximumEntries = 250'000;

    static std::shared_ptr<NSFileWrapper> initRegularFileWithContents(const NSData& contents);
    static std::shared_ptr<NSFileWrapper> initDirectory();
    static std::shared_ptr<NSFileWrapper> initSymbolicLinkWithDestination(const NSString& destination);
    /// Reads the file or folder with all it holds; its name becomes the preferred name. A link at the path
    /// itself is followed, links within the folder are kept as such. Null when any of it cannot be read or is
    /// neither file, folder nor link, when it is too deep or has too many entries, and when it holds more
    /// than maximumSizeInBytes in all.
    static std::shared_ptr<NSFileWrapper> initWithPath(const NSString& path);
    /// The serialised form ("rtfd" and a tree of little-endian counts, names and lengths), as documents keep
    /// rich text with attachments in one stream of bytes. Null when the bytes are not that, when a count or
    /// length does not fit the bytes that are there, or the tree is too deep or has too many entries. File
    /// contents share the bytes of `data`. Entries whose name is empty, "..", "." or holds "/" or U+0000 are
    /// left out, and so are those that are neither file nor folder; of equal names the first counts.
    static std::shared_ptr<NSFileWrapper> initWithSerializedRepresentation(const NSData& data);

    Kind kind() const noexcept { return kind_; }
    bool isRegularFile() const noexcept { return kind_ == Kind::regularFile; }
    bool isDirectory() const noexcept { return kind_ == Kind::directory; }
    bool isSymbolicLink() const noexcept { return kind_ == Kind::symbolicLink; }

    /// Nil when it has none.
    const NSString& preferredFilename() const noexcept { return preferredFilename_; }
    void setPreferredFilename(const NSString& name) { preferredFilename_ = name; }
    /// The contents of a file, nil for the other kinds.
    const NSData& regularFileContents() const noexcept { return contents_; }
    const NSString& symbolicLinkDestination() const noexcept { return destination_; }

    /// In the order in which they were added; empty for the other kinds.
    std::span<const Entry> fileWrappers() const noexcept { return entries_; }
    /// Null when there is none.
    std::shared_ptr<const NSFileWrapper> fileWrapperForName(std::u16string_view name) const;
    /// Adds the child under its preferred name, or, where that is taken (upper and lower case do not
    /// differ), is missing or could not be the name of a file, under one made from it; gives the name it got.
    /// Throws NSException (NSInvalidArgumentException) unless this is a folder, and when the child would make
    /// the tree too deep.
    NSString addFileWrapper(std::shared_ptr<const NSFileWrapper> child);

    /// The bytes of the serialised form; see initWithSerializedRepresentation. Links are left out, and so are
    /// files under one of the few names that the form keeps for itself. Dates in it are the present. Nil when
    /// it would pass maximumSizeInBytes or maximumEntries.
    NSData serializedRepresentation() const;

    /// Writes it to the path. A folder that is there already, or that a link at the path leads to, is written
    /// into, and entries of it with other names stay; there a file or link makes way for a file or link.
    /// Nothing else does: no pipe or device, no folder for a file, and nothing but a folder for a folder.
    /// Links within the folder are replaced, not followed.
    ///
    /// False when anything could not be written whole. Every entry is first written under a hidden name
    /// beside its place, and all are renamed once they are there, so that a failure before (such as a full
    /// disk) leaves everything as it was; after one between the renamings, new entries are removed again.
    /// What a killed process left under hidden names in the folders that are written into goes before.
    ///
    /// Atomically: with a flush to the disk, and a folder, file or link that is there already is replaced as
    /// a whole by a folder. `updateFilenames` has no meaning here, where wrappers keep no names of the disk.
    bool writeToFile_atomically_updateFilenames(const NSString& path, bool atomically,
                                                bool updateFilenames) const;

    /// Whether a file can have that name within a folder: it has a representation of at most 255 bytes and is
    /// neither empty, "." nor "..", without "/" and U+0000.
    static bool isUsableFilename(const NSString& name);

    /// The same kind, preferred name and contents, in whatever order.
    friend bool operator==(const NSFileWrapper& left, const NSFileWrapper& right);

private:
    explicit NSFileWrapper(Kind kind) : kind_(kind) {}
    /// False when the name is taken.
    bool addEntry(const NSString& name, std::shared_ptr<const NSFileWrapper> child);
    class SerializedReader;
    class DiskReader;

    Kind kind_;
    /// Levels of folders below this one.
    std::size_t height_ = 0;
    NSString preferredFilename_;
    NSData contents_;
    NSString destination_;
    std::vector<Entry> entries_;
    std::unordered_map<NSString, std::size_t> indexes_;
    /// By folded name, what to number the next child of that name with. Of the first foldedCount_ entries:
    /// only addFileWrapper needs it.
    std::unordered_map<NSString, std::size_t> nextNumbers_;
    std::size_t foldedCount_ = 0;
};

} // namespace kelvo
