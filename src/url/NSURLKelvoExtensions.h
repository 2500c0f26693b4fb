#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/NSURL.h"

#include <array>
#include <span>

namespace kelvo {

// Category NSURLKelvoExtensions. Nothing here throws, and a nil URL has nil for every answer but its path
// extension.

/// The extension of the URL's path: empty, never nil, when there is none. Percent escapes are decoded for
/// file URLs and left as they are for all others.
NSString pathExtension(const NSURL& url);
/// The last component of the path with percent escapes decoded; nil for an opaque URL ("mailto:x").
NSString lastPathComponent(const NSURL& url);

/// The URL with that fragment in place of its own; the receiver itself when the anchor is nil or empty. Nil
/// when the anchor has characters that no fragment may have: nothing is escaped.
NSURL URLWithAnchor(const NSURL& url, const NSString& anchor);

/// The URL that a page is given as its base when it is rendered: the receiver for "http" and "https", and for
/// a file URL when something exists there; for "feed" the web address that is meant ("feed://host/x" and
/// "feed:http://host/x" give "http://host/x"). Nil for every other scheme and for none.
///
/// A feed of an https address is not recognised: "feed:https://host/" gives "http:https://host/".
NSURL baseURLForWebKit(const NSURL& url);
/// The same with URLWithAnchor.
NSURL baseURLForWebKitUsingAnchor(const NSURL& url, const NSString& anchor);

namespace NSURLKelvoExtensions {

/// The URL whose string the format and its arguments make (NSStringFormat.h); nil when the format is nil or
/// empty and when that string is not a URL as it stands.
NSURL URLWithFormat_arguments(const NSString& format, std::span<const Value> arguments);

template <typename... Arguments>
NSURL URLWithFormat(const NSString& format, const Arguments&... arguments) {
    const std::array<Value, sizeof...(Arguments)> values{formatArgument(arguments)...};
    return URLWithFormat_arguments(format, values);
}

} // namespace NSURLKelvoExtensions

} // namespace kelvo
