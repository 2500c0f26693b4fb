#pragma once

#include "platform/foundation/NSString.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

enum class DocumentKind : std::uint8_t {
    /// Binary data of any other kind.
    none,
    plainText,
    RTF,
    /// The serialised form of a package.
    RTFD,
    HTML,
    webArchive,
    MIMEHTML,
    wordDocument,     ///< the binary format, ".doc"
    wordML,           ///< ".xml" of 2003
    officeOpenXML,    ///< ".docx"
    openDocument,     ///< ".odt"
    flatOpenDocument, ///< the same as one XML file, ".fodt"
    openOfficeText    ///< ".sxw"
};

/// By the whole contents of a file; `path` (may be nil) only decides whether text without a sign of anything
/// else is HTML. Whether a document of that kind can be read is not said by this.
///
/// Text is what has no U+0000 and none of the signatures of binary formats, and what is not UTF-8 must not
/// have control characters either; with a byte-order mark anything is text.
DocumentKind kindOfDocument(std::string_view bytes, const NSString& path);

} // namespace kelvo
