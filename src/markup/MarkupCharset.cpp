#include "markup/MarkupCharset.h"

#include "markup/CharsetLabels.h"
#include "markup/Entities.h"
#include "markup/TagAttributes.h"
#include "markup/TagScanner.h"
#include "platform/foundation/units/ASCII.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

namespace {

NSString charsetParameter(const NSString& value) {
    constexpr std::string_view parameter = "CHARSET";
    return _copyOfAttributeOfString(value, parameter.data(), parameter.size(), u'\'', true);
}

NSString charsetOfMetaTag(const char16_t* characters, std::size_t location, std::size_t length) {
    const NSString content = _attributeOfTagCharactersWithName(characters, location, length, "CONTENT", true);
    NSString charset = charsetParameter(content);
    if (charset.isNil())
        charset = _attributeOfTagCharactersWithName(characters, location, length, "CHARSET", true);
    return stringByConvertingEntitiesToCharacters(charset);
}

struct Discovery {
    NSString charset;
    bool hasStopped = false;
    // Where a script or style element ends is up to all that follows it.
    bool hasRawText = false;
};

// The context is a Discovery.
bool RetrieveEncodingHandler(const NSString&, char16_t* characters, std::size_t nameLocation,
                             std::size_t nameLength, std::size_t tagLocation, std::size_t tagLength,
                             std::size_t, TagKind, void* context) {
    if (nameLength < 3 || nameLength > 6)
        return false;
    Discovery& discovery = *static_cast<Discovery*>(context);
    const std::u16string_view name(characters + nameLocation, nameLength);
    const char16_t second = characters[tagLocation + 1];
    if (second == u'?' && equalsASCIIIgnoringCase(name, u"xml")) {
        discovery.charset = XmlExtensions::attributeOfTagCharacters_range_withName(
            characters, {tagLocation, tagLength}, "ENCODING");
        discovery.hasStopped = !discovery.charset.isNil();
    } else if (equalsASCIIIgnoringCase(name, u"body")) {
        discovery.hasStopped = true;
    } else if (second != u'/' && equalsASCIIIgnoringCase(name, u"meta")) {
        discovery.charset = charsetOfMetaTag(characters, tagLocation, tagLength);
        discovery.hasStopped = !discovery.charset.isNil();
    } else if (equalsASCIIIgnoringCase(name, u"script") || equalsASCIIIgnoringCase(name, u"style")) {
        discovery.hasRawText = true;
    }
    return discovery.hasStopped;
}

Discovery discover(const NSString& markup) {
    Discovery discovery;
    GetTagsOfString(markup, RetrieveEncodingHandler, &discovery, false);
    if (discovery.charset.isNil())
        discovery.charset = NSString::string();
    return discovery;
}

} // namespace

NSString markupCharset(const NSString& markup) {
    return discover(markup).charset;
}

NSString markupCharsetOfBeginning(const NSString& beginning) {
    const Discovery discovery = discover(beginning);
    return discovery.hasStopped && !discovery.hasRawText ? discovery.charset : NSString();
}

NSStringEncoding markupEncoding(const NSString& markup) {
    return charset2NSStringEncoding(markupCharset(markup));
}

NSString headerCharset(const NSString& header) {
    return charsetParameter(header);
}

NSStringEncoding headerEncoding(const NSString& header) {
    return charset2NSStringEncoding(headerCharset(header));
}

} // namespace kelvo
