#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace kelvo {

/// A file, folder or symbolic link in memory, with everything in it. Held by std::shared_ptr; made whole,
/// then only read.
class NSFileWrapper {
public:
    enum class Kind : unsigned char { regularFile, directory, symbolicLink };
    /// A child of a folder by the name it has there.
    using Entry = std::pair<NSString, std::shared_ptr<const NSFileWrapper>>;
    /// Folders within folders, in bytes and on the disk alike.
    static constexpr std::size_t maximumDepth = 64;

    static std::shared_ptr<NSFileWrapper> initRegularFileWithContents(const NSData& contents);
    static std::shared_ptr<NSFileWrapper> initDirectory();
    static std::shared_ptr<NSFileWrapper> initSymbolicLinkWithDestination(const NSString& destination);
    /// Reads the file, link or folder with all it holds; its name becomes the preferred name. Null when any
    /// of it cannot be read, is neither file, folder nor link, or is too deep or too large.
    static std::shared_ptr<NSFileWrapper> initWithPath(const NSString& path);
    /// The serialised form ("rtfd" and a tree of little-endian counts, names and lengths), as documents keep
    /// rich text with attachments in one stream of bytes. Null when the bytes are not that, when a count or
    /// length does not fit the bytes that are there, or the tree is too deep. File contents share the bytes
    /// of `data`. Entries whose name is empty, "..", "." or holds "/" or U+0000 are left out, and of equal
    /// names the first counts.
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
    /// Throws NSException (NSInvalidArgumentException) unless this is a folder.
    NSString addFileWrapper(std::shared_ptr<const NSFileWrapper> child);

    /// The bytes of the serialised form; see initWithSerializedRepresentation. Links are left out. Nil when
    /// a length would pass 32 bits.
    NSData serializedRepresentation() const;

    /// Writes it to the path. A folder that is there already is written into, and entries of it with other
    /// names stay; a file that is there already is replaced. False when anything could not be written whole,
    /// and then all that this call created is removed again. Nothing is ever written outside of `path`:
    /// links that stand there are replaced, not followed.
    ///
    /// Atomically: beside the path first, and then put in its place. `updateFilenames` has no meaning
    /// here, where wrappers keep no names of the disk.
    bool writeToFile_atomically_updateFilenames(const NSString& path, bool atomically,
                                                bool updateFilenames) const;

    /// The same kind, preferred name and contents.
    friend bool operator==(const NSFileWrapper& left, const NSFileWrapper& right);

private:
    explicit NSFileWrapper(Kind kind) noexcept : kind_(kind) {}

    Kind kind_;
    NSString preferredFilename_;
    NSData contents_;
    NSString destination_;
    std::vector<Entry> entries_;
};

} // namespace kelvo
