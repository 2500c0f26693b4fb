#include "platform/appkit/documents/OpenDocumentConversion.h"

#include "platform/appkit/documents/DocumentEngine.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelvo {
namespace {

struct Row {
    std::u16string_view typePrefix;
    const char16_t* extension;
};

constexpr std::array rows{
    Row{u"com.microsoft.word.do", u"doc"},
    Row{u"com.microsoft.excel.xl", u"xls"},
    Row{u"com.microsoft.powerpoint.p", u"ppt"},
};

} // namespace

NSData flatOpenDocumentOfDocument(const NSData& document, const NSString& contentType,
                                  double timeoutSeconds) {
    const auto* const row = std::ranges::find_if(
        rows, [&](const Row& each) { return contentType.characters().starts_with(each.typePrefix); });
    return row == rows.end() ? NSData()
                             : DocumentEngine::sharedEngine().flatOpenDocumentOfDocument(
                                   document, row->extension, timeoutSeconds);
}

} // namespace kelvo
