#pragma once

namespace kelvo::postscriptengine {

// What the stand-in for PostScript and plumwick-postscript-engine say to each other. There is one message, and it is the
// only one that an engine ever gets: a dictionary, whose answer is the data of the PDF, nil when there is none.

inline constexpr const char* programName = "plumwick-postscript-engine";

/// Data: the bytes of the file.
inline constexpr const char16_t* fileKey = u"File";
/// Numbers: where the program stands in them.
inline constexpr const char16_t* beginKey = u"Begin";
inline constexpr const char16_t* lengthKey = u"Length";
/// Numbers, in points: what is to be seen of what the program draws, and how large that becomes.
inline constexpr const char16_t* leftKey = u"Left";
inline constexpr const char16_t* bottomKey = u"Bottom";
inline constexpr const char16_t* boxWidthKey = u"BoxWidth";
inline constexpr const char16_t* boxHeightKey = u"BoxHeight";
inline constexpr const char16_t* widthKey = u"Width";
inline constexpr const char16_t* heightKey = u"Height";
/// A boolean: the box is the file's own, so that the program has no say in the size of the page.
inline constexpr const char16_t* hasBoxKey = u"HasBox";

} // namespace kelvo::postscriptengine
