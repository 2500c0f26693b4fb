#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

// Category KelvoFileManagerExtensions of NSFileManager: listings of folders. Entries come in the order of the
// platform's listing, hidden ones too, as names or as full paths (the folder's path and the name). A folder
// that cannot be read, or is nil, gives an empty or short listing, never nil.

/// The entries whose extension is the given one without regard to case; none for nil. The empty extension is
/// that of names without one.
NSArray directoryContentsAtPath_matchingExtension_fullPath(const NSFileManager& files, const NSString& path,
                                                           const NSString& extension, bool fullPath);
inline NSArray directoryContentsAtPath_matchingExtension(const NSFileManager& files, const NSString& path,
                                                         const NSString& extension) {
    return directoryContentsAtPath_matchingExtension_fullPath(files, path, extension, false);
}
/// The entries whose names match the wildcard (isCaseInsensitiveLikeWildcard); none for nil.
NSArray directoryContentsAtPath_matchingWildcard_fullPath(const NSFileManager& files, const NSString& path,
                                                          const NSString& wildcard, bool fullPath);
inline NSArray directoryContentsAtPath_matchingWildcard(const NSFileManager& files, const NSString& path,
                                                        const NSString& wildcard) {
    return directoryContentsAtPath_matchingWildcard_fullPath(files, path, wildcard, false);
}

// With `resolveLinks`, links are replaced by what they lead to: the folder, and each entry. Entries then are
// full paths whatever `fullPath` says, and links that lead nowhere are left out.

/// Every entry, files and folders. Without `resolveLinks` no entry is looked at.
NSArray directoryContentsAtPath_fullPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                                      bool fullPath, bool resolveLinks);
/// The entries that are no folders, nor links to any. Links that lead nowhere are left out in any case.
NSArray directoryFilesAtPath_fullPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                                   bool fullPath, bool resolveLinks);

// All that is below the folder, as full paths, each folder followed at once by what is in it. Links to
// folders are gone into whether they are resolved or not, but never into a folder that the way there has led
// through already, so that a circle of links ends. A folder that many ways with links lead to is listed on
// the first 16 of them, and otherwise named only.

NSArray deepDirectoryContentsAtPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                                 bool resolveLinks);
/// Without the folders themselves.
NSArray deepDirectoryFilesAtPath_resolveLinks(const NSFileManager& files, const NSString& path,
                                              bool resolveLinks);

/// What a symbolic link leads to in the end, as an absolute path without links where the given one is
/// absolute. The path itself when it is no link, leads nowhere or in a circle.
NSString resolveLink(const NSFileManager& files, const NSString& path);

} // namespace kelvo
