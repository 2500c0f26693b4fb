#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/processes/DescriptorLimit.h"
#include "platform/foundation/processes/NSTask.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kelvo {
namespace {

NSString string(std::string_view bytes) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(bytes);
}

/// A shell, where a program is needed that does something in particular.
struct Shell {
    explicit Shell(const char16_t* script) {
        task.setLaunchPath(u"/bin/sh");
        task.setArguments(NSArray::arrayWithObjects({u"-c", script}));
        task.setStandardOutput(output);
    }
    std::string rest() const {
        return std::string(output->fileHandleForReading()->readDataToEndOfFile().characters());
    }

    std::shared_ptr<NSPipe> output = NSPipe::pipe();
    NSTask task;
};

NSString nameOfExceptionFrom(const std::function<void()>& action) {
    try {
        action();
    } catch (const NSException& exception) {
        return exception.name();
    }
    return nullptr;
}

TEST(Task, GetsTheDescriptorLimitFromBeforeItWasRaised) {
    rlimit own{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &own), 0);
    const rlimit lower{200, own.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &lower), 0);
    raiseDescriptorLimit();
    const FileDescriptor beyond(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 300));
    EXPECT_TRUE(beyond);
    Shell shell(u"ulimit -S -n");
    shell.task.launch();
    shell.task.waitUntilExit();
    EXPECT_EQ(shell.rest(), "200\n");
    rlimit raised{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &raised), 0);
    EXPECT_EQ(raised.rlim_cur, own.rlim_max);
}

TEST(Task, ArgumentsAndEnvironmentArriveAsTheyAre) {
    const tests::TemporaryFolder folder;
    const auto output = NSPipe::pipe();
    NSTask task;
    task.setLaunchPath(u"/bin/sh");
    task.setArguments(NSArray::arrayWithObjects({u"-c", u"printf '%s|' \"$@\" \"$V\" \"$PWD\" \"$HOME\"",
                                                 u"sh", u"a b", u"$(x)", u"", u"\u00E4\xDCFF"}));
    NSMutableDictionary environment = NSMutableDictionary::dictionary();
    environment.setObject_forKey(u"v w", u"V");
    task.setEnvironment(environment.copy());
    task.setCurrentDirectoryPath(string(folder.path()));
    task.setStandardOutput(output);
    task.launch();
    EXPECT_GT(task.processIdentifier(), 0);
    EXPECT_EQ(output->fileHandleForReading()->readDataToEndOfFile().characters(),
              "a b|$(x)||\xC3\xA4\xFF|v w|" + folder.path() + "||");
    task.waitUntilExit();
    EXPECT_EQ(task.terminationStatus(), 0);
}

TEST(Task, WaitingNeverBlocksTheWriter) {
    // Ten times what a pipe holds, on both streams, before the reader looks at either.
    const auto error = NSPipe::pipe();
    Shell shell(u"head -c 700000 /dev/zero; head -c 700000 /dev/zero >&2; exit 3");
    shell.task.setStandardError(error);
    shell.task.launch();
    shell.task.waitUntilExit();
    EXPECT_EQ(shell.task.terminationStatus(), 3);
    EXPECT_FALSE(shell.task.wasEndedBySignal());
    EXPECT_EQ(shell.output->fileHandleForReading()->availableData().length(), 700000U);
    EXPECT_EQ(error->fileHandleForReading()->readDataToEndOfFile().length(), 700000U);
    EXPECT_EQ(error->fileHandleForReading()->availableData().length(), 0U);
}

TEST(Task, ChildStartsClean) {
    // A descriptor and signal settings that are not to be handed down. (The six digits leave out two signals
    // that the C library keeps for itself.)
    const FileDescriptor leaked(::fcntl(STDOUT_FILENO, F_DUPFD, 20));
    const auto previous = std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGUSR1);
    ::pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    Shell shell(u"grep -E 'SigBlk|SigIgn' /proc/self/status | grep -oE '.{6}$'; ls /proc/$$/fd; cut -d' ' "
                u"-f6 /proc/$$/stat; echo $$");
    shell.task.setStandardInput(NSFileHandle::fileHandleWithNullDevice());
    shell.task.setStandardError(shell.output);
    shell.task.setSession(NSTask::Session::own);
    shell.task.launch();
    ::pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    std::signal(SIGPIPE, previous);
    const std::string id = std::to_string(shell.task.processIdentifier());
    EXPECT_EQ(shell.rest(), "000000\n000000\n0\n1\n2\n" + id + "\n" + id + "\n");
    shell.task.waitUntilExit();
}

TEST(Task, StreamsMayCross) {
    // Standard output leads to this process's standard error and the other way round.
    const tests::TemporaryFolder folder;
    const int savedOutput = ::dup(1);
    const int savedError = ::dup(2);
    const FileDescriptor first(::open(folder.path("1").c_str(), O_WRONLY | O_CREAT, 0600));
    const FileDescriptor second(::open(folder.path("2").c_str(), O_WRONLY | O_CREAT, 0600));
    ::dup2(first.get(), 1);
    ::dup2(second.get(), 2);
    {
        Shell shell(u"echo out; echo err >&2");
        shell.task.setStandardOutput(std::make_shared<NSFileHandle>(FileDescriptor(2)));
        shell.task.setStandardError(std::make_shared<NSFileHandle>(FileDescriptor(1)));
        shell.task.launch();
        shell.task.waitUntilExit();
    } // closes both
    ::dup2(savedOutput, 1);
    ::dup2(savedError, 2);
    ::close(savedOutput);
    ::close(savedError);
    EXPECT_EQ(folder.read("1"), "err\n");
    EXPECT_EQ(folder.read("2"), "out\n");
}

TEST(Task, InputAndSignals) {
    const auto input = NSPipe::pipe();
    const auto output = NSPipe::pipe();
    NSTask task;
    task.setLaunchPath(u"/bin/cat");
    task.setStandardInput(input);
    task.setStandardOutput(output);
    task.launch();
    EXPECT_TRUE(task.isRunning());
    EXPECT_EQ(nameOfExceptionFrom([&] { task.terminationStatus(); }), NSInvalidArgumentException);
    EXPECT_FALSE(task.waitUntilExitForSeconds(0.01));
    input->fileHandleForWriting()->writeData(NSData::dataWithBytes("echo"));
    EXPECT_EQ(output->fileHandleForReading()->availableData().characters(), "echo");
    task.terminate();
    EXPECT_TRUE(task.waitUntilExitForSeconds(60) && task.wasEndedBySignal());
    EXPECT_EQ(task.terminationStatus(), SIGTERM);
    task.killTask();
    // Nobody reads any more: an error, and this process lives.
    EXPECT_EQ(
        nameOfExceptionFrom([&] { input->fileHandleForWriting()->writeData(NSData::dataWithBytes("x")); }),
        NSFileHandleOperationException);
    input->fileHandleForWriting()->closeFile();
    EXPECT_EQ(nameOfExceptionFrom([&] { input->fileHandleForWriting()->writeData(NSData::data()); }),
              NSFileHandleOperationException);
}

TEST(Task, OwnSessionEndsWithAllItsProcesses) {
    Shell shell(u"sleep 1000 & echo started; wait");
    shell.task.setSession(NSTask::Session::own);
    shell.task.launch();
    EXPECT_EQ(shell.output->fileHandleForReading()->availableData().characters(), "started\n");
    shell.task.killTask();
    // Ends only when the sleeper's copy of the pipe is closed too.
    EXPECT_EQ(shell.rest(), "");
    shell.task.waitUntilExit();
    EXPECT_EQ(shell.task.terminationStatus(), SIGKILL);
}

TEST(Task, RefusesWhatCannotBeLaunched) {
    const tests::TemporaryFolder folder;
    const NSString text = string(folder.write("text", "no program"));
    const auto launch = [](const NSString& path, const NSArray& arguments, const NSString& currentFolder,
                           const NSDictionary& environment) {
        return nameOfExceptionFrom([&] {
            NSTask task;
            task.setLaunchPath(path);
            task.setArguments(arguments);
            task.setCurrentDirectoryPath(currentFolder);
            task.setEnvironment(environment);
            task.launch();
        });
    };
    NSMutableDictionary badName = NSMutableDictionary::dictionary();
    badName.setObject_forKey(u"x", u"a=b");
    const NSString nul{std::u16string_view(u"a\0", 2)};
    for (const NSString& path : {NSString(), NSString(u""), NSString(u"sh"), NSString(u"/no/such"), text,
                                 string(folder.path()), nul})
        EXPECT_EQ(launch(path, nullptr, nullptr, nullptr), NSInvalidArgumentException);
    EXPECT_EQ(launch(u"/bin/true", NSArray::arrayWithObjects({nul}), nullptr, nullptr),
              NSInvalidArgumentException);
    EXPECT_EQ(launch(u"/bin/true", NSArray::arrayWithObjects({NSNull()}), nullptr, nullptr),
              NSInvalidArgumentException);
    EXPECT_EQ(launch(u"/bin/true", nullptr, text, nullptr), NSInvalidArgumentException);
    EXPECT_EQ(launch(u"/bin/true", nullptr, nullptr, badName.copy()), NSInvalidArgumentException);
    EXPECT_TRUE(launch(u"/bin/true", nullptr, u"/", nullptr).isNil());

    NSTask task;
    EXPECT_FALSE(task.isRunning());
    EXPECT_EQ(nameOfExceptionFrom([&] { task.waitUntilExit(); }), NSInvalidArgumentException);
    task.setLaunchPath(u"/bin/true");
    task.launch();
    EXPECT_EQ(nameOfExceptionFrom([&] { task.launch(); }), NSInvalidArgumentException);
}

} // namespace
} // namespace kelvo
