#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/processes/NSPipe.h"

#include <optional>
#include <variant>

#include <sys/types.h>

namespace kelvo {

/// One run of a program as a child process; no shell is involved. The child starts with default signal
/// handling, an empty signal mask, and no descriptors but 0 to 2.
///
/// Destroying the object leaves a running child alone. Changing an argument after the launch, and launching
/// twice, throw NSException (NSInvalidArgumentException). Not for use from two threads at once.
class NSTask {
public:
    /// Where one of the standard streams leads: by default to that of this process (or to nothing, where that
    /// is closed).
    using Stream = std::variant<std::monostate, std::shared_ptr<NSPipe>, std::shared_ptr<NSFileHandle>>;
    enum class Session { ofParent, own };

    NSTask() = default;
    NSTask(const NSTask&) = delete;
    NSTask& operator=(const NSTask&) = delete;
    ~NSTask();

    /// The path of the program; $PATH plays no part.
    void setLaunchPath(const NSString& path);
    /// Strings, after the name of the program itself.
    void setArguments(const NSArray& arguments);
    /// Strings by names; nil, the default, is the environment of this process.
    void setEnvironment(const NSDictionary& environment);
    /// Nil, the default, is that of this process.
    void setCurrentDirectoryPath(const NSString& path);
    /// This process's copy of a pipe's other end is closed at the launch, so a pipe serves one task.
    void setStandardInput(Stream input);
    void setStandardOutput(Stream output);
    void setStandardError(Stream error);
    /// In a session of its own the child has no controlling terminal, and terminate and killTask reach the
    /// processes that it has started and that stayed in its group.
    void setSession(Session session);

    /// Throws NSException (NSInvalidArgumentException) when the program is missing or cannot be executed, the
    /// folder does not exist, or an argument is no string or holds U+0000; NSException (NSGenericException)
    /// when the system has no room for another process.
    void launch();
    /// Waits for the end of the child. Meanwhile what it writes to the pipes of its standard output and error
    /// is read into memory (see NSFileHandle::readAhead), so it never waits for a reader; nothing is lost.
    void waitUntilExit();
    /// The same for no longer than that; false when the child still runs.
    bool waitUntilExitForSeconds(double seconds);
    /// Waits as long for the end alone, and leaves the child to be collected: until then its number, and that of the
    /// group that it leads, cannot be another's. False when it still runs.
    bool waitForEndForSeconds(double seconds);
    bool isRunning();
    /// Ask the child to end, or end it. Nothing happens when it has ended already or was not launched.
    void terminate();
    void killTask();

    /// The exit status of the child, or the number of the signal that ended it; -1 when something else in this
    /// process has collected it. Throws NSException (NSInvalidArgumentException) as long as it has not ended.
    int terminationStatus();
    bool wasEndedBySignal();
    /// What it and all that it had waited for used of the CPU. 0 before it has been collected.
    double cpuMilliseconds() const { return cpuMilliseconds_; }
    /// 0 before the launch.
    pid_t processIdentifier() const { return process_; }

    /// Ends, and collects, the children of this process that no task has started: what ended children have left
    /// behind. Does nothing unless this process has asked the kernel for those (PR_SET_CHILD_SUBREAPER).
    static void endStrayChildren();

private:
    void requireNotLaunched() const;
    void requireEnded();
    void collectIfEnded();
    bool isCollected() const { return process_ == 0 || waitStatus_; }
    void sendSignal(int signal);
    bool wait(double seconds);

    NSString launchPath_;
    NSArray arguments_;
    NSDictionary environment_;
    NSString currentDirectoryPath_;
    Stream streams_[3];
    Session session_ = Session::ofParent;
    pid_t process_ = 0;
    std::optional<int> waitStatus_;
    bool collectedElsewhere_ = false;
    double cpuMilliseconds_ = 0;
};

} // namespace kelvo
