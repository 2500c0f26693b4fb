#pragma once

#include "cli/JSONView.h"
#include "cli/Output.h"
#include "platform/foundation/Value.h"

#include <string>

namespace kelvo::cli {

/// An answer for people, as lines with a line end each: one key a line, text over several lines indented
/// below its key, data as its size and where it was written. Whatever comes from files is made printable.
std::string textOfResult(const Value& result, const WrittenBytes& written, const Output& output);

/// A whole text: on a terminal made printable, elsewhere as it is.
std::string wholeText(const NSString& text, const Output& output);
/// The same with a line end behind it where it has none. Nothing for an empty text.
std::string linesOfText(const NSString& text, const Output& output);

/// "12.3 KB, written to report.rtf"; for data that went into no file its size.
std::string textOfData(const NSData& data, const WrittenBytes& written);

/// One value in one line, cut with "…" after about `width` characters.
std::string summaryOfValue(const Value& value, std::size_t width);

/// The first lines of a text that are not blank, each cut after about `width` characters.
std::vector<std::string> firstLines(const NSString& text, std::size_t count, std::size_t width);

} // namespace kelvo::cli
