#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"

namespace kelvo {

// Keys of the options.

/// Boolean: whether the web engine reads the page. There is no other reader, so it is read all the same
/// without.
inline constexpr const char16_t* NSUseWebKitDocumentOption = u"UseWebKit";
/// Seconds to wait for the page to load; what has loaded by then is used. 60 without.
inline constexpr const char16_t* NSTimeoutDocumentOption = u"Timeout";
/// An NSObject that is a WebResourceLoadDelegate. Without one every resource is fetched.
inline constexpr const char16_t* NSWebResourceLoadDelegateDocumentOption = u"WebResourceLoadDelegate";
/// The NSURL that relative references are resolved against. Without it they resolve to nothing.
inline constexpr const char16_t* NSBaseURLDocumentOption = u"BaseURL";
/// A string: the charset label from outside the page. Without it the page's own declaration counts.
inline constexpr const char16_t* NSTextEncodingNameDocumentOption = u"TextEncodingName";

namespace NSAttributedStringKitAdditions {

/// The page as the web engine lays it out: computed styles become attributes, images attachments. Runs the
/// current run loop while the page loads. Nil when the data are nil, when there is no web engine, and when it
/// failed or was ended meanwhile. `documentAttributes` (may be null) is set to what the page says of itself,
/// to nil on failure.
NSAttributedString initWithHTML_options_documentAttributes(const NSData& data, const NSDictionary& options,
                                                           NSDictionary* documentAttributes);

} // namespace NSAttributedStringKitAdditions
} // namespace kelvo
