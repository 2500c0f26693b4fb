#pragma once

#include "platform/foundation/NSString.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// The operations of KelvoImExport, numbered in the order of their declaration.
enum class Operation : std::uint8_t {
    metaDataForFile,
    RTFDWithHTML,
    writeRTFDData,
    searchableTextOfWebArchive,
    attributedStringWithContentsOfFile,
    posterImageForMovieWithFile,
    stringWithPDF,
    imageWithContentsOfFile,
    PDFImageRepOfFile
};

inline constexpr std::size_t operationCount = 9;

/// The exact name of the operation, as logs and errors print it. Nil for a number that is none.
NSString selectorOfOperation(Operation operation);

} // namespace kelvo
