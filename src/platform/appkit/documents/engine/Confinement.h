#pragma once

#include "platform/engine/program/Confinement.h"

#include <filesystem>

namespace kelvo::documentengine {

/// What the office suite, whose programs stand in the first folder, needs to read documents: itself, fonts and
/// their settings, and the second folder, which is the engine's own.
ConfinementProfile profileOfOffice(const std::filesystem::path& programFolder,
                                   const std::filesystem::path& folder);

/// Shows the folder to all libraries as the home of the user and the place of temporary files, and no display
/// or desktop at all, so that neither the user's own settings count nor anything is left among them. What they
/// print goes nowhere.
void moveInto(const std::filesystem::path& folder);

} // namespace kelvo::documentengine
