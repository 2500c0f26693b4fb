#include "Input.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/RFC3986.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kelvo {
namespace {

void appendIfAny(NSMutableString& result, const char16_t* before, const NSString& part,
                 const char16_t* after) {
    if (part.isNil())
        return;
    result.appendString(before);
    result.appendString(part);
    result.appendString(after);
}

void checkComponents(const NSURL& url) {
    // The public parts, put together again in their order, are the string.
    const NSString absolute = url.absoluteString();
    const auto parts = rfc3986::parse(absolute);
    require(parts.has_value());
    NSMutableString whole = NSMutableString::string();
    appendIfAny(whole, u"", url.scheme(), u":");
    if (parts->authority) {
        whole.appendString(u"//");
        appendIfAny(whole, u"", url.user(), u"");
        appendIfAny(whole, u":", url.password(), u"");
        if (parts->user)
            whole.appendCharacter(u'@');
        whole.appendString(*parts->host);
        if (parts->port)
            appendIfAny(whole, u":", NSString(*parts->port), u"");
    }
    whole.appendString(parts->path);
    appendIfAny(whole, u"?", url.query(), u"");
    appendIfAny(whole, u"#", url.fragment(), u"");
    require(whole.characters() == absolute.characters());
    require(url.host().isNil() == !parts->authority.has_value());
    require(url.port() >= -1 && url.port() <= 65535);
    require(url.rawPath().isNil() == url.path().isNil() &&
            url.path().isNil() == url.lastPathComponent().isNil());
    require(url.pathExtension().length() < 1 + url.lastPathComponent().length());
    require(url == url.absoluteURL() || !url.baseURL().isNil());
}

void checkResolution(const NSString& reference, const NSURL& base) {
    const NSURL url = NSURL::URLWithString_relativeToURL(reference, base);
    if (url.isNil())
        return;
    checkComponents(url);
    const NSString absolute = url.absoluteString();
    require(url.absoluteURL().absoluteString() == absolute);
    if (!url.scheme().isNil()) {
        const NSURL again = NSURL::URLWithString_relativeToURL(absolute, base);
        // Only a reference to the base itself keeps the base's own dot segments.
        if (rfc3986::parse(reference)->path.length() > 0)
            require(again.absoluteString() == absolute);
        const NSURL twice = NSURL::URLWithString_relativeToURL(again.absoluteString(), base);
        require(twice.absoluteString() == again.absoluteString());
    }
}

} // namespace
} // namespace kelvo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kelvo;
    // The first byte says whether the rest are Latin 1 or UTF-16; a line feed parts the base from the
    // reference.
    if (size == 0)
        return 0;
    const NSString input = textOfInput(bytes, size);
    const std::size_t feed = std::min(input.characters().find(u'\n'), input.length());
    const NSString baseString = input.substringToIndex(feed);
    const NSString reference = feed < input.length() ? input.substringFromIndex(feed + 1) : NSString();

    for (const NSString& string : {baseString, reference}) {
        const NSURL strict = NSURL::URLWithString(string);
        const NSURL tolerant = NSURL::URLWithTolerantString(string);
        if (!strict.isNil()) {
            checkComponents(strict);
            require(strict.absoluteString() == string && strict == tolerant);
        }
        if (!tolerant.isNil()) {
            checkComponents(tolerant);
            require(NSURL::URLWithString(tolerant.absoluteString()) == tolerant);
            checkResolution(string, tolerant);
        }
        const NSURL file = NSURL::fileURLWithPath(string);
        if (!file.isNil()) {
            checkComponents(file);
            // Nothing of the name is lost, but slashes at its end.
            const NSString path = file.path();
            require(NSURL::fileURLWithPath(path).path() == path);
            require(path.characters().find(string.characters().substr(
                        0, string.characters().find_last_not_of(u'/') + 1)) != std::u16string_view::npos);
        }
    }
    if (!reference.isNil()) {
        checkResolution(reference, NSURL::URLWithString(baseString));
        checkResolution(reference, NSURL::URLWithTolerantString(baseString));
        const NSURL tolerant = NSURL::URLWithTolerantString(reference);
        if (!tolerant.isNil())
            checkResolution(tolerant.absoluteString(), NSURL::URLWithTolerantString(baseString));
    }
    return 0;
}
