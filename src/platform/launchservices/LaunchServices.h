#pragma once

#include "platform/foundation/NSString.h"

namespace kelvo {

/// The uniform type identifier of an item.
inline constexpr const char16_t* kLSItemContentType = u"LSItemContentType";

/// An attribute of a file or folder; nil when nothing is at the path, and for attributes not named here.
///
/// The content type goes by the name where its extension is known, in letters of either case ("a.tar.gz" is a
/// compressed tar file); else by the classic type code; else by the contents where they show more than that they are
/// text or bytes. What then remains has a dynamic identifier made of its extension or, without one, is
/// "public.unix-executable" if the user could run it, else "public.data". Nobody reads a file whose name or code tells.
///
/// A folder is a package when its extension says so, when it holds a rich text with attachments, or when it has an
/// extension and what a bundle has in it; else it is "public.folder", or "public.volume" where a file system begins.
/// Links are followed: the item is what the link leads to, under the name of the link. A pipe or device is
/// "public.item", whatever its name.
NSString LSCopyItemAttribute(const NSString& path, const NSString& attribute);

} // namespace kelvo
