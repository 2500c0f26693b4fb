#pragma once

#include "platform/appkit/NSFont.h"

#include <string_view>

namespace kelvo {

/// The font that a PDF calls so ("ABCDEF+TimesNewRomanPS-BoldItalicMT", "Arial,Bold"): its family as people write it,
/// and what the words after that say of weight, slant and pitch. An empty name, and one that says no family, have the
/// default one.
NSFont fontWithPDFName(std::u16string_view name, float pointSize);

} // namespace kelvo
