#pragma once

namespace kelvo::documentengine {

// What DocumentEngine and plumwick-document-engine say to each other.

inline constexpr const char* programName = "plumwick-document-engine";

// A message:
/// A string: a folder of mode 0700 for whatever has to be on the disk. Who asks removes it; the engine does
/// so when nobody is left to ask.
inline constexpr const char16_t* folderKey = u"Folder";
/// The bytes of the document.
inline constexpr const char16_t* documentKey = u"Document";
/// A string: the extension of a file with such contents, which the filters go by.
inline constexpr const char16_t* extensionKey = u"Extension";

// Its answer:
/// The bytes of the document as RTF; missing when it is encrypted or cannot be read.
inline constexpr const char16_t* rtfKey = u"RTF";
/// A string for the log: why there is no engine at all.
inline constexpr const char16_t* complaintKey = u"Complaint";

} // namespace kelvo::documentengine
