#pragma once

#include "importers/office/Package.h"
#include "importers/office/TextBuilder.h"

#include <string_view>

namespace kelvo::importers {

/// Which texts of slides are there for one purpose only, and are left out: numbers of slides everywhere.
enum class Placeholders : std::uint8_t { shown, bodyOnly };

/// The text of a slide, of its notes, or of a drawing: paragraphs by newlines, cells of tables by tabs. It stands by itself
/// in the text.
void appendDrawingText(TextBuilder& text, Package& package, std::string_view part,
                       Placeholders placeholders = Placeholders::shown);

} // namespace kelvo::importers
