#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSGeometry.h"

#include <cstdint>

namespace kelvo {

// The whole image in a rectangle of the current context, upside down where `flip` says so. What the image lets nothing
// through of, drawn on a screen by source-over, is drawn straight; the rest is composited.

void drawScaledInRect_flip_operation_fraction(NSImage& image, NSRect rect, bool flip,
                                              NSCompositingOperation operation, float fraction);
void drawScaledInRect_flip_operation(NSImage& image, NSRect rect, bool flip,
                                     NSCompositingOperation operation);
/// With a shadow two points below where `shadow` says so and the context draws to a screen; never in print.
void drawScaledInRect_flip_operation_shadow(NSImage& image, NSRect rect, bool flip,
                                            NSCompositingOperation operation, bool shadow);

} // namespace kelvo
