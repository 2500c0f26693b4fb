#include "platform/engine/EngineProcess.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/engine/program/Landlock.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/foundation/connections/NSRunLoop.h"
#include "platform/foundation/processes/ProcessFacts.h"
#include "platform/ledger/RequestNotes.h"
#include "support/Listener.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {
namespace {

// Long enough for a loaded machine; only what must run out takes a short time.
constexpr double ample = 60;

Value message(const char16_t* command, const Value& with = NSString(u"")) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({{NSString(command), u"do"}, {with, u"with"}});
}

Value number(long long value) {
    return NSNumber::numberWithLongLong(value);
}

EngineDescription rehearsal(std::vector<std::string> arguments = {}) {
    EngineDescription description;
    description.programName = "RehearsalEngine";
    description.title = u"rehearsal";
    description.arguments = std::move(arguments);
    return description;
}

/// Whether nothing runs any more under that number; what nobody has collected yet is gone as well.
bool isGone(pid_t process) {
    for (int i = 0; i < 500; ++i) {
        std::ifstream file("/proc/" + std::to_string(process) + "/stat");
        std::string number, name, state;
        if (!(file >> number >> name >> state) || state == "Z" || state == "X")
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                                  std::filesystem::directory_iterator()));
}

/// A socket that others may connect to, by a path or a name that stands in no folder.
FileDescriptor unixListener(const std::string& name, bool isAbstract) {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path + (isAbstract ? 1 : 0), sizeof address.sun_path - 2);
    const std::size_t length = offsetof(sockaddr_un, sun_path) + name.size() + 1;
    EXPECT_EQ(
        ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(length)), 0);
    EXPECT_EQ(::listen(socket.get(), 5), 0);
    return socket;
}

/// The name of the exception, and what the request knows of it.
std::string failureOf(EngineProcess& engine, const Value& asked, double seconds = ample) {
    const RequestNotes notes;
    std::string name = "answered";
    try {
        engine.ask(asked, seconds);
    } catch (const NSException& exception) {
        name = exception.name().UTF8String();
        EXPECT_EQ(exception.reason(), notes.sentence());
    }
    return name + ": " + (notes.outcome() ? wordOfOutcome(*notes.outcome()).UTF8String() : "no outcome") +
           ": " + (notes.sentence().isNil() ? "" : notes.sentence().UTF8String());
}

TEST(EngineProcess, OneChildAnswersMessagesOfEverySize) {
    EngineProcess engine(rehearsal());
    EXPECT_EQ(engine.processIdentifier(), 0);
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"one")), ample), Value(u"one"));
    const pid_t child = engine.processIdentifier();
    for (const std::size_t length : {0U, 1U, 65536U, 50'000'000U}) {
        const NSData data = NSData::dataWithBytesNoCopy(std::string(length, 'x'));
        EXPECT_TRUE(engine.ask(message(u"echo", data), ample).data() == data) << length;
    }
    const NSData picture = engine.ask(message(u"picture", number(1'000'000)), ample).data();
    EXPECT_GE(picture.descriptor(), 0);
    EXPECT_EQ(picture.characters(), std::string(1'000'000, 'p'));
    EXPECT_EQ(engine.ask(message(u"in pieces", NSString(u"whole")), ample), Value(u"whole"));
    EXPECT_EQ(engine.processIdentifier(), child);
}

TEST(EngineProcess, QuestionsAreAnsweredInTheMidstOfAMessage) {
    EngineProcess engine(rehearsal());
    std::vector<Value> asked;
    EngineConversation conversation;
    conversation.questions = [&](const Value& question) {
        asked.push_back(question);
        // Nobody else gets through to an engine at work.
        EXPECT_THROW(engine.ask(message(u"echo", NSString(u"inner")), ample), NSException);
        return Value(u"second");
    };
    const Value answer = engine.ask(message(u"ask", NSString(u"first")), ample, conversation);
    EXPECT_EQ(answer, Value(u"second"));
    EXPECT_EQ(asked, (std::vector<Value>{u"first", u"second"}));
    EXPECT_TRUE(engine.ask(message(u"ask"), ample).isNil());

    conversation.questions = [](const Value&) -> Value { throw std::runtime_error("refused"); };
    EXPECT_THROW(engine.ask(message(u"ask"), ample, conversation), std::runtime_error);
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"on")), ample), Value(u"on"));
}

TEST(EngineProcess, PartsOfTheResultOutliveTheEngine) {
    EngineProcess engine(rehearsal());
    EngineConversation conversation;
    std::vector<Value> parts;
    conversation.reports = [&](const Value& part) { parts.push_back(part); };
    conversation.title = u"importer of letters";
    try {
        engine.ask(message(u"report and crash", NSString(u"dear")), ample, conversation);
        FAIL();
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), EngineCrashedException);
        EXPECT_NE(exception.reason().UTF8String().find("importer of letters"), std::string::npos);
    }
    EXPECT_EQ(parts,
              (std::vector<Value>{u"dear", NSString(std::u16string(50'000, u'a')),
                                  NSString(std::u16string(20'000, u'b')), number(1), number(2), number(3)}));

    // Each once, in the message that they belong to.
    parts.clear();
    engine.ask(message(u"report", number(1)), ample, conversation);
    engine.ask(message(u"report", number(2)), ample);
    engine.ask(message(u"echo"), ample, conversation);
    EXPECT_EQ(parts, std::vector<Value>{number(1)});
    engine.stop();

    // What an engine was left with has gone with it; what another would answer is not asked.
    conversation.continues = true;
    EXPECT_THROW(engine.ask(message(u"echo", NSString(u"on")), ample, conversation), NSException);
    EXPECT_EQ(engine.processIdentifier(), 0);
    conversation.continues = false;
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"on")), ample, conversation), Value(u"on"));
}

TEST(EngineProcess, TheEnvironmentIsMadeForTheChild) {
    const char* const refused[] = {"http_proxy",        "LD_LIBRARY_PATH",          "GTK_MODULES",
                                   "GIO_EXTRA_MODULES", "DBUS_SESSION_BUS_ADDRESS", "DISPLAY"};
    for (const char* name : refused)
        ::setenv(name, "/elsewhere", 1);
    ::setenv("TZ", "Asia/Tokyo", 1);
    EngineDescription description = rehearsal();
    description.environment = {{"OF_ITS_OWN", "a=b"}};
    EngineProcess engine(description);
    const std::string own = '\n' + engine.ask(message(u"environment"), ample).string().UTF8String();
    for (const char* name : refused) {
        EXPECT_EQ(own.find(std::string("\n") + name + '='), std::string::npos) << own;
        ::unsetenv(name);
    }
    ::unsetenv("TZ");
    for (const char* entry :
         {"\nTZ=Asia/Tokyo\n", "\nHOME=/nonexistent\n", "\nLANG=C.UTF-8\n", "\nPATH=", "\nOF_ITS_OWN=a=b\n"})
        EXPECT_NE(own.find(entry), std::string::npos) << own;
}

TEST(EngineProcess, WhatBecomesOfAnEngineHasAName) {
    const tests::TemporaryFolder folder;
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    EngineProcess engine(rehearsal());
    const std::string crashed = "EngineCrashedException: crashed: reading it ";
    const std::string refused = "EngineRefusedException: refused: reading it wanted ";
    const std::string nonsense = crashed + "made the rehearsal answer nonsense";
    const struct {
        const char16_t* command;
        long long with;
        double seconds;
        std::string failure;
    } rows[] = {
        {u"signal", SIGSEGV, ample, crashed + "crashed the rehearsal (SIGSEGV)"},
        {u"signal", SIGABRT, ample, crashed + "crashed the rehearsal (SIGABRT)"},
        {u"signal", SIGILL, ample, crashed + "crashed the rehearsal (SIGILL)"},
        {u"signal", SIGSYS, ample, refused + "something that is not allowed, and was stopped"},
        {u"signal", SIGXFSZ, ample, refused + "to write more than is allowed, and was stopped"},
        {u"signal", SIGXCPU, ample,
         "EngineTimeoutException: timed out: reading it took more time than it may"},
        {u"signal", SIGKILL, ample,
         "EngineOutOfMemoryException: out of memory: the system ended its reading for want of memory"},
        {u"exit", engineStatusOutOfMemory, ample,
         "EngineOutOfMemoryException: out of memory: reading it took more memory than it may"},
#ifndef KELVO_SANITIZED
        {u"eat", 0, ample,
         "EngineOutOfMemoryException: out of memory: reading it took more memory than it may"},
#endif
        {u"read what is cut", 0, ample, "EngineFileCutException: broken: it was cut short while it was read"},
        {u"exit", 0, ample, crashed + "ended the rehearsal (status 0)"},
        {u"spin", 0, 0.3, "EngineTimeoutException: timed out: reading it took more time than it may"},
        {u"sleep", 0, 0.3, "EngineTimeoutException: timed out: reading it took more time than it may"},
        {u"nonsense", 0, ample, nonsense},
        {u"half a frame", 0, ample, crashed + "ended the rehearsal (status 0)"},
        {u"boast", 0, ample, nonsense},
        {u"nonsense in reports", 0, ample, nonsense},
        {u"boast in reports", 1'000'000'000, ample, nonsense},
        {u"descriptor too many", 0, ample, nonsense},
        {u"too many descriptors", 0, ample, nonsense},
        {u"unsealed memory", 0, ample, nonsense},
        {u"a file for memory", 0, ample, nonsense},
    };
    engine.ask(message(u"echo"), ample);
    engine.stop();
    const std::size_t descriptors = openDescriptors();
    for (const auto& row : rows) {
        const NSString name = row.command;
        // As long as it may take from its own start.
        engine.ask(message(u"echo"), ample);
        EXPECT_EQ(failureOf(engine, message(row.command, number(row.with)), row.seconds), row.failure)
            << name.UTF8String() << ' ' << row.with;
        EXPECT_EQ(engine.processIdentifier(), 0) << name.UTF8String();
        EXPECT_EQ(openDescriptors(), descriptors) << name.UTF8String();
        EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << name.UTF8String();
        EXPECT_EQ(childProcesses(), std::vector<pid_t>()) << name.UTF8String();
    }
    // Ended while nobody asked.
    engine.ask(message(u"echo"), ample);
    ::kill(engine.processIdentifier(), SIGKILL);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"back")), ample), Value(u"back"));
    // What one has said too much reaches nobody.
    EXPECT_EQ(engine.ask(message(u"answer twice"), ample), Value(u"first"));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"right")), ample), Value(u"right"));
    EXPECT_THROW(engine.ask(message(u"echo", NSURL::URLWithString(u"http://a/")), ample), NSException);
    ::unsetenv("TMPDIR");
}

TEST(EngineProcess, AnEngineThatCannotWorkSaysWhy) {
    const NSLogCapture log;
    const std::string missing = "EngineMissingException: missing engine: ";
    const auto failure = [](EngineDescription description) {
        EngineProcess engine(std::move(description));
        return failureOf(engine, message(u"echo"), 5);
    };
    EXPECT_EQ(failure(rehearsal({"lacks"})), missing + "the rehearsal has no stage");
    EXPECT_EQ(failure(rehearsal({"dies"})), missing + "the rehearsal does not start");
    EngineDescription nowhere = rehearsal();
    nowhere.programName = "no-such-engine";
    EXPECT_EQ(failure(nowhere), missing + "the rehearsal cannot be started");
    ASSERT_EQ(log.messages().size(), 1U);
    EXPECT_NE(log.messages()[0].UTF8String().find("no-such-engine"), std::string::npos);
    EngineProcess sleeping(rehearsal({"sleeps"}));
    EXPECT_EQ(failureOf(sleeping, message(u"echo"), 0.3),
              "EngineTimeoutException: timed out: the rehearsal was not ready in time");
}

TEST(EngineProcess, WhatItNotesAndTakesIsPartOfTheRequest) {
    EngineProcess engine(rehearsal());
    {
        const RequestNotes notes;
        EXPECT_TRUE(engine.ask(message(u"note", NSString(u"it is encrypted")), ample).isNil());
        EXPECT_EQ(notes.outcome(), Outcome::locked);
        EXPECT_EQ(notes.sentence(), NSString(u"it is encrypted"));
    }
    EXPECT_EQ(failureOf(engine, message(u"throw", NSString(u"no header"))), "answered: broken: no header");
    const auto use = [&](long long bytes) {
        const RequestNotes notes;
        engine.ask(message(u"use", number(bytes)), ample);
        EXPECT_EQ(notes.engines().size(), 1U);
        return notes.engines().at(0);
    };
    const auto large = use(200 << 20);
    const auto small = use(1 << 20);
    EXPECT_EQ(large.name, "RehearsalEngine");
    EXPECT_GT(small.cpuMilliseconds, 5);
    // Of this request alone, however much the one before took.
    EXPECT_GT(large.peakBytes, 200U << 20);
#ifndef KELVO_SANITIZED // which holds on to memory that was given back
    EXPECT_LT(small.peakBytes, 100U << 20);
#endif
}

TEST(EngineProcess, ItIsReplacedBetweenTwoMessages) {
    const auto runOnce = [] {
        NSRunLoop::currentRunLoop().runMode_beforeDate(NSDefaultRunLoopMode, NSDate::date());
    };
    EngineDescription description = rehearsal();
    description.mostMessages = 2;
    EngineProcess engine(description);
    engine.ask(message(u"echo"), ample);
    const pid_t first = engine.processIdentifier();
    runOnce();
    EXPECT_EQ(engine.processIdentifier(), first);
    engine.ask(message(u"echo"), ample);
    EXPECT_EQ(engine.processIdentifier(), first);
    runOnce();
    const pid_t second = engine.processIdentifier();
    EXPECT_NE(second, first);
    EXPECT_NE(second, 0);
    EXPECT_TRUE(isGone(first));
    engine.ask(message(u"echo"), ample);
    EXPECT_EQ(engine.processIdentifier(), second);
    // Not even one that has not been replaced yet is asked once more.
    engine.ask(message(u"echo"), ample);
    engine.ask(message(u"echo"), ample);
    EXPECT_NE(engine.processIdentifier(), second);

    EngineDescription growing = rehearsal();
    growing.mostResidentBytes = 100 << 20;
    EngineProcess other(growing);
    other.ask(message(u"echo"), ample);
    const pid_t small = other.processIdentifier();
    other.ask(message(u"grow", number(10 << 20)), ample);
    runOnce();
    EXPECT_EQ(other.processIdentifier(), small);
    other.ask(message(u"grow", number(200 << 20)), ample);
    runOnce();
    EXPECT_TRUE(isGone(small));
}

TEST(EngineProcess, NothingOfAChildIsLeftBehind) {
    const tests::TemporaryFolder folder;
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    // The filter would keep it from it.
    EXPECT_EQ(EngineProcess(rehearsal()).ask(message(u"leave", number(1)), ample).array().count(), 0U);
    auto engine = std::make_unique<EngineProcess>(rehearsal({"--without-filter"}));
    const NSArray left = engine->ask(message(u"leave", number(100)), ample).array();
    ASSERT_EQ(left.count(), 100U);
    const std::string own = engine->ask(message(u"folder"), ample).string().UTF8String();
    EXPECT_EQ(own.substr(0, folder.path().size()), folder.path());
    EXPECT_TRUE(std::filesystem::is_directory(own));
    engine = nullptr;
    for (const Value& each : left)
        EXPECT_NE(::kill(static_cast<pid_t>(each.numberIfAny()->longLongValue()), 0), 0);
    EXPECT_EQ(childProcesses(), std::vector<pid_t>());
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    ::prctl(PR_SET_CHILD_SUBREAPER, 0);
    ::unsetenv("TMPDIR");
}

TEST(EngineProcess, HostileFilesReachNothing) {
    if (versionOfLandlock() < 6)
        GTEST_SKIP() << "the kernel's Landlock has no say in all of this";
    const tests::TemporaryFolder folder;
    const std::string file = folder.write("file", "contents");
    const tests::Listener listener;
    const std::string path = folder.path("socket");
    const FileDescriptor named = unixListener(path, false);
    const std::string abstractName = "plumwick-test-" + std::to_string(::getpid());
    const FileDescriptor nameless = unixListener(abstractName, true);
    const std::string port = std::to_string(listener.port());
    // Of each act: with all layers, without Landlock, without the filter. "done": only the layer that is off holds.
    const struct {
        const char* act;
        std::string with;
        const char* all;
        const char* withoutLandlock;
        const char* withoutFilter;
    } rows[] = {
        {"read", "/etc/passwd", "EACCES", "done", "EACCES"},
        {"read", file, "EACCES", "done", "EACCES"},
        {"write", folder.path("new"), "EACCES", "done", "EACCES"},
        {"truncate", file, "EACCES", "EACCES", "EACCES"},
        {"port", port, "EACCES", "EACCES", "EACCES"},
        {"abstract", abstractName, "EACCES", "EACCES", "ECONNREFUSED"},
        {"socket", path, "EACCES", "EACCES", "done"},
        {"execute", "/bin/true", "EACCES", "EACCES", "EACCES"},
        {"kill", "", "ENOSYS", "ENOSYS", "EPERM"},
        {"mount", folder.path(), "refused", "refused", "EPERM"},
    };
    const auto outcome = [](EngineProcess& engine, const char* act, const std::string& with) -> std::string {
        const RequestNotes notes;
        try {
            const Value answer =
                engine.ask(message(u"act", NSArray::arrayWithObjects({NSString::stringWithUTF8String(act),
                                                                      NSString::stringWithUTF8String(with)})),
                           ample);
            return answer.isNil() ? notes.sentence().UTF8String() : answer.string().UTF8String();
        } catch (const NSException&) {
            return wordOfOutcome(*notes.outcome()).UTF8String();
        }
    };
    EngineProcess all(rehearsal()), withoutLandlock(rehearsal({"--without-landlock"})),
        withoutFilter(rehearsal({"--without-filter"}));
    for (const auto& row : rows) {
        EXPECT_EQ(outcome(all, row.act, row.with), row.all) << row.act;
        EXPECT_EQ(outcome(withoutFilter, row.act, row.with), row.withoutFilter) << row.act;
        EXPECT_EQ(outcome(withoutLandlock, row.act, row.with), row.withoutLandlock) << row.act;
    }
}

TEST(EngineProcess, ItEndsWithTheOneWhoAsks) {
    const tests::TemporaryFolder folder;
    ::setenv("TMPDIR", folder.path().c_str(), 1);
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    // A process that ends without a word.
    const pid_t asking = ::fork();
    if (asking == 0) {
        EngineProcess& engine = *new EngineProcess(rehearsal());
        engine.ask(message(u"grow", number(1)), ample);
        const pid_t child = engine.processIdentifier();
        std::ofstream(engine.ask(message(u"folder"), ample).string().UTF8String() + "/left") << 'x';
        ::_exit(::write(ends[1], &child, sizeof child) == sizeof child ? 0 : 1);
    }
    pid_t child = 0;
    ASSERT_EQ(::read(ends[0], &child, sizeof child), static_cast<ssize_t>(sizeof child));
    ASSERT_EQ(::waitpid(asking, nullptr, 0), asking);
    EXPECT_TRUE(isGone(child));
    // The folder itself it may not remove, only what is in there.
    for (const auto& each : std::filesystem::recursive_directory_iterator(folder.path()))
        EXPECT_TRUE(each.is_directory()) << each.path();
    ::unsetenv("TMPDIR");
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(EngineProcess, TheCPUIsLimitedForEachMessage) {
    EngineProcess engine(rehearsal());
    const auto limit = [&engine](double timeoutSeconds) {
        engine.ask(message(u"echo"), timeoutSeconds);
        std::ifstream file("/proc/" + std::to_string(engine.processIdentifier()) + "/limits");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("Max cpu time"))
                return std::atoi(line.c_str() + 12);
        }
        return 0;
    };
    // Room for all threads together, and not much more, whatever the one before was given.
    for (const double seconds : {10.0, 60.0, 1.0}) {
        EXPECT_GE(limit(seconds), static_cast<int>(2 * seconds)) << seconds;
        EXPECT_LE(limit(seconds), static_cast<int>(5 * seconds + 10)) << seconds;
    }
}

TEST(EngineProcess, TheRunLoopGoesOnMeanwhile) {
    struct Target final : NSObject {
        Value performSelector_withObject(const NSString&, const Value&) override {
            ++performed;
            return {};
        }
        int performed = 0;
    };
    const auto target = std::make_shared<Target>();
    NSRunLoop::currentRunLoop().performSelector_target_argument_afterDelay(u"go", target, Value(), 0.05);
    EngineProcess engine(rehearsal());
    EXPECT_THROW(engine.ask(message(u"sleep"), 0.5), NSException);
    EXPECT_EQ(target->performed, 1);
}

} // namespace
} // namespace kelvo
