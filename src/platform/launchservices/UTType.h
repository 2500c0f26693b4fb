#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"
#include "platform/launchservices/DynamicType.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

/// Whether a name is asked about as that of a file or of a folder: types of folders have extensions, too.
enum class ItemKind : std::uint8_t { file, folder };

// Uniform types by what else they are called. Letters count the same in either case; nil is the answer where no type
// has been declared.

/// Without the dot. It may have two parts ("tar.gz").
NSString typeWithFilenameExtension(std::u16string_view extension, ItemKind item);
/// With its parameters or without.
NSString typeWithMIMEType(std::u16string_view MIMEType);
/// As NSHFSTypeOfFile gives it ("'PDF '"); the case of letters does count.
NSString typeWithOSType(std::u16string_view quotedCode);

/// All names of that class by which a type goes, the usual one first, in the letters in which they were declared; empty
/// for a type that nobody has declared, and for pasteboards and schemes, for which nothing is.
NSArray UTTypeCopyAllTagsWithClass(const NSString& identifier, UTTagClass tagClass);

/// Whether each item of the first type is of the other as well: they are the same, or the other is among what the
/// first conforms to, at any distance. A type that nobody knows conforms to itself, a dynamic one to what it says.
bool UTTypeConformsTo(std::u16string_view identifier, std::u16string_view other);
/// The type itself and all that it conforms to, the nearest first, none twice.
NSArray typesConformedToBy(const NSString& identifier);

} // namespace kelvo
