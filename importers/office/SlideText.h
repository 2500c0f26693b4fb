#pragma once

#include "importers/office/Relationships.h"
#include "importers/office/TextBuilder.h"

#include <cstddef>

namespace kelvo::importers {

/// The text of the presentation whose main part this is: each slide in the order in which it is shown, with its notes and
/// comments. Answers how many slides there are.
std::size_t appendSlideText(TextBuilder& text, Package& package, std::string_view part);

} // namespace kelvo::importers
