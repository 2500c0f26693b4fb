#pragma once

#include "markup/PlainTextContext.h"
#include "markup/TagScanner.h"

namespace kelvo {

/// The handler that makes searchable text of HTML: lines from the block structure, white space collapsed, no
/// text of scripts, styles, options, frames' and scripts' alternatives, and of what the page hides. The
/// context is a PlainTextContext. Needs no copy of the string: references are decoded on the way into the
/// output, and the characters are only read.
///
/// - A "line break" is one line feed, a "paragraph break" two. They are written at every tag that asks for
///   them and never merged.
/// - p, div, hr, h1 to h9, blockquote, pre: paragraph break. br, dd, dt, dl, li, ol, ul, tr: line break. td
///   and th: a space where there is no white space.
/// - a, img, input, and title, table, caption, thead, tbody, tfoot, button, label, textarea, audio, canvas,
/// embed,
///   object, video: the words on both sides belong apart, so a space follows if the line goes on. Their text
///   is text like any other; the alternative text of images is not read.
/// - address, article, aside, center, details, dialog, dir, fieldset, figcaption, figure, footer, form,
///   header, hgroup, legend, main, menu, nav, section, summary: line break, as browsers show them.
/// - All other tags leave no trace: "<b>w</b>ord" is one word.
/// - body, head, noframes and noscript count the depth of the body inside it as outside.
/// - The feed-date flag is kept for callers; it does not change the text. Of the marker bits only the index
///   bit does.
///
/// Leaves out, with the context's junkFound set: with removeJunk lines of more than 20,000 units, runs of
/// more than 10,000 outside pre, and runs of more than 3,500 inside links and headings. junkFound is also
/// set, by itself, where text is left out for the font that hides it or for markers and reads like text.
bool PlainTextHandler(const NSString& string, char16_t* characters, std::size_t nameLocation,
                      std::size_t nameLength, std::size_t tagLocation, std::size_t tagLength,
                      std::size_t textLocation, TagKind kind, void* context);

/// What a tag adds to the depth of its element: 1 when it opens it, -1 when it closes it, 0 when it does both
/// or is shorter than 3 units.
int nestingEffectOfTag(const char16_t* tag, std::size_t length);

} // namespace kelvo
