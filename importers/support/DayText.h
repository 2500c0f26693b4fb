#pragma once

#include "importers/support/DateText.h"

namespace kelvo::importers {

/// momentOfClock(), and of what is only a year ("2011") or a month its beginning here: books and drawings tell no more of
/// when they were made.
std::optional<NSDate> dayOfText(std::u16string_view text);

} // namespace kelvo::importers
