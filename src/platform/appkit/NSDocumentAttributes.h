#pragma once

namespace kelvo {

// Keys of the dictionary in which a document says of itself what its text does not. The type of the value
// stands after each; lengths are in points.

inline constexpr const char16_t* NSDocumentTypeDocumentAttribute = u"DocumentType"; // string, below
inline constexpr const char16_t* NSUTIDocumentAttribute = u"UTI";                   // string
inline constexpr const char16_t* NSCharacterEncodingDocumentAttribute =
    u"CharacterEncoding";                                                     // NSStringEncoding
inline constexpr const char16_t* NSConvertedDocumentAttribute = u"Converted"; // < 0 lossy, 0 original, > 0
inline constexpr const char16_t* NSCocoaVersionDocumentAttribute = u"CocoaRTFVersion"; // number
inline constexpr const char16_t* NSPaperSizeDocumentAttribute = u"PaperSize";          // size
inline constexpr const char16_t* NSLeftMarginDocumentAttribute = u"LeftMargin";        // double
inline constexpr const char16_t* NSRightMarginDocumentAttribute = u"RightMargin";      // double
inline constexpr const char16_t* NSTopMarginDocumentAttribute = u"TopMargin";          // double
inline constexpr const char16_t* NSBottomMarginDocumentAttribute = u"BottomMargin";    // double
inline constexpr const char16_t* NSViewSizeDocumentAttribute = u"ViewSize";            // size
inline constexpr const char16_t* NSViewZoomDocumentAttribute = u"ViewZoom";            // double, percent
inline constexpr const char16_t* NSViewModeDocumentAttribute = u"ViewMode"; // int, 0 plain, 1 by pages
inline constexpr const char16_t* NSReadOnlyDocumentAttribute = u"ReadOnly"; // int, 1 or more: yes
inline constexpr const char16_t* NSBackgroundColorDocumentAttribute = u"BackgroundColor"; // colour
inline constexpr const char16_t* NSHyphenationFactorDocumentAttribute =
    u"HyphenationFactor"; // double, 0 to 1
inline constexpr const char16_t* NSDefaultTabIntervalDocumentAttribute = u"DefaultTabInterval";  // double
inline constexpr const char16_t* NSTextScalingDocumentAttribute = u"TextScaling";                // int
inline constexpr const char16_t* NSTitleDocumentAttribute = u"NSTitleDocumentAttribute";         // string
inline constexpr const char16_t* NSCompanyDocumentAttribute = u"NSCompanyDocumentAttribute";     // string
inline constexpr const char16_t* NSCopyrightDocumentAttribute = u"NSCopyrightDocumentAttribute"; // string
inline constexpr const char16_t* NSSubjectDocumentAttribute = u"NSSubjectDocumentAttribute";     // string
inline constexpr const char16_t* NSAuthorDocumentAttribute = u"NSAuthorDocumentAttribute";       // string
inline constexpr const char16_t* NSKeywordsDocumentAttribute = u"NSKeywordsDocumentAttribute";   // strings
inline constexpr const char16_t* NSCommentDocumentAttribute = u"NSCommentDocumentAttribute";     // string
inline constexpr const char16_t* NSEditorDocumentAttribute = u"NSEditorDocumentAttribute";       // string
inline constexpr const char16_t* NSManagerDocumentAttribute = u"NSManagerDocumentAttribute";     // string
inline constexpr const char16_t* NSCategoryDocumentAttribute = u"NSCategoryDocumentAttribute";   // string
inline constexpr const char16_t* NSCreationTimeDocumentAttribute = u"NSCreationTimeDocumentAttribute"; // date
inline constexpr const char16_t* NSModificationTimeDocumentAttribute =
    u"NSModificationTimeDocumentAttribute"; // date

// Values of NSDocumentTypeDocumentAttribute.
inline constexpr const char16_t* NSPlainTextDocumentType = u"NSPlainText";
inline constexpr const char16_t* NSRTFTextDocumentType = u"NSRTF";
inline constexpr const char16_t* NSRTFDTextDocumentType = u"NSRTFD";
inline constexpr const char16_t* NSHTMLTextDocumentType = u"NSHTML";
inline constexpr const char16_t* NSWebArchiveTextDocumentType = u"NSWebArchive";
inline constexpr const char16_t* NSDocFormatTextDocumentType = u"NSDocFormat";
inline constexpr const char16_t* NSWordMLTextDocumentType = u"NSWordML";
inline constexpr const char16_t* NSOfficeOpenXMLTextDocumentType = u"NSOfficeOpenXML";
inline constexpr const char16_t* NSOpenDocumentTextDocumentType = u"NSOpenDocument";

} // namespace kelvo
