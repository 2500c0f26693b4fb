#include "text/StandardDirectories.h"

#include "platform/foundation/NSPathUtilities.h"

namespace kelvo {

NSString homeDirectory() {
    return NSHomeDirectory();
}

NSString pathInHomeDirectory(const NSString& component) {
    return stringByAppendingPathComponent(homeDirectory(), component);
}

NSString libraryDirectory() {
    static const NSString path = pathInHomeDirectory(u"Library");
    return path;
}

NSString pathInLibraryDirectory(const NSString& component) {
    return stringByAppendingPathComponent(libraryDirectory(), component);
}

NSString applicationSupportDirectory() {
    static const NSString path = pathInLibraryDirectory(u"Application Support");
    return path;
}

NSString pathInApplicationSupportDirectory(const NSString& component) {
    return stringByAppendingPathComponent(applicationSupportDirectory(), component);
}

NSString cachesDirectory() {
    static const NSString path = pathInLibraryDirectory(u"Caches");
    return path;
}

NSString pathInCachesDirectory(const NSString& component) {
    return stringByAppendingPathComponent(cachesDirectory(), component);
}

NSString preferencesDirectory() {
    static const NSString path = pathInLibraryDirectory(u"Preferences");
    return path;
}

NSString pathInPreferencesDirectory(const NSString& component) {
    return stringByAppendingPathComponent(preferencesDirectory(), component);
}

NSString desktopDirectory() {
    static const NSString path = pathInHomeDirectory(u"Desktop");
    return path;
}

NSString temporaryDirectory() {
    static const NSString path = u"/tmp";
    return path;
}

} // namespace kelvo
