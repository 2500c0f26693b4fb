#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

#include <cstddef>

namespace kelvo {

// Strings from characters, bytes and files, and back into files. Nothing throws: what cannot be read,
// decoded, encoded or written, and what would pass maximumSizeInBytes, gives nil or false.

namespace NSStringKelvoExtensions {

NSString stringWithCharacter(char16_t unit);
inline NSString initWithCharacter(char16_t unit) {
    return stringWithCharacter(unit);
}

/// The text of `lengthInBytes` bytes, U+0000 among them if it is there. Nil for a null pointer and for what
/// is not valid in the encoding.
NSString stringWithCString_length_encoding(const char* bytes, std::size_t lengthInBytes,
                                           NSStringEncoding encoding);
inline NSString initWithCString_length_encoding(const char* bytes, std::size_t lengthInBytes,
                                                NSStringEncoding encoding) {
    return stringWithCString_length_encoding(bytes, lengthInBytes, encoding);
}

/// See NSStringEncoding.h; nil also for text that would pass maximumSizeInBytes.
NSString stringWithData_encoding(const NSData& data, NSStringEncoding encoding);

/// The text of a file in exactly that encoding.
NSString stringWithContentsOfFile_encoding(const NSString& path, NSStringEncoding encoding);
inline NSString initWithContentsOfFile_encoding(const NSString& path, NSStringEncoding encoding) {
    return stringWithContentsOfFile_encoding(path, encoding);
}

/// The text of a file whose encoding need not be known: in the encoding of its byte-order mark (UTF-8, UTF-32
/// or UTF-16), else in the given one, else in UTF-8 or Windows Latin 1 (NSWindowsCP1252StringEncoding), the
/// first in which all of it is valid. The last of them holds every byte, so that only a file that cannot be
/// read gives nil. An encoding that is not available (such as kCFStringEncodingInvalidId) is passed over.
///
/// `usedEncoding` may be null. It is set to the encoding found, on failure to kCFStringEncodingInvalidId.
NSString stringWithContentsOfFile_encoding_usedEncoding(const NSString& path, NSStringEncoding encoding,
                                                        NSStringEncoding* usedEncoding);
inline NSString initWithContentsOfFile_encoding_usedEncoding(const NSString& path, NSStringEncoding encoding,
                                                             NSStringEncoding* usedEncoding) {
    return stringWithContentsOfFile_encoding_usedEncoding(path, encoding, usedEncoding);
}

} // namespace NSStringKelvoExtensions

// Writing. `atomically` is as in NSData::writeToFile_atomically. `usedEncoding` may be null; it is set to the
// encoding that the file is in, or to kCFStringEncodingInvalidId when it was not written. Nil is not written.

/// False, with the file left alone, when the encoding cannot hold the text.
bool writeToFile_atomically_encoding(const NSString& text, const NSString& path, bool atomically,
                                     NSStringEncoding encoding);
/// In NSStringKelvoExtensions::defaultEncoding(); text that this cannot hold in UTF-8, and with unpaired
/// surrogates in UTF-16 (with a byte-order mark), which holds every text.
bool writeToFileUsingDefaultEncoding_atomically_usedEncoding(const NSString& text, const NSString& path,
                                                             bool atomically, NSStringEncoding* usedEncoding);
/// In the encoding that takes the fewest bytes, of several the first of: ASCII, UTF-8, ISO Latin 1, Windows
/// Latin 1, MacRoman, ISO Latin 2, Windows Latin 2, Windows Cyrillic, Windows Greek, Windows Latin 5, Shift
/// JIS, Japanese EUC, and UTF-16 (with a byte-order mark).
bool writeToFileUsingSmallestEncoding_atomically_usedEncoding(const NSString& text, const NSString& path,
                                                              bool atomically,
                                                              NSStringEncoding* usedEncoding);
/// In UTF-16 (with a byte-order mark), which is how strings are held.
bool writeToFileUsingFastestEncoding_atomically_usedEncoding(const NSString& text, const NSString& path,
                                                             bool atomically, NSStringEncoding* usedEncoding);

} // namespace kelvo
