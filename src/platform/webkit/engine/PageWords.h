#pragma once

#include <string_view>

namespace kelvo {

/// Whether the source of a page has words for its readers, shown or not: letters or digits outside of tags, comments
/// and the elements that are never text (script, style, title, template). Takes any bytes, in linear time.
bool holdsWords(std::string_view page);

} // namespace kelvo
