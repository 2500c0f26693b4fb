#include "platform/foundation/connections/NSPortName.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/connections/NSConnection.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>
#include <thread>

namespace kelvo {
namespace {

[[noreturn]] void refuse(const std::string& reason) {
    throw NSException(NSPortException, NSString::stringByRepairingUTF8String(reason));
}

std::string textOfError(int error) {
    return std::system_category().message(error);
}

} // namespace

std::string portNameFolder() {
    const char* runtimeFolder = std::getenv("XDG_RUNTIME_DIR");
    const bool isGiven = runtimeFolder && *runtimeFolder == '/';
    std::string folder = isGiven ? runtimeFolder : "/tmp/kelvo-" + std::to_string(geteuid());
    if (!isGiven && mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        refuse("The folder " + folder + " for the service's socket could not be made: " + textOfError(errno) +
               ".");

    struct stat facts;
    // The fallback's name can be guessed, so it must not be a link that somebody else has put there.
    if ((isGiven ? stat(folder.c_str(), &facts) : lstat(folder.c_str(), &facts)) != 0)
        refuse("The folder " + folder + " for the service's socket cannot be used: " + textOfError(errno) +
               ".");
    if (!S_ISDIR(facts.st_mode))
        refuse("The place " + folder + " for the service's socket is not a folder.");
    if (facts.st_uid != geteuid())
        refuse("The folder " + folder + " for the service's socket belongs to another user.");
    if (facts.st_mode & (S_IWGRP | S_IWOTH))
        refuse("The folder " + folder + " for the service's socket can be written by other users.");
    if (access(folder.c_str(), W_OK | X_OK) != 0 || !(facts.st_mode & S_IWUSR))
        refuse("The folder " + folder + " for the service's socket cannot be written.");
    return folder;
}

std::string socketPathOfPortName(const NSString& name) {
    const std::string bytes = name.UTF8String();
    if (bytes.empty() || bytes.find_first_of(std::string_view("/\0", 2)) != std::string::npos)
        refuse("The name \"" + bytes + "\" cannot be registered.");
    std::string path = portNameFolder() + "/" + bytes;
    if (path.size() > NSConnection::longestSocketPath)
        refuse("The path " + path + " of the service's socket has " + std::to_string(path.size()) +
               " bytes; the system allows " + std::to_string(NSConnection::longestSocketPath) + ".");
    return path;
}

std::unique_ptr<PortLock> PortLock::lock(const std::string& path, const char* suffix,
                                         double patienceSeconds) {
    const std::string lockPath = path + suffix;
    FileDescriptor file(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    if (!file)
        refuse("The lock file " + lockPath + " could not be opened: " + textOfError(errno) + ".");
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(patienceSeconds));
    while (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            refuse("The lock file " + lockPath + " could not be locked: " + textOfError(errno) + ".");
        if (Clock::now() >= end)
            return nullptr;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return std::unique_ptr<PortLock>(new PortLock(std::move(file)));
}

} // namespace kelvo
