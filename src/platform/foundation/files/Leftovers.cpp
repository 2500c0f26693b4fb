#include "platform/foundation/files/Leftovers.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace kelvo {
namespace {

// Whoever makes something new waits for this.
constexpr std::size_t mostEntriesLookedAt = 100'000;
constexpr std::size_t mostLeftovers = 1'000;
constexpr std::chrono::milliseconds timeToRemove{500};

struct FolderCloser {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

bool isLetterOrDigit(char character) {
    return isASCIILetter(character) || isASCIIDigit(character);
}

std::vector<std::string> leftovers(int folder, std::string_view prefix, std::size_t randomLetters) {
    std::vector<std::string> names;
    FileDescriptor listed(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, FolderCloser> list(listed ? ::fdopendir(listed.get()) : nullptr);
    if (!list)
        return names;
    listed.release();
    for (std::size_t count = 0; count < mostEntriesLookedAt && names.size() < mostLeftovers; ++count) {
        const dirent* const entry = ::readdir(list.get());
        if (!entry)
            break;
        const std::string_view name = entry->d_name;
        struct stat facts = {};
        if (name.size() == prefix.size() + randomLetters && name.starts_with(prefix) &&
            std::ranges::all_of(name.substr(prefix.size()), isLetterOrDigit) &&
            ::fstatat(folder, entry->d_name, &facts, AT_SYMLINK_NOFOLLOW) == 0 && facts.st_uid == ::geteuid())
            names.emplace_back(name);
    }
    return names;
}

} // namespace

FileDescriptor openFolderInUse(int parent, const std::string& path) {
    FileDescriptor folder(::openat(parent, path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    // Where there are no locks nothing is taken for a leftover either.
    const bool isBeingRemoved =
        folder && ::flock(folder.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    struct stat own = {};
    struct stat present = {};
    const bool isStillThere = folder && ::fstat(folder.get(), &own) == 0 &&
                              ::fstatat(parent, path.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0 &&
                              own.st_dev == present.st_dev && own.st_ino == present.st_ino;
    return isStillThere && !isBeingRemoved ? std::move(folder) : FileDescriptor();
}

bool isFolderOutOfUse(int folder) {
    return ::flock(folder, LOCK_EX | LOCK_NB) == 0;
}

void markFolderInUse(int folder) {
    // Whoever removes leftovers there is soon done; a stranger's lock is not waited for any longer.
    const auto end = std::chrono::steady_clock::now() + 2 * timeToRemove;
    while (::flock(folder, LOCK_SH | LOCK_NB) != 0 && (errno == EWOULDBLOCK || errno == EINTR) &&
           std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void forEachLeftover(int folder, std::string_view prefix, std::size_t randomLetters,
                     const std::function<void(const std::string& name)>& remove) {
    const auto end = std::chrono::steady_clock::now() + timeToRemove;
    for (const std::string& name : leftovers(folder, prefix, randomLetters)) {
        if (std::chrono::steady_clock::now() > end)
            break;
        remove(name);
    }
}

void removeEntry(int folder, const std::string& name) noexcept {
    try {
        std::error_code ignored;
        std::filesystem::remove_all("/proc/self/fd/" + std::to_string(folder) + '/' + name, ignored);
    } catch (const std::exception&) {
        // Without memory for it, it stays for the next time.
    }
}

} // namespace kelvo
