#pragma once

#include "platform/foundation/NSString.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// What search-engine markers switch.
enum MarkerBits : std::uint32_t {
    markerIndex = 1,
    markerSnippet = 2,
    markerAnchor = 4,
    markerAll = 7,
};

/// The body depth of a conversion that is not confined to the body: no document closes that many.
inline constexpr std::int32_t unconfinedBodyDepth = 0x3FFFFFFF;

/// State of one conversion of HTML to plain text, the context of PlainTextHandler and SimplePlainTextHandler.
///
/// The handlers check no bounds: the output must have room for four units per character of the text that is
/// scanned and for plainTextSlack more.
struct PlainTextContext {
    /// The buffer, and where the next unit goes.
    char16_t* outputStart = nullptr;
    char16_t* write = nullptr;
    /// Behind the last line break written.
    char16_t* lineStart = nullptr;
    /// "BGCOLOR" of the last body tag.
    NSString bodyColor;
    /// Decode the character references of text runs.
    bool convertEntities = false;
    /// Text is not written while one of them is set. No handler sets them; a caller may, and form elements,
    /// divisions, pre and body clear them.
    bool isSuspended[2] = {false, false};
    bool insideNoframes = false;
    bool insideNoscript = false;
    /// Decode "&quot;", "&amp;", "&lt;" and "&gt;" too; without convertEntities, these alone.
    bool standardEntities = false;
    /// Fold accented letters where references are decoded.
    bool nonUmlauted = false;
    /// The current line holds a run.
    bool lineFlag = false;
    /// Keep the line structure of pre elements.
    bool reformat = false;
    /// Outside pre.
    bool notPreformatted = true;
    /// The last run ended in white space, or something stands between it and the next one.
    bool pendingSpace = false;
    /// Any text has been written, even if it was dropped again.
    bool textWritten = false;
    /// Text is not written inside a font element that hides it, and inside a division judged to be junk.
    bool hiddenFont = false;
    bool junkDivision = false;
    /// Inside a font element of class "feed_date". For callers: text is written all the same.
    bool feedDate = false;
    /// Drop over-long lines and runs.
    bool removeJunk = false;
    /// Set when text was left out that reads like text.
    bool junkFound = false;
    /// Honour marker comments.
    bool markers = false;
    /// Text is written only while it is at least 1.
    std::int32_t bodyDepth = unconfinedBodyDepth;
    /// How many links and headings are open.
    std::int32_t linkDepth = 0;
    std::uint32_t markerBits = markerAll;
};

/// Units that the handlers may use beyond the four per character.
inline constexpr std::size_t plainTextSlack = 64;

} // namespace kelvo
