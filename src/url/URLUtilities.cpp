#include "url/URLUtilities.h"

#include "text/StringComparison.h"
#include "text/SubstringSearch.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelvo {

namespace {

struct MarkupName {
    std::u16string_view part;
    bool isCaseSensitive;
};

constexpr std::array markupNames{
    MarkupName{u"htm", false}, MarkupName{u"sgml", false}, MarkupName{u"xml", false},
    MarkupName{u"rdf", true},  MarkupName{u"rss", true},   MarkupName{u"rsd", false},
};

} // namespace

bool isMarkupMIMEType(const NSString& type) {
    if (hasPrefixNoCase(type, u"text/"))
        return true;
    return hasPrefixNoCase(type, u"application/") &&
           std::ranges::any_of(markupNames, [&type](const MarkupName& name) {
               return containsSubstring_caseSensitive(type, name.part, name.isCaseSensitive);
           });
}

} // namespace kelvo
