#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

#include <cstddef>

namespace kelvo {

// What files of the classic kind have besides their contents. This system's files have no such thing, and
// extended attributes hold a few kilobytes at most, so it stands in a file "._name" beside the file
// (AppleDouble.h); copies that other systems made may carry it in extended attributes, which are read as
// well. A path that is a link stands for the file it leads to.

/// The most bytes that a resource fork can make use of, and a little more.
inline constexpr std::size_t maximumResourceForkSizeInBytes = std::size_t{32} << 20;

/// The 32 bytes, or less, that begin with type and creator: of the attributes, then of the file beside, the
/// first that name a type. Nil when none does and when there is no such file.
NSData finderInfoOfFile(const NSString& path);

/// The resource fork from the file beside, else from the attributes; nil when it is in neither, is empty, or
/// is larger than maximumResourceForkSizeInBytes, and when the path is not that of a regular file.
NSData resourceForkOfFile(const NSString& path);

/// Puts the fork into the file beside, atomically, where everything else stays; a new one gets the rights of
/// the file. False, with nothing changed, when the path is not that of a regular file, when the fork is nil
/// or too large, when something else goes by the name of the file beside, and when it cannot be written.
bool setResourceForkOfFile(const NSString& path, const NSData& fork);

} // namespace kelvo
