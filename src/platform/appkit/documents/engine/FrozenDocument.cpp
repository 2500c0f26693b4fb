#include "platform/appkit/documents/engine/FrozenDocument.h"

#include "platform/appkit/documents/engine/FrozenMarkup.h"
#include "platform/appkit/documents/engine/FrozenWordFields.h"
#include "platform/appkit/documents/engine/ZipCopy.h"

namespace kelvo::documentengine {

std::string frozenDocument(std::string_view document, std::string_view extension) {
    std::string copy(document);
    if (extension == "doc")
        freezeWordFields(copy);
    else if (extension == "fodt")
        freezeOpenDocument(copy);
    else if (extension == "docx")
        changeXMLInZip(copy, freezeOfficeOpenXML);
    else if (extension == "odt" || extension == "sxw")
        changeXMLInZip(copy, freezeOpenDocument);
    return copy;
}

} // namespace kelvo::documentengine
