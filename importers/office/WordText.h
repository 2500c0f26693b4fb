#pragma once

#include "importers/office/Relationships.h"
#include "importers/office/TextBuilder.h"

namespace kelvo::importers {

/// What somebody reads of the text document whose main part this is: the body, then headers, footers, notes and
/// comments. Cells of tables are kept apart by tabs, their rows and paragraphs by newlines; what stands in a frame
/// follows the paragraph that it belongs to. Deleted and hidden text is left out.
void appendWordText(TextBuilder& text, Package& package, std::string_view part);

} // namespace kelvo::importers
