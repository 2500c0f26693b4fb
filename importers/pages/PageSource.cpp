#include "importers/pages/PageSource.h"

#include "importers/pages/PageText.h"
#include "markup/MarkupCharset.h"
#include "markup/MarkupDecoding.h"
#include "platform/foundation/units/UnitScan.h"

#include <cstdint>
#include <span>

namespace kelvo::importers {

NSString sourceOfMarkup(const WebResource& page) {
    if (NSString marked = page._stringValue(); !marked.isNil())
        return marked;
    const auto decoded = [&](NSStringEncoding encoding) {
        return XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
            page.data(), page.textEncodingName(), encoding, page.URL());
    };
    const NSString source = decoded(NSUTF8StringEncoding);
    constexpr UnitsToFind replacement{{u'\uFFFD', u'\uFFFD', u'\uFFFD', u'\uFFFD'}, 1};
    const std::u16string_view units = source;
    const bool isOther = firstUnitEqualTo(units.data(), units.size(), replacement) < units.size() &&
                         page.textEncodingName().isEmpty() && markupCharset(source).isEmpty();
    return isOther ? decoded(NSWindowsCP1252StringEncoding) : source;
}

std::u16string textOfMarkup(std::string_view bytes, const NSString& charset, PageFacts* facts) {
    const NSData data = NSData::dataWithBytesNoCopy(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), nullptr);
    return textOfPage(sourceOfMarkup(WebResource(data, nullptr, u"text/html", charset, nullptr)), facts);
}

} // namespace kelvo::importers
