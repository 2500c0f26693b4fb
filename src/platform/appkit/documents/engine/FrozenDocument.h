#pragma once

#include <string>
#include <string_view>

namespace kelvo::documentengine {

/// The document without what the office suite would do at the sight of it instead of showing what it holds:
/// a field with the file's name, in place of which it would put the name of our copy, keeps the text that was
/// saved with it, and a document that loads itself again after a while does not.
///
/// Bytes that are not what the extension says come back as they are.
std::string frozenDocument(std::string_view document, std::string_view extension);

} // namespace kelvo::documentengine
