#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSString.h"

#include <memory>

namespace kelvo {

/// The desktop, for this process.
class NSWorkspace {
public:
    static NSWorkspace& sharedWorkspace();

    /// The icon of files of that type, an extension or a quoted type code ("'PDF '"), out of the desktop's icon theme, in
    /// all sizes that it has; it is drawn 32 points large until somebody says otherwise. Null for a type that nobody has
    /// declared, and when no theme is installed.
    std::shared_ptr<NSImage> iconForFileType(const NSString& fileType);
};

} // namespace kelvo
