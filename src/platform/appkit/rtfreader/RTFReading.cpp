#include "platform/appkit/rtfreader/RTFReading.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/RTFPackage.h"
#include "platform/appkit/rtfreader/RTFReader.h"
#include "platform/ledger/RequestNotes.h"

#include <algorithm>
#include <string_view>

namespace kelvo {
namespace NSAttributedStringKitAdditions {
namespace {

/// The bytes from the first brace of the RTF on; empty when this is no RTF.
std::string_view sourceIn(const NSData& data) {
    std::string_view source = data.characters();
    if (source.starts_with("\xEF\xBB\xBF"))
        source.remove_prefix(3);
    source.remove_prefix(std::min(source.find_first_not_of(" \t\r\n"), source.size()));
    return source.starts_with("{\\rtf") ? source : std::string_view();
}

NSAttributedString read(const NSData& data, const NSFileWrapper* package, NSDictionary* documentAttributes) {
    if (documentAttributes)
        *documentAttributes = nullptr;
    const std::string_view source = sourceIn(data);
    if (source.empty()) {
        noteOutcome(Outcome::broken,
                    package ? u"the package has no TXT.rtf with rich text in it" : u"it is no rich text");
        return nullptr;
    }
    RTFReader reader(source, package);
    NSAttributedString text = reader.read();
    if (documentAttributes)
        *documentAttributes = reader.documentAttributes();
    return text;
}

} // namespace

NSAttributedString initWithRTF_documentAttributes(const NSData& data, NSDictionary* documentAttributes) {
    return read(data, nullptr, documentAttributes);
}

NSAttributedString initWithRTFD_documentAttributes(const NSData& data, NSDictionary* documentAttributes) {
    if (const auto package = NSFileWrapper::initWithSerializedRepresentation(data))
        return initWithRTFDFileWrapper_documentAttributes(*package, documentAttributes);
    if (documentAttributes)
        *documentAttributes = nullptr;
    noteOutcome(Outcome::broken, u"it is no RTFD, or a damaged one");
    return nullptr;
}

NSAttributedString initWithRTFDFileWrapper_documentAttributes(const NSFileWrapper& wrapper,
                                                              NSDictionary* documentAttributes) {
    if (!wrapper.isDirectory())
        return read(wrapper.regularFileContents(), nullptr, documentAttributes);
    const auto text = rtfPackageEntry(wrapper, u"TXT.rtf");
    return read(text ? text->regularFileContents() : NSData(), &wrapper, documentAttributes);
}

} // namespace NSAttributedStringKitAdditions
} // namespace kelvo
