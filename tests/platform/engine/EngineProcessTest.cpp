#include "platform/engine/EngineProcess.h"

#include "platform/engine/EngineFrames.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/connections/NSRunLoop.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace kelvo {
namespace {

// Long enough for a loaded machine; only what must run out takes a short time.
constexpr double ample = 60;

Value message(const char16_t* command, const Value& with = NSString(u"")) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({{NSString(command), u"do"}, {with, u"with"}});
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

TEST(EngineFrames, HeadsAreCheckedBeforeTheyAreTrusted) {
    const auto head = [](unsigned kind, std::uint64_t length) {
        std::string bytes(1, static_cast<char>(kind));
        for (int shift = 0; shift < 64; shift += 8)
            bytes.push_back(static_cast<char>(length >> shift));
        return bytes;
    };
    constexpr std::uint64_t most = maximumSizeInBytes - engineFrameHeadLength;
    const struct {
        const char* name;
        std::string bytes;
        std::optional<std::uint64_t> length;
    } rows[] = {
        {"message without contents", head(1, 0), 0},
        {"reply of several bytes of length", head(4, 0x0123456), 0x0123456},
        {"longest", head(2, most), most},
        {"longer than a message can be", head(2, most + 1), std::nullopt},
        {"longest number", head(2, ~std::uint64_t{}), std::nullopt},
        {"no kind", head(0, 1), std::nullopt},
        {"past the last kind", head(5, 1), std::nullopt},
        {"high bit", head(0x81, 1), std::nullopt},
        {"cut off", head(1, 0).substr(1), std::nullopt},
    };
    for (const auto& row : rows)
        EXPECT_EQ(contentsLengthOfEngineFrame(row.bytes), row.length) << row.name;
    EXPECT_FALSE(engineFrameWithBytes(head(1, 5) + "(open").has_value());
    const std::string whole = bytesOfEngineFrame(EngineFrameKind::question, u"x");
    EXPECT_EQ(contentsLengthOfEngineFrame(whole), whole.size() - engineFrameHeadLength);
    EXPECT_EQ(engineFrameWithBytes(whole)->kind, EngineFrameKind::question);
    EXPECT_EQ(engineFrameWithBytes(whole)->value, Value(u"x"));
}

TEST(EngineProcess, OneChildAnswersMessagesOfEverySize) {
    EngineProcess engine("RehearsalEngine");
    EXPECT_EQ(engine.processIdentifier(), 0);
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"one")), ample), Value(u"one"));
    const pid_t child = engine.processIdentifier();
    // Past every buffer of the socket, in both directions at once.
    for (const std::size_t length : {0U, 1U, 65536U, 50'000'000U}) {
        const NSData data = NSData::dataWithBytesNoCopy(std::string(length, 'x'));
        EXPECT_TRUE(engine.ask(message(u"echo", data), ample).data() == data) << length;
    }
    EXPECT_EQ(engine.ask(message(u"in pieces", NSString(u"whole")), ample), Value(u"whole"));
    EXPECT_EQ(engine.processIdentifier(), child);
}

TEST(EngineProcess, QuestionsAreAnsweredInTheMidstOfAMessage) {
    EngineProcess engine("RehearsalEngine");
    std::vector<Value> asked;
    const Value answer = engine.ask(message(u"ask", NSString(u"first")), ample, [&](const Value& question) {
        asked.push_back(question);
        // Nobody else gets through to an engine at work.
        EXPECT_TRUE(engine.ask(message(u"echo", NSString(u"inner")), ample).isNil());
        return Value(u"second");
    });
    EXPECT_EQ(answer, Value(u"second"));
    EXPECT_EQ(asked, (std::vector<Value>{u"first", u"second"}));
    EXPECT_TRUE(engine.ask(message(u"ask"), ample, [](const Value&) { return Value(); }).isNil());

    const auto failing = [](const Value&) -> Value { throw std::runtime_error("refused"); };
    EXPECT_THROW(engine.ask(message(u"ask"), ample, failing), std::runtime_error);
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"on")), ample), Value(u"on"));
}

TEST(EngineProcess, TheEnvironmentIsMadeForTheChild) {
    const char* const refused[] = {"http_proxy",        "LD_LIBRARY_PATH",          "GTK_MODULES",
                                   "GIO_EXTRA_MODULES", "DBUS_SESSION_BUS_ADDRESS", "DISPLAY"};
    for (const char* name : refused)
        ::setenv(name, "/elsewhere", 1);
    ::setenv("TZ", "Asia/Tokyo", 1);
    EngineProcess engine("RehearsalEngine");
    const std::string own = '\n' + engine.ask(message(u"environment"), ample).string().UTF8String();
    for (const char* name : refused) {
        EXPECT_EQ(own.find(std::string("\n") + name + '='), std::string::npos) << own;
        ::unsetenv(name);
    }
    ::unsetenv("TZ");
    for (const char* entry : {"\nTZ=Asia/Tokyo\n", "\nHOME=/nonexistent\n", "\nLANG=C.UTF-8\n", "\nPATH="})
        EXPECT_NE(own.find(entry), std::string::npos) << own;
}

TEST(EngineProcess, AFailedChildIsNilAndTheNextMessageHasANewOne) {
    EngineProcess engine("RehearsalEngine");
    for (const char16_t* command : {u"exit", u"crash", u"garbage", u"boast"}) {
        EXPECT_TRUE(engine.ask(message(command), ample).isNil());
        EXPECT_EQ(engine.processIdentifier(), 0);
        EXPECT_EQ(engine.ask(message(u"echo", NSString(u"back")), ample), Value(u"back"));
    }
    EXPECT_TRUE(engine.ask(message(u"hang"), 0.2).isNil());
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"back")), ample), Value(u"back"));
    // Ended while nobody asked.
    ::kill(engine.processIdentifier(), SIGKILL);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"back")), ample), Value(u"back"));
    EXPECT_THROW(engine.ask(message(u"echo", NSURL::URLWithString(u"http://a/")), ample), NSException);
    EXPECT_EQ(engine.ask(message(u"echo", NSString(u"back")), ample), Value(u"back"));
}

TEST(EngineProcess, NothingOfAChildIsLeftBehind) {
    auto engine = std::make_unique<EngineProcess>("RehearsalEngine");
    const auto helper =
        static_cast<pid_t>(engine->ask(message(u"pids"), ample).numberIfAny()->longLongValue());
    const pid_t child = engine->processIdentifier();
    EXPECT_EQ(::kill(helper, 0), 0);
    engine = nullptr;
    EXPECT_TRUE(isGone(child));
    EXPECT_TRUE(isGone(helper));
}

TEST(EngineProcess, AMissingProgramIsOneLineInTheLog) {
    EngineProcess engine("no-such-engine");
    const NSLogCapture log;
    EXPECT_TRUE(engine.ask(message(u"echo"), ample).isNil());
    ASSERT_EQ(log.messages().size(), 1U);
    EXPECT_NE(log.messages()[0].UTF8String().find("no-such-engine"), std::string::npos);
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
    EngineProcess engine("RehearsalEngine");
    EXPECT_TRUE(engine.ask(message(u"hang"), 0.5).isNil());
    EXPECT_EQ(target->performed, 1);
}

} // namespace
} // namespace kelvo
