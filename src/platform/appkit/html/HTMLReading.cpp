#include "platform/appkit/html/HTMLReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/html/HTMLAttributes.h"
#include "platform/webkit/WebEngine.h"

namespace kelvo {
namespace {

constexpr double secondsWithoutTimeout = 60;
WebEngine::Options engineOptions(const NSDictionary& options) {
    WebEngine::Options engineOptions;
    const NSNumber* timeout = options.objectForKey(NSTimeoutDocumentOption).numberIfAny();
    engineOptions.timeoutSeconds = timeout ? timeout->doubleValue() : secondsWithoutTimeout;
    engineOptions.textEncodingName = options.objectForKey(NSTextEncodingNameDocumentOption).string();
    engineOptions.baseURL = options.objectForKey(NSBaseURLDocumentOption).url();
    engineOptions.delegate = dynamic_cast<WebResourceLoadDelegate*>(
        options.objectForKey(NSWebResourceLoadDelegateDocumentOption).object().get());
    return engineOptions;
}

} // namespace

NSAttributedString NSAttributedStringKitAdditions::initWithHTML_options_documentAttributes(
    const NSData& data, const NSDictionary& options, NSDictionary* documentAttributes) {
    if (documentAttributes)
        *documentAttributes = nullptr;
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it holds the delegate meanwhile.
    const NSDictionary heldOptions = options;
    const auto page = WebEngine::sharedEngine().render(data, engineOptions(heldOptions));
    if (!page)
        return nullptr;
    if (documentAttributes) {
        auto attributes = NSMutableDictionary::dictionary();
        attributes.setObject_forKey(NSHTMLTextDocumentType, NSDocumentTypeDocumentAttribute);
        if (page->title.length() > 0)
            attributes.setObject_forKey(page->title, NSTitleDocumentAttribute);
        *documentAttributes = attributes;
    }
    return attributedStringOfPage(*page);
}

} // namespace kelvo
