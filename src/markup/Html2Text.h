#pragma once

#include "markup/TagScanner.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

// Category Html2Text of NSString: the plain text of HTML, for searching.
//
// The receiver itself comes back when it has no text or no markup, when it is nil or empty, and when it is
// too long: its length times 8 must not pass maximumSizeInBytes. All take time that grows with the receiver's
// length alone.
//
// - `nonUmlauted`: accented letters as plain ones.
// - `reformat`: keeps the line structure of pre elements; else their line ends become spaces, as everywhere.
// - `onlyBody`: no text outside the body element. A document without text in it is converted as a whole.
// - `removeJunk`: leaves out over-long lines and runs (PlainTextHandler.h).
// - `junkFound`: null, or is told whether text was left out; false when the receiver comes back.
// - `googleTags`: leaves out what the comments "googleoff: index" and "googleon: index" enclose.

NSString stringByConvertingHtml2PlainText(const NSString& string);
/// With `reformat`.
NSString stringByConvertingHtml2ReformattedPlainText(const NSString& string);
NSString stringByConvertingHtml2PlainTextNonUmlauted(const NSString& string, bool nonUmlauted);
NSString stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(
    const NSString& string, bool nonUmlauted, bool reformat, bool onlyBody, bool googleTags);
NSString stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_removeJunk_googleTags(
    const NSString& string, bool nonUmlauted, bool reformat, bool onlyBody, bool removeJunk, bool* junkFound,
    bool googleTags);
/// `entities`: decode character references; `stdEntities`: those of markup too. With the latter alone only
/// "&quot;", "&amp;", "&lt;" and "&gt;" are decoded.
NSString
stringByConvertingHtml2PlainTextEntities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
    const NSString& string, bool entities, bool stdEntities, bool nonUmlauted, bool reformat, bool onlyBody,
    bool removeJunk, bool* junkFound, bool googleTags);
/// The text of the body alone, unformatted: a space before each run of text.
NSString stringByConvertingHtml2SimplifiedPlainText(const NSString& string);

/// Whether `text`, which one of them made of `html`, is the markup of a page that has no text, and not a text
/// without markup. Both come back as they were; only the latter is something to read.
bool isBareMarkup(const NSString& text, const NSString& html);

/// The driver of them all. The handler is one that writes as a PlainTextContext tells.
NSString
_convertHtml2PlainTextUsingHandler_entities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
    const NSString& string, TagHandler handler, bool entities, bool stdEntities, bool nonUmlauted,
    bool reformat, bool onlyBody, bool removeJunk, bool* junkFound, bool googleTags);

} // namespace kelvo
