#include "cli/KindFacts.h"

namespace kelvo::cli {

std::string_view nameOfKind(FileKind kind) {
    switch (kind) {
    case FileKind::folder:
        return "folder";
    case FileKind::plainText:
        return "plain text";
    case FileKind::HTML:
        return "HTML page";
    case FileKind::RTF:
    case FileKind::RTFD:
        return "rich text";
    case FileKind::webArchive:
    case FileKind::MIMEHTML:
        return "web archive";
    case FileKind::wordDocument:
    case FileKind::wordML:
    case FileKind::officeOpenXML:
    case FileKind::openDocument:
    case FileKind::flatOpenDocument:
    case FileKind::openOfficeText:
    case FileKind::encryptedPackage:
        return "office document";
    case FileKind::spreadsheet:
        return "spreadsheet";
    case FileKind::presentation:
        return "presentation";
    case FileKind::book:
        return "book";
    case FileKind::archive:
        return "archive";
    case FileKind::damagedPackage:
        return "damaged package";
    case FileKind::PDF:
        return "PDF";
    case FileKind::postScript:
        return "PostScript";
    case FileKind::SVG:
    case FileKind::image:
        return "image";
    case FileKind::movie:
        return "movie";
    case FileKind::audio:
        return "audio";
    case FileKind::other:
        break;
    }
    return "file";
}

bool isSlowKind(FileKind kind) {
    return kind == FileKind::HTML || kind == FileKind::webArchive || kind == FileKind::MIMEHTML ||
           kind == FileKind::PDF || kind == FileKind::postScript;
}

} // namespace kelvo::cli
