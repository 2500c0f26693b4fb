#pragma once

#include "importers/pages/PageFacts.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string>

namespace kelvo::importers {

/// What is behind is left out of a page: the units that are made of it take several times its own memory.
inline constexpr std::size_t mostUnitsOfPage = 2 * mostUnitsOfText;

/// What somebody who looks at the page reads, with its lines and no more than one empty line between them: no title, and
/// nothing of scripts, hidden elements, and what is only there for browsers that show less. What the page says of
/// itself goes into `facts`, unless that is null.
std::u16string textOfPage(const NSString& source, PageFacts* facts);

} // namespace kelvo::importers
