#pragma once

namespace kelvo::documentengine {

// What DocumentEngine and plumwick-document-engine say to each other.

inline constexpr const char* programName = "plumwick-document-engine";

// A message:
/// The bytes of the document.
inline constexpr const char16_t* documentKey = u"Document";
/// A string: the extension of a file with such contents, which the filters go by.
inline constexpr const char16_t* extensionKey = u"Extension";
/// A string: the format of the answer; absent for RTF.
inline constexpr const char16_t* formatKey = u"Format";
/// One file of OpenDocument XML, of whatever kind the document is.
inline constexpr const char16_t* flatOpenDocumentFormat = u"FlatOpenDocument";

// Its answer: the bytes of the document in that format; nil when it is encrypted or cannot be read, which is noted.

} // namespace kelvo::documentengine
