#pragma once

#include <string>

namespace kelvo::documentengine {

// Each changes a letter here and there and nothing of the length, in markup in UTF-8 or UTF-16, and tells
// whether it did.

/// Makes elements for the file's name into plain spans of their text, and the one for loading the document
/// again into one that nobody knows.
bool freezeOpenDocument(std::string& xml);
/// Makes instructions of fields for the file's name into ones that nobody knows, of which the saved result is
/// shown.
bool freezeOfficeOpenXML(std::string& xml);

} // namespace kelvo::documentengine
