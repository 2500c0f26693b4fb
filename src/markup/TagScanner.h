#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"

#include <cstddef>

namespace kelvo {

// The one scanner behind all work on markup. It builds no tree, takes any text, and reports every tag,
// comment and marked section to a handler, together with the text run in front of it. All locations and
// lengths count UTF-16 code units from the start of the string.

/// What a handler is called for.
enum class TagKind {
    /// The last call of a scan, for the text after the last tag.
    text = 0,
    /// "<" up to the next ">" outside quotes. A quote opens only a value, so after "=".
    tag = 1,
    /// "<!-" up to "-->" or "--!>"; when the third character is not followed by another "-", up to "->".
    comment = 2,
    /// "<![" up to "]>" or "]-->".
    section = 3,
};

/// Called for every construct in the order of the text, and once more at the end. Returns true to stop.
///
/// `characters` are those of the whole string and valid only during the call. A handler of a scan that was
/// asked to copy may change them in place, but only in the text run and the construct it was called for; a
/// handler of any other scan must not write to them.
///
/// - `nameLocation`, `nameLength`: the tag's name without "/"; NSNotFound and 0 when there is none. A name
///   begins with the first letter in the tag and runs up to white space, "/" or ">".
/// - `tagLocation`, `tagLength`: from "<" to ">", both included. A script or style element is one tag
///   from the "<" of its opening tag to the ">" of its closing tag, so that its body is never text. A comment
///   or section that is never closed runs to the end of the string. In the last call: the string's length and
///   0.
/// - `textLocation`: the text run in front of the construct is [textLocation, tagLocation).
/// - `context`: as it was given to the scan.
using TagHandler = bool (*)(const NSString& string, char16_t* characters, std::size_t nameLocation,
                            std::size_t nameLength, std::size_t tagLocation, std::size_t tagLength,
                            std::size_t textLocation, TagKind kind, void* context);

/// Scans the string; with `copy` on a private copy of its characters, which the handler may change. An
/// ordinary tag that is never closed remains part of the last text run. A handler that stops the scan gets no
/// further call, and what it returns from the last call does not matter.
///
/// Returns false, without a call, when the string is nil or empty or there is no memory for the copy; else
/// true, also when the handler stopped the scan. What a handler throws passes through. The time grows with
/// the length of the string alone, whatever it holds.
bool GetTagsOfString(const NSString& string, TagHandler handler, void* context, bool copy);

/// GetTagsOfString that copies when `isMutable`. An NSException from the handler is logged and gives false;
/// other exceptions pass through.
bool parseXmlWithHandler_context_mutable(const NSString& string, TagHandler handler, void* context,
                                         bool isMutable);

} // namespace kelvo
