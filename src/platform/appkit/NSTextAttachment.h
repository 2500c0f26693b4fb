#pragma once

#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/Visibility.h"

#include <memory>

namespace KELVO_PUBLIC kelvo {

class NSFileWrapper;

/// A file that stands in the text as one U+FFFC (NSAttachmentCharacter), as a rule a picture.
struct NSTextAttachment {
    /// Never null. The name in the text is its preferred file name.
    std::shared_ptr<const NSFileWrapper> fileWrapper;
    /// How large it is shown, in points; both 0 when that is left to the contents.
    NSSize displaySize;

    /// Equal names, contents and sizes.
    KELVO_PUBLIC_FRIEND bool operator==(const NSTextAttachment& left, const NSTextAttachment& right);
};

/// OBJECT REPLACEMENT CHARACTER.
inline constexpr char16_t NSAttachmentCharacter = 0xFFFC;

} // namespace kelvo
