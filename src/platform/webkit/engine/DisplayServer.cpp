#include "platform/webkit/engine/DisplayServer.h"

#include "platform/engine/program/Confinement.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/units/ASCII.h"

#include <X11/Xauth.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {
namespace {

/// A new cookie for any display, whose number is not known yet.
bool writeAuthority(const std::string& path) {
    char cookie[16];
    const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    FILE* const stream = file ? fdopen(dup(file.get()), "w") : nullptr;
    if (!stream)
        return false;
    bool isWritten = getrandom(cookie, sizeof cookie, 0) == sizeof cookie;
    char name[] = "MIT-MAGIC-COOKIE-1";
    Xauth entry{};
    entry.family = FamilyWild;
    entry.name = name;
    entry.name_length = sizeof name - 1;
    entry.data = cookie;
    entry.data_length = sizeof cookie;
    isWritten = isWritten && XauWriteAuth(stream, &entry) == 1;
    return fclose(stream) == 0 && isWritten;
}

/// The server has a compiler for its keyboard, whose result it puts into the first folder that it may write.
constexpr const char* foldersOfKeyboards[] = {"/var/lib/xkb", "/tmp"};

/// What talks to the server may send it anything.
ConfinementProfile profileOfServer(const std::string& authorityPath) {
    constexpr const char* sockets = "/tmp/.X11-unix";
    // As the server would make it itself; it may make nothing in the folder above.
    if (mkdir(sockets, 01777) == 0)
        chmod(sockets, 01777);
    ConfinementProfile profile;
    profile.readable = {"/usr", authorityPath};
    profile.writable = {sockets};
    for (const char* folder : foldersOfKeyboards) {
        if (access(folder, W_OK | X_OK) == 0) {
            profile.writable.emplace_back(folder);
            break;
        }
    }
    profile.mayServeUnixSockets = true;
    profile.mayStartPrograms = true;
    // A display's number is free when its name is among those of the machine.
    profile.keepsNetwork = true;
    return profile;
}

} // namespace

DisplayServer::DisplayServer(std::string authorityPath, const char* screen)
    : authorityPath_(std::move(authorityPath)) {
    int ends[2];
    if (!writeAuthority(authorityPath_) || pipe2(ends, O_CLOEXEC) != 0)
        return;
    const ConfinementProfile profile = profileOfServer(authorityPath_);
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0) {
        // In a session of its own it is told to end, and then removes its socket and lock file, which it
        // could not if it were killed with the rest of the group.
        setsid();
        confine(profile);
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        if (getppid() != parent)
            _exit(0);
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, STDIN_FILENO);
        dup2(nothing, STDERR_FILENO);
        // The number goes to standard output.
        dup2(ends[1], STDOUT_FILENO);
        execlp("Xvfb", "Xvfb", "-displayfd", "1", "-auth", authorityPath_.c_str(), "-screen", "0", screen,
               "-nolisten", "tcp", "-noreset", "-dpi", "96", "-extension", "GLX", nullptr);
        _exit(127);
    }
    close(ends[1]);
    if (process_ < 0) {
        process_ = 0;
        close(ends[0]);
        return;
    }
    nameDescriptor_ = ends[0];
}

DisplayServer::~DisplayServer() {
    if (nameDescriptor_ >= 0)
        close(nameDescriptor_);
    if (process_ > 0) {
        kill(process_, SIGTERM);
        while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
}

std::string DisplayServer::waitForDisplay(int timeoutMilliseconds) {
    if (nameDescriptor_ < 0)
        return {};
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_MONOTONIC, &time);
        return time.tv_sec * 1000 + time.tv_nsec / 1000000;
    };
    const long end = now() + timeoutMilliseconds;
    std::string number;
    for (;;) {
        pollfd wait{nameDescriptor_, POLLIN, 0};
        const long left = end - now();
        const int ready = left > 0 ? poll(&wait, 1, static_cast<int>(left)) : 0;
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return {};
        char unit = 0;
        const ssize_t count = read(nameDescriptor_, &unit, 1);
        if (count <= 0)
            return {};
        if (unit == '\n')
            return number.empty() ? std::string() : ":" + number;
        if (!isASCIIDigit(unit) || number.size() > 8)
            return {};
        number += unit;
    }
}

} // namespace kelvo
