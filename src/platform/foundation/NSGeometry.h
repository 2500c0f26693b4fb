#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

namespace KELVO_PUBLIC kelvo {

/// Points for an image's size, pixels for its pixel size.
struct NSSize {
    float width = 0;
    float height = 0;

    friend bool operator==(const NSSize&, const NSSize&) = default;
};

struct NSPoint {
    float x = 0;
    float y = 0;

    friend bool operator==(const NSPoint&, const NSPoint&) = default;
};

/// The origin is the corner at the bottom left.
struct NSRect {
    NSPoint origin;
    NSSize size;

    friend bool operator==(const NSRect&, const NSRect&) = default;
};

/// sRGB components and opacity, each 0 to 1.
struct NSColor {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 1;

    friend bool operator==(const NSColor&, const NSColor&) = default;
};

/// "{612, 792}": each number in the shortest decimal form without an exponent that reads back to the same
/// 32-bit float ("0.1", "100000", "0.00001"; the largest float takes 39 digits). Infinities and not-a-number
/// are written "inf", "-inf" and "nan".
KELVO_PUBLIC NSString NSStringFromSize(NSSize size);
/// The size that NSStringFromSize has written; 0 by 0 for any other text.
KELVO_PUBLIC NSSize NSSizeFromString(const NSString& string);

} // namespace kelvo
