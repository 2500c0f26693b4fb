#pragma once

#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string_view>

namespace kelvo::importers {

/// Of a document no more than so much is looked at.
inline constexpr std::size_t mostUnitsBeforeTitle = 16384;

/// What a Markdown document calls itself: "title" in the block of YAML or TOML at its beginning, else the heading of the
/// first level with which the text begins; nil when it has neither. A heading further down is that of a section.
NSString titleOfMarkdown(std::u16string_view text);

} // namespace kelvo::importers
