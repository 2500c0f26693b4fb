#pragma once

#include "platform/appkit/NSFont.h"
#include "platform/appkit/NSParagraphStyle.h"
#include "platform/appkit/NSTextAttachment.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <memory>
#include <optional>

namespace KELVO_PUBLIC kelvo {

/// The platform's numbers for underlines and strikethroughs.
enum NSUnderlineStyle : unsigned char {
    NSUnderlineStyleNone = 0,
    NSUnderlineStyleSingle = 1,
    NSUnderlineStyleThick = 2,
    NSUnderlineStyleDouble = 9
};

/// What one run of text looks like and means. Default-constructed: body text in the default font.
struct NSTextAttributes {
    NSFont font;
    /// Absent: the automatic colour, black on white.
    std::optional<NSColor> foregroundColor;
    /// Absent: none.
    std::optional<NSColor> backgroundColor;
    NSUnderlineStyle underlineStyle = NSUnderlineStyleNone;
    NSUnderlineStyle strikethroughStyle = NSUnderlineStyleNone;
    /// Levels up (positive) or down.
    int superscript = 0;
    /// In points up (positive) or down, in addition to what superscript does.
    float baselineOffset = 0;
    /// Added between characters, in points.
    float kern = 0;
    /// The address as it was written; nil: none.
    NSString link;
    /// Null unless the run is one NSAttachmentCharacter.
    std::shared_ptr<const NSTextAttachment> attachment;
    /// Null: the default style.
    std::shared_ptr<const NSParagraphStyle> paragraphStyle;

    const NSParagraphStyle& style() const {
        return paragraphStyle ? *paragraphStyle : NSParagraphStyle::defaultParagraphStyle();
    }

    /// What is pointed to is compared by what it says, not by identity; no style equals the default one.
    KELVO_PUBLIC_FRIEND bool operator==(const NSTextAttributes& left, const NSTextAttributes& right);
};

} // namespace kelvo
