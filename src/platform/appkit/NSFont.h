#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

namespace KELVO_PUBLIC kelvo {

/// A typeface in one size and style, described by what rich text needs to say about it. Nothing is looked up:
/// the family may not be installed here.
struct NSFont {
    /// "Helvetica", "Times New Roman", …; never nil.
    NSString familyName = defaultFamilyName();
    float pointSize = 12;
    bool isBold = false;
    bool isItalic = false;
    bool isFixedPitch = false;

    /// "Helvetica": the family of text that says nothing about its font.
    static const NSString& defaultFamilyName();

    friend bool operator==(const NSFont&, const NSFont&) = default;
};

} // namespace kelvo
