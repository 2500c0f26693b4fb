#pragma once

#include "platform/foundation/FileIO.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace kelvo {

// What a process makes for a short while it marks as in use, by a lock that the kernel takes back however the
// process ends. So what a killed one has left is known from what another still needs.

/// Opens a folder and marks it as in use until the descriptor is closed; several may do so at a time. `path`
/// is relative to the folder `parent`, or AT_FDCWD. None when it is no folder (a link to one is none), cannot
/// be read, is being removed as a leftover, or was just now.
FileDescriptor openFolderInUse(int parent, const std::string& path);

/// Whether nobody has it in use; nobody else can have it so before the descriptor is closed or
/// markFolderInUse is called. Always false where the file system has no locks.
bool isFolderOutOfUse(int folder);
void markFolderInUse(int folder);

/// Calls `remove` with the name of each entry of the open folder that belongs to this user and is called
/// `prefix` and so many letters or digits more. Of very many entries, and when removing takes long, some are
/// left for the next time.
void forEachLeftover(int folder, std::string_view prefix, std::size_t randomLetters,
                     const std::function<void(const std::string& name)>& remove);

/// With all it holds; links are not followed.
void removeEntry(int folder, const std::string& name) noexcept;

} // namespace kelvo
