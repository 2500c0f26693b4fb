#pragma once

#include <string>
#include <string_view>

namespace kelvo::importers {

/// The paragraphs that a text of the format "flowed" has in lines which end in a space, each in one line and behind as many
/// ">" as they were quoted with. Lines end with a line feed. `deletesSpaces`: those spaces are not part of the text, which
/// is so in scripts without any.
std::u16string textOfFlowed(std::u16string_view text, bool deletesSpaces);

} // namespace kelvo::importers
