#include "url/NSURLKelvoExtensions.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "text/StringComparison.h"

#include <algorithm>
#include <new>

namespace kelvo {

NSString pathExtension(const NSURL& url) {
    const NSString extension = url.isFileURL() ? url.pathExtension() : pathExtension(url.rawPath());
    return extension.isNil() ? NSString::string() : extension;
}

NSString lastPathComponent(const NSURL& url) {
    return url.lastPathComponent();
}

NSURL URLWithAnchor(const NSURL& url, const NSString& anchor) {
    if (url.isNil() || anchor.isEmpty())
        return url;
    const NSString string = url.absoluteString();
    const std::size_t end = std::min(string.characters().find(u'#'), string.length());
    return NSURLKelvoExtensions::URLWithFormat(u"%@#%@", string.substringToIndex(end), anchor);
}

NSURL baseURLForWebKit(const NSURL& url) {
    if (url.isFileURL())
        return NSFileManager::defaultManager().fileExistsAtPath(url.path()) ? url : NSURL();
    const NSString scheme = url.scheme();
    if (isEqualToStringNoCase(scheme, u"feed")) {
        const NSString specifier = url.resourceSpecifier();
        return hasPrefixNoCase(specifier, u"http:")
                   ? NSURL::URLWithString(specifier)
                   : NSURLKelvoExtensions::URLWithFormat(u"%@:%@", u"http", specifier);
    }
    return isEqualToStringNoCase(scheme, u"http") || isEqualToStringNoCase(scheme, u"https") ? url : NSURL();
}

NSURL baseURLForWebKitUsingAnchor(const NSURL& url, const NSString& anchor) {
    return URLWithAnchor(baseURLForWebKit(url), anchor);
}

namespace NSURLKelvoExtensions {

NSURL URLWithFormat_arguments(const NSString& format, std::span<const Value> arguments) {
    if (format.isEmpty())
        return nullptr;
    try {
        return NSURL::URLWithString(stringWithFormat_arguments(format, arguments));
    } catch (const NSException&) {
        // The string would pass the largest size.
        return nullptr;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace NSURLKelvoExtensions

} // namespace kelvo
