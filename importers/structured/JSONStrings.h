#pragma once

#include "importers/structured/StringLines.h"
#include "importers/support/Deadline.h"

#include <string_view>

namespace kelvo::importers {

/// Adds the strings of JSON in UTF-8, of one value or several after each other, and in what people write who allow
/// themselves comments and commas. Answers why it was not read to its end, in words; null when it was.
const char* addStringsOfJSON(std::string_view JSON, StringLines& lines, const Deadline& deadline);

/// Whether it begins as JSON does.
bool beginsLikeJSON(std::string_view text);

} // namespace kelvo::importers
