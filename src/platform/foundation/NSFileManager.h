#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <optional>
#include <string>
#include <string_view>

namespace KELVO_PUBLIC kelvo {

/// Key of a file attribute: the permission bits as a number.
inline constexpr const char16_t* NSFilePosixPermissions = u"NSFilePosixPermissions";
/// Keys of file attributes: the file system's number and the file's number in it.
inline constexpr const char16_t* NSFileSystemNumber = u"NSFileSystemNumber";
inline constexpr const char16_t* NSFileSystemFileNumber = u"NSFileSystemFileNumber";

/// Files and folders by path. Path strings are UTF-16; what the kernel gets are their bytes, see
/// fileSystemRepresentationWithPath. A path without a representation is answered like that of a file that
/// does not exist. Relative paths start at the process's working folder; a tilde has no meaning here. Folders of the
/// platform may lie elsewhere on the disk (PlatformRoot.h).
///
/// Nothing throws for what the disk holds: failure is false or nil.
class NSFileManager {
public:
    static const NSFileManager& defaultManager();

    /// The bytes of a path string: UTF-8, in which each unpaired surrogate U+DC80 to U+DCFF stands for the
    /// one byte 0x80 to 0xFF. Strings and bytes correspond one to one, so that names that are not UTF-8
    /// survive. Absent for nil, for a string with U+0000 or any other unpaired surrogate, and for one whose
    /// surrogates would form well-formed UTF-8 (which has its own string).
    std::optional<std::string> fileSystemRepresentationWithPath(const NSString& path) const;
    /// The other way: each byte that is not part of a well-formed UTF-8 sequence becomes U+DC00 plus the
    /// byte.
    NSString stringWithFileSystemRepresentation(std::string_view bytes) const;

    /// Links are followed: a link to nothing does not exist.
    bool fileExistsAtPath(const NSString& path) const;
    /// `isDirectory` is set to false as well when nothing exists.
    bool fileExistsAtPath_isDirectory(const NSString& path, bool* isDirectory) const;

    /// Whether something is there that this process may write to.
    bool isWritableFileAtPath(const NSString& path) const;

    /// The names of the entries without "." and "..", hidden ones included, sorted by their bytes so that a
    /// listing is the same on every file system; nil when the folder cannot be read. A file "._X" in which the
    /// metadata of an entry X stands (AppleDouble.h) is a part of that entry, and left out.
    NSArray directoryContentsAtPath(const NSString& path) const;

    /// Numbers under NSFileSystemNumber and NSFileSystemFileNumber, which together tell one file or folder of
    /// this machine from all others, and under NSFilePosixPermissions. Of a link they are its own, unless links
    /// are to be followed. Nil when nothing is there.
    NSDictionary fileAttributesAtPath_traverseLink(const NSString& path, bool followsLinks) const;

    /// What a symbolic link holds, not resolved; nil when the path is not one.
    NSString pathContentOfSymbolicLinkAtPath(const NSString& path) const;

    /// One folder; false when it cannot be made, also because something has that name or the folder above is
    /// missing. Of the attributes (may be nil) the number under NSFilePosixPermissions counts, which the
    /// umask does not reduce; without it the umask decides.
    bool createDirectoryAtPath_attributes(const NSString& path, const NSDictionary& attributes) const;
    /// A file, a link (not what it points at), or a folder with everything in it. False when nothing has that
    /// name and when part of it could not be removed. The root and paths that end in "." or ".." are refused.
    bool removeFileAtPath(const NSString& path) const;

    /// Nil when it is not known (for instance because it was removed).
    NSString currentDirectoryPath() const;

private:
    NSFileManager() = default;
};

} // namespace kelvo
