#pragma once

#include "platform/foundation/encodings/CFStringEncodings.h"

#include <cstdint>
#include <span>

namespace kelvo {

/// How one encoding is converted.
struct EncodingRow {
    enum class Kind : std::uint8_t {
        None,
        UTF8,
        UTF16,
        UTF16BE,
        UTF16LE,
        UTF32,
        UTF32BE,
        UTF32LE,
        /// ICU's converter of the name in `source`; a table of 256 entries is drawn from it if it is
        /// single-byte.
        ICU,
        /// glibc's converter.
        Iconv,
        /// A table of 256 entries drawn from glibc's converter.
        IconvPage,
        /// A page of our own (EncodingPages.h).
        OwnPage,
        /// A bare set of 94 rows of 94, drawn from ICU's converter.
        Pairs,
        NonLossyASCII,
    };

    CFStringEncoding encoding;
    const char* name;
    Kind kind;
    const char* source;
};

/// Every encoding that has a name, in the order of the numbers.
std::span<const EncodingRow> encodingTable();
/// Null when there is none.
const EncodingRow* encodingRow(CFStringEncoding encoding);

} // namespace kelvo
