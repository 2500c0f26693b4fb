#pragma once

#include "platform/foundation/Visibility.h"

namespace KELVO_PUBLIC kelvo {

// The keys of the service result dictionary. An operation puts in only what it knows: a key whose value is
// unknown is left out, never set to an empty value. The keys of a PDF's own document attributes (such as
// "Producer") are merged in unchanged beside these.

/// Extracted text: a string, or an attributed string when rich text was asked for.
inline constexpr const char16_t* ResultStringKey = u"String";
/// A web archive's document source, a string.
inline constexpr const char16_t* ResultSourceKey = u"Source";
/// The absolute string of a web archive's base URL.
inline constexpr const char16_t* ResultURLKey = u"URL";
/// Boolean true: the PDF is encrypted, and no text is given.
inline constexpr const char16_t* ResultLockedKey = u"Locked";
/// The number of pages of a PDF, an integer.
inline constexpr const char16_t* ResultPageCountKey = u"PageCount";
/// A size string: of a PDF the first page's media box, of an image its size in points, of a movie its natural
/// size.
inline constexpr const char16_t* ResultSizeKey = u"Size";
/// A size string: of an image its size in pixels, of a PDF the same as its size.
inline constexpr const char16_t* ResultPixelSizeKey = u"PixelSize";
/// Boolean: the image has an alpha channel; always false for a PDF.
inline constexpr const char16_t* ResultAlphaKey = u"Alpha";
/// Seconds as a single-precision number; 0 when unknown.
inline constexpr const char16_t* ResultDurationKey = u"Duration";
/// TIFF bytes of the thumbnail or poster image.
inline constexpr const char16_t* ResultThumbnailKey = u"Thumbnail";
/// The dictionary of image properties.
inline constexpr const char16_t* ResultPropertiesKey = u"Properties";
/// RTFD bytes of a document.
inline constexpr const char16_t* ResultRtfdKey = u"Rtfd";
/// The dictionary of document attributes that the reader reported.
inline constexpr const char16_t* ResultDocumentAttributesKey = u"DocumentAttributes";

} // namespace kelvo
