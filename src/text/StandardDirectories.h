#pragma once

#include "platform/foundation/NSString.h"

namespace kelvo {

// The standard folders as path strings without a slash at the end, whether they exist or not. They follow the
// user's home folder ($HOME where that is an absolute path, else the user database). The library folder and
// those below, and the desktop, are looked up once in a process; the home folder every time.
//
// The forms with a component put exactly one slash between; a nil or empty component gives the folder itself.

NSString homeDirectory();
NSString pathInHomeDirectory(const NSString& component);

/// "Library" in the home folder.
NSString libraryDirectory();
NSString pathInLibraryDirectory(const NSString& component);

/// "Application Support" in the library folder.
NSString applicationSupportDirectory();
NSString pathInApplicationSupportDirectory(const NSString& component);

/// "Caches" in the library folder.
NSString cachesDirectory();
NSString pathInCachesDirectory(const NSString& component);

/// "Preferences" in the library folder.
NSString preferencesDirectory();
NSString pathInPreferencesDirectory(const NSString& component);

/// "Desktop" in the home folder.
NSString desktopDirectory();

/// Always "/tmp", and not the folder of $TMPDIR, which NSTemporaryDirectory gives.
NSString temporaryDirectory();

} // namespace kelvo
