#pragma once

#include "importers/office/Relationships.h"
#include "importers/office/TextBuilder.h"

#include <cstddef>

namespace kelvo::importers {

/// The text of the workbook whose main part this is: each sheet, in the workbook's order, with its name, its rows by
/// newlines and their cells by tabs, then its comments and drawings. Numbers stand as they were calculated last, without
/// their formats. Answers how many sheets there are.
std::size_t appendSheetText(TextBuilder& text, Package& package, std::string_view part);

} // namespace kelvo::importers
