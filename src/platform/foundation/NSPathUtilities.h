#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"

#include <string_view>

namespace kelvo {

/// The user's home folder: $HOME where that is an absolute path, else the one of the user database, else "/".
/// Without a slash at its end (except for "/").
NSString NSHomeDirectory();
/// The same for a user by name; nil when there is no such user.
NSString NSHomeDirectoryForUser(const NSString& userName);
/// The folder for short-lived files: $TMPDIR where that is an absolute path, else "/tmp". It ends in one
/// slash, so that a path with this prefix lies inside it.
NSString NSTemporaryDirectory();

// Paths as strings. Slashes separate components; several in a row count as one, and one at the end adds
// nothing but where it is said. Nil gives nil (or false). A result that equals the receiver is the receiver.

/// The root keeps its one slash.
std::u16string_view withoutSlashesAtEnd(std::u16string_view path);
/// A slash at the beginning is a component of its own, and so is one at the end ("/a//b/" gives "/", "a",
/// "b", "/"). The empty string gives an empty array.
NSArray pathComponents(const NSString& path);
/// "/" for a path of nothing but slashes.
NSString lastPathComponent(const NSString& path);
/// The text after the last dot of the last component: empty when there is no dot, when the only dot is its
/// first unit (a hidden file), and when nothing comes after it.
NSString pathExtension(const NSString& path);
/// "/" for what lies directly below the root and for the root itself; empty for a single relative component.
NSString stringByDeletingLastPathComponent(const NSString& path);
/// Without the extension that pathExtension gives and its dot, and without slashes at the end.
NSString stringByDeletingPathExtension(const NSString& path);
/// With exactly one slash between the two, and without slashes at the end. A nil or empty component adds
/// nothing; an empty path gives the component.
NSString stringByAppendingPathComponent(const NSString& path, const NSString& component);
/// The path without slashes at its end, a dot, and the extension. An extension that is nil, empty or holds a
/// slash, and a path that is empty or the root, give the receiver.
NSString stringByAppendingPathExtension(const NSString& path, const NSString& extension);
/// Begins with a slash or with a tilde.
bool isAbsolutePath(const NSString& path);
/// "~" and "~name" at the beginning become the home folder, without slashes at the end. A name that is no
/// user's stays.
NSString stringByExpandingTildeInPath(const NSString& path);
/// The home folder at the beginning becomes "~"; a home folder "/" is not abbreviated.
NSString stringByAbbreviatingWithTildeInPath(const NSString& path);
/// The tilde expanded, empty components, "." and slashes at the end removed. In absolute paths ".." is
/// removed too, with the folder that a link before it leads to taken into account where there is one; in
/// relative paths it stays, because where they start is not known.
NSString stringByStandardizingPath(const NSString& path);
/// Every link on the way resolved and the path standardized; only standardized when the file does not exist.
NSString stringByResolvingSymlinksInPath(const NSString& path);

} // namespace kelvo
