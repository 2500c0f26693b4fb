#include "platform/pdfkit/engine/LockedDocument.h"

// Its pointers are those of the standard library.
#define POINTERHOLDER_TRANSITION 4
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFExc.hh>

#include <exception>

namespace kelvo {
namespace {

constexpr int deepestPageTree = 64;

std::optional<int> pageCountOf(QPDF& document, QPDFObjectHandle pages) {
    QPDFObjectHandle count = pages.getKey("/Count");
    if (!count.isInteger())
        return std::nullopt;
    const long long number = count.getIntValue();
    // Each page is an object.
    if (number < 0 || static_cast<unsigned long long>(number) > document.getObjectCount())
        return std::nullopt;
    return static_cast<int>(number);
}

/// Pages have the box of the nearest group that they are in when they have none of their own.
std::optional<PageBox> firstMediaBoxIn(QPDFObjectHandle node) {
    std::optional<PageBox> box;
    for (int depth = 0; depth < deepestPageTree && node.isDictionary(); ++depth) {
        if (QPDFObjectHandle own = node.getKey("/MediaBox"); own.isRectangle()) {
            const QPDFObjectHandle::Rectangle corners = own.getArrayAsRectangle();
            box = PageBox{corners.llx, corners.lly, corners.urx - corners.llx, corners.ury - corners.lly};
        }
        QPDFObjectHandle kids = node.getKey("/Kids");
        if (!kids.isArray())
            return box;
        if (kids.getArrayNItems() == 0)
            break;
        node = kids.getArrayItem(0);
    }
    return std::nullopt;
}

} // namespace

LockedDocument readLockedDocument(std::string_view file) {
    LockedDocument facts;
    QPDF document;
    document.setSuppressWarnings(true);
    try {
        document.processMemoryFile("document", file.data(), file.size());
    } catch (const QPDFExc& exception) {
        // By then it has found where the objects are.
        if (exception.getErrorCode() != qpdf_e_password)
            return facts;
    }
    try {
        const QPDFObjectHandle pages = document.getTrailer().getKey("/Root").getKey("/Pages");
        if (QPDFObjectHandle(pages).isDictionary()) {
            facts.pageCount = pageCountOf(document, pages);
            facts.firstMediaBox = firstMediaBoxIn(pages);
        }
    } catch (const std::exception&) {
        // What it has found by then is true.
    }
    return facts;
}

} // namespace kelvo
