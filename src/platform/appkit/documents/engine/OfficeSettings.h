#pragma once

#include <filesystem>

namespace kelvo::documentengine {

/// Makes a user profile of the office suite in that folder in which nothing runs macros, follows links or
/// keeps records. False when it could not be written.
bool writeOfficeSettings(const std::filesystem::path& profile);

} // namespace kelvo::documentengine
