#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

namespace KELVO_PUBLIC kelvo {

/// One list, or one level of a nested list, that paragraphs belong to. The markers themselves stand in the
/// text (tab, marker, tab before each item); this says how they are made.
struct NSTextList {
    /// The kind of marker in braces with literal text around it: "{disc}", "{decimal}.", "({lower-alpha})".
    /// Kinds: disc, circle, square, hyphen, check, box, diamond, decimal, octal, lower-alpha, upper-alpha,
    /// lower-roman, upper-roman, lower-hexadecimal, upper-hexadecimal, lower-greek.
    NSString markerFormat = discFormat();
    int startingItemNumber = 1;
    /// What stands before the marker: the numbers of the lists around it, "{1}" that of the outermost, with
    /// literal text around them, as "{1}." for the items "2.1", "2.2". Empty: nothing. Their kinds are those
    /// of their lists.
    NSString enclosingNumbersFormat = u"";

    static const NSString& discFormat();
    /// The marker of an item: item numbers start at startingItemNumber. A format without a known kind is
    /// its own text. Without the numbers of the lists around it.
    NSString markerForItemNumber(int itemNumber) const;

    friend bool operator==(const NSTextList&, const NSTextList&) = default;
};

} // namespace kelvo
