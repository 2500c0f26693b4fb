#pragma once

#include "platform/filekinds/FileContents.h"
#include "platform/foundation/NSString.h"

#include <cstdint>

namespace kelvo {

/// What a file is, as far as somebody here treats it differently from others.
enum class FileKind : std::uint8_t {
    /// Binary data that nothing is known about.
    other,
    folder,
    plainText,
    HTML,
    RTF,
    RTFD, ///< a package (a folder with TXT.rtf), or one in its serialised form
    webArchive,
    MIMEHTML,
    wordDocument,     ///< the binary format, ".doc"
    wordML,           ///< ".xml" of 2003
    officeOpenXML,    ///< ".docx"
    openDocument,     ///< ".odt"
    flatOpenDocument, ///< the same as one XML file, ".fodt"
    openOfficeText,   ///< ".sxw"
    encryptedPackage, ///< what Office Open XML is put into when it is encrypted; whether it is text does not show
    spreadsheet,
    presentation,
    book,           ///< EPUB
    archive,        ///< files in a file, or a compressed one
    damagedPackage, ///< a zip or compound file whose directory is lost, so that nothing in it can be found
    PDF,
    postScript,
    SVG,
    image, ///< of pixels
    movie,
    audio
};

/// What the contents show decides. The extension of the name (may be nil) decides only between what the
/// contents leave open: which text it is, or which binary data; it does not make text a picture, nor
/// anything a document of a word processor. An empty file is an empty text.
///
/// Text is what has no U+0000 and no sign of a binary format, and what is not UTF-8 must not have control
/// characters either; with a byte-order mark anything is text. The first MiB stands for the rest.
///
/// That a file is of a kind does not say that it can be read. The work is bounded for any contents: beside
/// the first MiB only the directory of a zip file is read, and property lists and compound files are
/// searched for a few names.
FileKind kindOfContents(const FileContents& contents, const NSString& name);

/// The same for a file or folder on the disk. `other` when it cannot be read, and for pipes and devices.
FileKind kindOfFile(const NSString& path);

/// Whether the contents are text in the sense above. PostScript and SVG may be; plain text and HTML are.
bool isText(const FileContents& contents);

} // namespace kelvo
