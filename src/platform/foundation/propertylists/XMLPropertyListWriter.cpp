#include "platform/foundation/propertylists/XMLPropertyListWriter.h"

#include "platform/foundation/propertylists/BinaryPropertyListWriter.h"
#include "platform/foundation/propertylists/PropertyListBuilder.h"

#include <plist/plist.h>

#include <memory>
#include <string>

namespace kelvo {
namespace {

/// The library counts the bytes of its XML in 32 bits. An "&" becomes five of them, and four million values
/// may stand behind 512 tabs each, so this much always fits.
constexpr std::size_t maximumBinarySizeInBytes = 400u << 20;

/// A carriage return left as it is would be read back as a line feed. The writer itself ends lines without
/// it.
std::string escapeCarriageReturns(std::string_view xml) {
    std::string escaped;
    for (std::size_t start = 0;;) {
        const std::size_t end = xml.find('\r', start);
        escaped += xml.substr(start, end - start);
        if (end == std::string_view::npos)
            return escaped;
        escaped += "&#13;";
        start = end + 1;
    }
}

} // namespace

NSData XMLPropertyListFromValue(const Value& value) {
    std::unique_ptr<void, decltype(&plist_free)> root(nullptr, plist_free);
    {
        const NSData binary = binaryPropertyListFromValue(value, BinaryPropertyListContents::whatXMLHolds);
        if (binary.length() > maximumBinarySizeInBytes)
            throwPropertyListError(u"The property list is too large for XML.");
        plist_t read = nullptr;
        plist_from_bin(binary.characters().data(), static_cast<std::uint32_t>(binary.length()), &read);
        root.reset(read);
    }
    char* xml = nullptr;
    std::uint32_t length = 0;
    if (root)
        plist_to_xml(root.get(), &xml, &length);
    if (!xml)
        throwPropertyListError(u"The property list could not be written as XML.");
    const std::shared_ptr<const char> owner(
        xml, [](const char* text) { plist_to_xml_free(const_cast<char*>(text)); });
    const std::string_view text(xml, length);
    if (text.find('\r') != std::string_view::npos)
        return NSData::dataWithBytesNoCopy(escapeCarriageReturns(text));
    return NSData::dataWithBytesNoCopy({reinterpret_cast<const std::uint8_t*>(xml), length}, owner);
}

} // namespace kelvo
