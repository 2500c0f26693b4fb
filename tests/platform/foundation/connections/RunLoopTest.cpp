#include "platform/foundation/connections/NSRunLoop.h"

#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

/// Notes what it is told, and does what it is told on top of that.
class Listener final : public NSObject {
public:
    std::string heard;

    Value performSelector_withObject(const NSString& selector, const Value& argument) override {
        heard += selector.UTF8String() + argument.string().UTF8String() + " ";
        if (selector == u"nest")
            NSRunLoop::currentRunLoop().runMode_beforeDate(NSDefaultRunLoopMode, soon());
        if (selector == u"again")
            NSRunLoop::currentRunLoop().performSelector_target_argument_afterDelay(
                selector, shared_from_this(), nullptr, 0);
        if (selector == u"throw")
            throw NSException(NSGenericException, u"as told");
        return nullptr;
    }

    static NSDate soon() {
        return NSDate::dateWithTimeIntervalSinceReferenceDate(
            NSDate::date().timeIntervalSinceReferenceDate() + 0.2);
    }
};

class RunLoopTest : public testing::Test {
protected:
    NSRunLoop& loop = NSRunLoop::currentRunLoop();
    std::shared_ptr<Listener> listener = std::make_shared<Listener>();

    void later(const char16_t* selector, const Value& argument, double delay) {
        loop.performSelector_target_argument_afterDelay(selector, listener, argument, delay);
    }
};

TEST_F(RunLoopTest, PerformsByDueTimeAndReturnsWhenNothingIsLeft) {
    later(u"c", nullptr, 0.03);
    later(u"a", u"1", 0);
    later(u"a", u"2", -5);
    later(u"b", nullptr, 0.01);
    loop.run();
    EXPECT_EQ(listener->heard, "a1 a2 b c ");
    EXPECT_FALSE(loop.runMode_beforeDate(NSDefaultRunLoopMode, Listener::soon()))
        << "at once, nothing to wait for";
}

TEST_F(RunLoopTest, CancelsByTargetSelectorAndEqualArgument) {
    const auto other = std::make_shared<Listener>();
    loop.performSelector_target_argument_afterDelay(u"a", other, u"1", 0);
    later(u"a", u"1", 0);
    later(u"a", u"1", 0.01);
    later(u"a", u"2", 0);
    later(u"b", u"1", 0);
    loop.cancelPerformSelector_target_argument(u"a", listener, NSString(std::u16string_view(u"1")));
    loop.run();
    EXPECT_EQ(listener->heard, "a2 b1 ");
    EXPECT_EQ(other->heard, "a1 ");
}

TEST_F(RunLoopTest, ServesOneModeAtATime) {
    loop.performSelector_target_argument_afterDelay_inModes(u"other", listener, nullptr, 0, {u"other mode"});
    EXPECT_FALSE(loop.runMode_beforeDate(NSDefaultRunLoopMode, Listener::soon()));
    later(u"default", nullptr, 0);
    loop.run();
    EXPECT_EQ(listener->heard, "default ");
    EXPECT_TRUE(loop.runMode_beforeDate(u"other mode", Listener::soon()));
    EXPECT_EQ(listener->heard, "default other ");
}

TEST_F(RunLoopTest, NestedRunPerformsWhatComesDueMeanwhile) {
    later(u"nest", nullptr, 0);
    later(u"inner", nullptr, 0.02);
    ASSERT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, Listener::soon()));
    EXPECT_EQ(listener->heard, "nest inner ");
}

TEST_F(RunLoopTest, PerformThatThrowsIsSpentAndTheLoopGoesOn) {
    later(u"throw", nullptr, 0);
    later(u"after", nullptr, 0);
    EXPECT_THROW(loop.run(), NSException);
    loop.run();
    EXPECT_EQ(listener->heard, "throw after ");
}

TEST_F(RunLoopTest, PerformThatIsAlwaysDueLeavesRoomForSources) {
    struct Source final : NSRunLoopSource {
        int turns = 0;
        bool hasPending() override { return true; }
        bool performPending() override { return ++turns <= 3; }
    } source;
    loop.addSource(source);
    later(u"again", nullptr, 0);
    for (int turn = 0; turn < 5; ++turn)
        EXPECT_TRUE(loop.runMode_beforeDate(NSDefaultRunLoopMode, Listener::soon()));
    EXPECT_EQ(source.turns, 5);
    EXPECT_EQ(listener->heard, "again again again again again ");
    loop.removeSource(source);
    loop.cancelPerformSelector_target_argument(u"again", listener, nullptr);
}

TEST_F(RunLoopTest, HoldsTargetsUntilTheyAreDone) {
    const std::weak_ptr<Listener> watch = listener;
    later(u"x", nullptr, 0);
    listener.reset();
    EXPECT_FALSE(watch.expired());
    loop.run();
    EXPECT_TRUE(watch.expired());
}

} // namespace
} // namespace kelvo
