#pragma once

#include <filesystem>

namespace kelvo::documentengine {

/// Takes the network away from this process, where the system lets a process do so by itself (not in every
/// container); elsewhere the settings of the office suite alone keep it from fetching anything. To be called
/// before any thread is started.
void leaveNetwork();

/// Bounds what a document can make of this process: memory, the size of a file, no dump of either. What it
/// prints goes nowhere.
void boundResources();

/// Shows the folder to all libraries as the home of the user and the place of temporary files, and no display
/// or desktop at all, so that neither the user's own settings count nor anything is left among them.
void moveInto(const std::filesystem::path& folder);

} // namespace kelvo::documentengine
