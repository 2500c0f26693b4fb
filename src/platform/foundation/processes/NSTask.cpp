#include "platform/foundation/processes/NSTask.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/processes/DescriptorLimit.h"
#include "platform/foundation/processes/ProcessFacts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <csignal>
#include <map>
#include <mutex>
#include <new>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {
namespace {

constexpr int mostRoundsForStrays = 100;

[[noreturn]] void throwInvalidArgument(const NSString& reason) {
    throw NSException(NSInvalidArgumentException, reason);
}

std::string bytesOf(const Value& argument) {
    auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(argument.string());
    if (!bytes)
        throwInvalidArgument(
            u"An argument of a program is no string, or one that a program cannot be given.");
    return *std::move(bytes);
}

std::vector<char*> pointersTo(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (std::string& string : strings)
        pointers.push_back(string.data());
    pointers.push_back(nullptr);
    return pointers;
}

class SpawnActions {
public:
    SpawnActions() { check(::posix_spawn_file_actions_init(&actions_)); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }

    void duplicate(int from, int to) { check(::posix_spawn_file_actions_adddup2(&actions_, from, to)); }
    void openNullDevice(int as) {
        check(::posix_spawn_file_actions_addopen(&actions_, as, "/dev/null", O_RDWR, 0));
    }
    void closeFrom(int first) { check(::posix_spawn_file_actions_addclosefrom_np(&actions_, first)); }
    void changeFolder(const std::string& path) {
        check(::posix_spawn_file_actions_addchdir_np(&actions_, path.c_str()));
    }
    const posix_spawn_file_actions_t* get() const { return &actions_; }

private:
    static void check(int error) {
        if (error != 0)
            throw std::bad_alloc();
    }

    posix_spawn_file_actions_t actions_;
};

class SpawnAttributes {
public:
    explicit SpawnAttributes(bool newSession) {
        sigset_t all;
        sigset_t none;
        ::sigfillset(&all);
        ::sigemptyset(&none);
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setflags(&attributes_,
                                   static_cast<short>(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK |
                                                      (newSession ? POSIX_SPAWN_SETSID : 0)));
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }

    const posix_spawnattr_t* get() const { return &attributes_; }

private:
    posix_spawnattr_t attributes_;
};

// The children of all tasks until they are collected.
class TaskChildren {
public:
    static TaskChildren& shared() {
        static TaskChildren children;
        return children;
    }
    void add(pid_t process) {
        const std::scoped_lock lock(mutex_);
        processes_.emplace(process, false);
    }
    void remove(pid_t process) {
        const std::scoped_lock lock(mutex_);
        processes_.erase(process);
    }
    /// Its task is gone. The kernel keeps what has become of it until it is asked for.
    void abandon(pid_t process) {
        const std::scoped_lock lock(mutex_);
        processes_[process] = true;
    }
    void collectAbandoned() {
        const std::scoped_lock lock(mutex_);
        std::erase_if(processes_, [](const auto& each) {
            return each.second && ::waitpid(each.first, nullptr, WNOHANG) != 0;
        });
    }
    bool contains(pid_t process) {
        const std::scoped_lock lock(mutex_);
        return processes_.contains(process);
    }

private:
    std::mutex mutex_;
    std::map<pid_t, bool> processes_;
};

// The C library's function for this lacks C linkage in the header of version 2.36.
FileDescriptor descriptorOfProcess(pid_t process) {
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
}

int descriptorOf(const NSTask::Stream& stream, bool isInput) {
    if (const auto* pipe = std::get_if<std::shared_ptr<NSPipe>>(&stream); pipe && *pipe)
        return ((isInput ? (*pipe)->fileHandleForReading() : (*pipe)->fileHandleForWriting()))
            ->fileDescriptor();
    if (const auto* handle = std::get_if<std::shared_ptr<NSFileHandle>>(&stream); handle && *handle)
        return (*handle)->fileDescriptor();
    return -1;
}

} // namespace

NSTask::~NSTask() {
    if (process_ == 0 || waitStatus_)
        return;
    collectIfEnded();
    if (!waitStatus_)
        TaskChildren::shared().abandon(process_);
}

void NSTask::setLaunchPath(const NSString& path) {
    requireNotLaunched();
    launchPath_ = path;
}

void NSTask::setArguments(const NSArray& arguments) {
    requireNotLaunched();
    arguments_ = arguments;
}

void NSTask::setEnvironment(const NSDictionary& environment) {
    requireNotLaunched();
    environment_ = environment;
}

void NSTask::setCurrentDirectoryPath(const NSString& path) {
    requireNotLaunched();
    currentDirectoryPath_ = path;
}

void NSTask::setStandardInput(Stream input) {
    requireNotLaunched();
    streams_[0] = std::move(input);
}

void NSTask::setStandardOutput(Stream output) {
    requireNotLaunched();
    streams_[1] = std::move(output);
}

void NSTask::setStandardError(Stream error) {
    requireNotLaunched();
    streams_[2] = std::move(error);
}

void NSTask::setSession(Session session) {
    requireNotLaunched();
    session_ = session;
}

void NSTask::launch() {
    requireNotLaunched();
    TaskChildren::shared().collectAbandoned();
    const NSFileManager& files = NSFileManager::defaultManager();

    // The program is looked for after the child has changed its folder, so its path may not depend on that.
    const bool isAbsolute = launchPath_.characters().starts_with(u'/');
    const NSString programPath =
        isAbsolute ? launchPath_ : stringByAppendingPathComponent(files.currentDirectoryPath(), launchPath_);
    const auto program = placeOfPath(programPath);
    if (!program)
        throwInvalidArgument(u"The path of a program is none.");
    std::vector<std::string> arguments{*program};
    for (const Value& argument : arguments_)
        arguments.push_back(bytesOf(argument));
    std::vector<std::string> environment;
    for (const auto& [name, value] : environment_) {
        const std::string nameBytes = bytesOf(name);
        if (nameBytes.empty() || nameBytes.find('=') != std::string::npos)
            throwInvalidArgument(u"The name of an environment variable is empty or holds an equals sign.");
        environment.push_back(nameBytes + '=' + bytesOf(value));
    }

    SpawnActions actions;
    std::array<FileDescriptor, 3> copies;
    for (int target = 0; target < 3; ++target) {
        const bool isInherited = streams_[target].index() == 0;
        const int source = isInherited ? target : descriptorOf(streams_[target], target == 0);
        if (isInherited && ::fcntl(source, F_GETFD) < 0) {
            actions.openNullDevice(target);
            continue;
        }
        if (source < 0)
            throwInvalidArgument(u"A standard stream of a program leads to a closed file handle.");
        // A copy out of the way of the three targets, which are filled one after the other.
        copies[target] = FileDescriptor(::fcntl(source, F_DUPFD_CLOEXEC, 3));
        if (!copies[target])
            throw NSException(NSGenericException, u"The system has no file descriptor left.");
        actions.duplicate(copies[target].get(), target);
    }
    actions.closeFrom(3);
    if (!currentDirectoryPath_.isNil())
        actions.changeFolder(bytesOf(currentDirectoryPath_));

    const SpawnAttributes attributes(session_ == Session::own);
    pid_t process = 0;
    int error = 0;
    {
        const FormerDescriptorLimit limitOfChild;
        error = ::posix_spawn(&process, arguments[0].c_str(), actions.get(), attributes.get(),
                              pointersTo(arguments).data(),
                              environment_.isNil() ? environ : pointersTo(environment).data());
    }
    if (error != 0) {
        const bool isScarcity = error == EAGAIN || error == ENOMEM || error == EMFILE || error == ENFILE;
        throw NSException(isScarcity ? NSGenericException : NSInvalidArgumentException,
                          programPath.stringByAppendingString(u" could not be launched: ")
                              .stringByAppendingString(NSString::stringByRepairingUTF8String(
                                  std::system_category().message(error))));
    }
    process_ = process;
    TaskChildren::shared().add(process);
    for (int target = 0; target < 3; ++target) {
        if (const auto* pipe = std::get_if<std::shared_ptr<NSPipe>>(&streams_[target]); pipe && *pipe)
            (target == 0 ? (*pipe)->fileHandleForReading() : (*pipe)->fileHandleForWriting())->closeFile();
    }
}

void NSTask::waitUntilExit() {
    wait(-1);
}

bool NSTask::waitUntilExitForSeconds(double seconds) {
    return wait(std::max(seconds, 0.0));
}

bool NSTask::wait(double seconds) {
    if (process_ == 0)
        throwInvalidArgument(u"The task has not been launched.");
    const FileDescriptor exit = isRunning() ? descriptorOfProcess(process_) : FileDescriptor();
    std::vector<std::shared_ptr<NSFileHandle>> handles;
    for (const int target : {1, 2}) {
        const auto* pipe = std::get_if<std::shared_ptr<NSPipe>>(&streams_[target]);
        if (target == 2 && streams_[2] == streams_[1])
            continue;
        if (pipe && *pipe && (*pipe)->fileHandleForReading()->fileDescriptor() >= 0)
            handles.push_back((*pipe)->fileHandleForReading());
    }

    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    while (!waitStatus_) {
        std::vector<pollfd> polled{{exit.get(), POLLIN, 0}};
        for (const auto& handle : handles)
            polled.push_back({handle->fileDescriptor(), POLLIN, 0});
        int timeout = -1;
        if (seconds >= 0) {
            const double left = seconds - std::chrono::duration<double>(Clock::now() - start).count();
            timeout = static_cast<int>(std::ceil(std::clamp(left * 1000, 0.0, 1e9)));
        }
        if (!exit)
            timeout = timeout < 0 ? 20 : std::min(timeout, 20); // a kernel without process descriptors
        const int ready = ::poll(polled.data(), polled.size(), timeout);
        for (std::size_t i = handles.size(); ready > 0 && i-- > 0;) {
            if (polled[i + 1].revents == 0)
                continue;
            if (!handles[i]->readAhead())
                handles.erase(handles.begin() + static_cast<std::ptrdiff_t>(i));
        }
        collectIfEnded();
        if (!waitStatus_ && seconds >= 0 && Clock::now() - start >= std::chrono::duration<double>(seconds))
            return false;
    }
    return true;
}

bool NSTask::isRunning() {
    if (process_ != 0 && !waitStatus_)
        collectIfEnded();
    return process_ != 0 && !waitStatus_;
}

void NSTask::terminate() {
    sendSignal(SIGTERM);
}

void NSTask::killTask() {
    sendSignal(SIGKILL);
}

void NSTask::sendSignal(int signal) {
    // Until the child is collected its number cannot be another process's.
    if (isRunning())
        ::kill(session_ == Session::own ? -process_ : process_, signal);
}

int NSTask::terminationStatus() {
    requireEnded();
    if (collectedElsewhere_)
        return -1;
    return WIFSIGNALED(*waitStatus_) ? WTERMSIG(*waitStatus_) : WEXITSTATUS(*waitStatus_);
}

bool NSTask::wasEndedBySignal() {
    requireEnded();
    return !collectedElsewhere_ && WIFSIGNALED(*waitStatus_);
}

bool NSTask::waitForEndForSeconds(double seconds) {
    const FileDescriptor exit = isCollected() ? FileDescriptor() : descriptorOfProcess(process_);
    if (!exit)
        return true;
    pollfd polled{exit.get(), POLLIN, 0};
    return ::poll(&polled, 1, static_cast<int>(std::ceil(std::clamp(seconds, 0.0, 1e6) * 1000))) > 0;
}

void NSTask::endStrayChildren() {
    int isParentOfStrays = 0;
    if (::prctl(PR_GET_CHILD_SUBREAPER, &isParentOfStrays) != 0 || isParentOfStrays == 0)
        return;
    // What they start meanwhile comes to this process when they end.
    for (int round = 0; round < mostRoundsForStrays; ++round) {
        std::vector<pid_t> strays = childProcesses();
        std::erase_if(strays, [](pid_t child) { return TaskChildren::shared().contains(child); });
        if (strays.empty())
            return;
        for (const pid_t stray : strays)
            ::kill(stray, SIGKILL);
        for (const pid_t stray : strays) {
            while (::waitpid(stray, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
    }
}

void NSTask::collectIfEnded() {
    int status = 0;
    rusage usage{};
    pid_t collected = 0;
    do
        collected = ::wait4(process_, &status, WNOHANG, &usage);
    while (collected < 0 && errno == EINTR);
    if (collected == 0)
        return;
    TaskChildren::shared().remove(process_);
    cpuMilliseconds_ =
        (static_cast<double>(usage.ru_utime.tv_sec) + static_cast<double>(usage.ru_stime.tv_sec)) * 1e3 +
        (static_cast<double>(usage.ru_utime.tv_usec) + static_cast<double>(usage.ru_stime.tv_usec)) / 1e3;
    collectedElsewhere_ = collected < 0;
    waitStatus_ = status;
}

void NSTask::requireNotLaunched() const {
    if (process_ != 0)
        throwInvalidArgument(u"The task has been launched already.");
}

void NSTask::requireEnded() {
    if (process_ == 0 || isRunning())
        throwInvalidArgument(u"The task has not ended.");
}

} // namespace kelvo
