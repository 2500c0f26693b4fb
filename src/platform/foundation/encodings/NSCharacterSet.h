#pragma once

#include "platform/foundation/NSData.h"

namespace kelvo {

/// A set of characters as it is used here: its members among the 65,536 UTF-16 code units. Surrogates are
/// members of none of the named sets.
class NSCharacterSet {
public:
    /// Unicode's White_Space property.
    static const NSCharacterSet& whitespaceAndNewlineCharacterSet();
    /// The horizontal members of White_Space but the no-break space: general category Zs without U+00A0, and
    /// U+0009.
    static const NSCharacterSet& whitespaceCharacterSet();
    /// General category Lu.
    static const NSCharacterSet& uppercaseLetterCharacterSet();
    /// General category Ll.
    static const NSCharacterSet& lowercaseLetterCharacterSet();
    /// General category Nd.
    static const NSCharacterSet& decimalDigitCharacterSet();
    /// General categories L*, M* and N*.
    static const NSCharacterSet& alphanumericCharacterSet();
    /// General categories L*.
    static const NSCharacterSet& letterCharacterSet();

    /// 8,192 bytes: code unit c is a member when bit (c mod 8) of byte (c div 8) is set, bit 0 being the
    /// least significant.
    const NSData& bitmapRepresentation() const { return bitmap_; }
    bool characterIsMember(char16_t unit) const { return bitmap_.bytes()[unit >> 3] >> (unit & 7) & 1; }

private:
    explicit NSCharacterSet(NSData bitmap) : bitmap_(static_cast<NSData&&>(bitmap)) {}

    NSData bitmap_;
};

} // namespace kelvo
