#pragma once

#include "cli/JSONView.h"
#include "cli/Output.h"
#include "platform/foundation/Value.h"

#include <string>

namespace kelvo::cli {

/// An answer for people, as lines with a line end each: one key a line, text over several lines indented
/// below its key, data as its size and where it was written. Whatever comes from files is made printable.
std::string textOfResult(const Value& result, const WrittenBytes& written, const Output& output);

/// One value in one line, cut with "…" after about `width` characters.
std::string summaryOfValue(const Value& value, std::size_t width);

/// The first lines of a text that are not blank, each cut after about `width` characters.
std::vector<std::string> firstLines(const NSString& text, std::size_t count, std::size_t width);

} // namespace kelvo::cli
