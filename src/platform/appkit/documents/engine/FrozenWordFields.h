#pragma once

#include <string>

namespace kelvo::documentengine {

/// Makes the fields for the file's name in a binary document of Word (97 and later) into ones whose saved
/// result is shown. Nothing of its length changes.
void freezeWordFields(std::string& document);

} // namespace kelvo::documentengine
