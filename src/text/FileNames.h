#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// File names and their extensions. The extension is what pathExtension gives. Nil gives nil or false,
// changing nil does nothing, and copying forms that change nothing return the receiver.

/// The most bytes that one file name may take on disk.
inline constexpr std::size_t maximumFileNameSizeInBytes = 255;

/// Whether the strings in the list contain the path's extension, without regard to case. False for a nil
/// list. A path without an extension matches an empty string in the list.
bool pathMatchingExtensions(const NSString& path, const NSArray& extensions);
/// The same, or the list contains the type code of the file there (see NSHFSTypeOfFile), with regard to case:
/// "'PDF '". The file is looked at only when the extension does not match.
bool pathMatchingExtensionsOrTypes(const NSString& path, const NSArray& extensionsOrTypes);

/// 1 to 15 units, all of them alphanumeric.
bool isValidPathExtension(std::u16string_view extension);
/// The path's extension when that is valid, else the empty string.
NSString validPathExtension(const NSString& path);

/// With the new extension in place of the old one, or after the path when it has none. A nil or empty new
/// extension only takes the old one away; the receiver where stringByAppendingPathExtension appends nothing.
NSString stringByReplacingPathExtensionWith(const NSString& path, const NSString& extension);
/// With the extension, unless that is the path's extension already, without regard to case.
NSString stringByAppendingPathExtensionIfNecessary(const NSString& path, const NSString& extension);

/// Removes every "." "/" "~" and ":" at both ends; inner ones stay.
void trimInvalidFilenameCharacters(NSMutableString& name);
NSString stringByTrimmingInvalidFilenameCharacters(const NSString& name);

/// Makes text a file name: normalisation form C, trimInvalidFilenameCharacters, and then "-" for every "/",
/// ":" and "~". May leave nothing.
void createFilename(NSMutableString& name);
NSString stringByCreatingFilename(const NSString& text);

/// Shortens the name from the end, unit by unit, until its bytes on disk (see
/// NSFileManager::fileSystemRepresentationWithPath) fit in maximumFileNameSizeInBytes. A name that has no
/// such bytes is cut before what has none, so that a pair of surrogates is kept or lost as a whole.
void createFileSystemRepresentation(NSMutableString& name);
NSString stringByCreatingFileSystemRepresentation(const NSString& name);

/// The same with a dot and the extension appended: the name is shortened so far that both fit. Nothing is
/// appended when the extension is nil or empty, when not even one unit of the name fits beside it, and to the
/// empty name.
void createFileSystemRepresentationAndAppendExtension(NSMutableString& name, std::u16string_view extension);
NSString stringByCreatingFileSystemRepresentationByAppendingExtension(const NSString& name,
                                                                      std::u16string_view extension);

} // namespace kelvo
