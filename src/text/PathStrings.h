#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

// Where a path leads, as far as its text tells: none of these asks the file system. Nil gives nil or false.

/// Whether files there are transient: the path begins with "/tmp" (so "/tmpfoo" counts too), with "/var/tmp/"
/// or with NSTemporaryDirectory, or it is an attachment that the mail program has unpacked (it lies in
/// ~/Library/Mail/ and holds ".mimeattach").
bool isTemporaryPath(const NSString& path);

/// The components without "." and empty ones, each ".." taken away together with the component before it, and
/// "/" only where it comes first. What ".." takes away may be the "/" itself: "/../a" gives "a" alone.
NSMutableArray standardizedPathComponents(const NSString& path);
/// The shortest path to the same place, as HFSPath goes it and not by the array above: "a/./b/../c/" gives
/// "a/c", "a/.." gives "."; ".." stays at the beginning of a relative path ("../a") and leads nowhere from
/// the root ("/../a" gives "/a"). Nil and the empty string are returned as they are. Links and tildes are not
/// resolved.
NSString standardizedPath(const NSString& path);

/// The path as seen from the directory, both standardized: "/a/b/c" from "/a/d" is "../b/c", and "." is the
/// directory itself. The receiver when the directory is nil, when only one of the two is absolute, and when
/// the text does not tell the way ("a" from "..").
NSString relativePathToDirectory(const NSString& path, const NSString& directory);

/// Without what stands after the last slash, and without the slashes before that: "/a/b" gives "/a", "/b"
/// gives "/". A path that ends in a slash names a folder and loses nothing but its slashes; one without a
/// slash leaves the empty string.
NSString stringByDeletingFileComponent(const NSString& path);

// Ordering by the last path components alone, whose difference is negative, zero or positive: unit by unit,
// by the entries of the upper-case table, or by those of the upper-case table without diacritics. Nil is
// taken for the empty path.

int compareWithLastPathComponent(const NSString& path, const NSString& other);
int caseInsensitiveCompareWithLastPathComponent(const NSString& path, const NSString& other);
int nonUmlautedCaseInsensitiveCompareWithLastPathComponent(const NSString& path, const NSString& other);

// Classic paths separate their components by colons. "Volume:folder:file" is absolute; ":folder:file" and
// "::file" start at the working folder and at the one above it; every further colon in a row leads one folder
// up, and one at the end says that a folder is meant. The volume "Root" is the root folder "/", and any other
// volume the folder of that name in "/Volumes". A slash in a classic name is a colon in the other kind of
// path, and the other way round.

/// The classic path: "/a/b" gives "Root:a:b", "/Volumes/Disk/a" gives "Disk:a", "a/b" gives ":a:b". "." and
/// ".." are resolved. Nil and the empty string are returned as they are.
NSString HFSPath(const NSString& path);
/// The path of a classic one. What begins with a slash or holds no colon is taken for a path of this kind
/// already and returned as it is.
NSString POSIXPath(const NSString& path);

} // namespace kelvo
