#pragma once

#include "importers/support/DateText.h"

namespace kelvo::importers {

/// momentOfText(), and of what is only a year ("2011"), a month or a day ("2011-03-24") its beginning in UTC: books and
/// drawings tell no more of when they were made.
std::optional<NSDate> dayOfText(std::u16string_view text);

} // namespace kelvo::importers
