#include "platform/foundation/connections/MessageRoom.h"

#include "platform/foundation/connections/NSRunLoopInternals.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(MessageRoom, LargeMessagesAreLetInInTheOrderInWhichTheyCame) {
    constexpr std::size_t kibibyte = 1024;
    kj::AsyncIoContext& io = NSRunLoop::currentRunLoop().internals().io;
    auto room = kj::refcounted<MessageRoom>(io.provider->getTimer(), 1024 * kibibyte);
    auto first = room->take(500 * kibibyte).wait(io.waitScope);
    auto second = room->take(800 * kibibyte);
    // Would fit beside the first, and the one that waits might wait for ever.
    auto third = room->take(200 * kibibyte);
    EXPECT_FALSE(second.poll(io.waitScope) || third.poll(io.waitScope));
    EXPECT_TRUE(room->take(64 * kibibyte).poll(io.waitScope)) << "small ones never wait";
    first = nullptr;
    EXPECT_TRUE(second.poll(io.waitScope) && third.poll(io.waitScope));
    EXPECT_FALSE(room->take(100 * kibibyte).poll(io.waitScope)) << "what was taken is not given twice";
}

TEST(MessageRoom, WhoeverGoesAwayIsPassedOver) {
    kj::AsyncIoContext& io = NSRunLoop::currentRunLoop().internals().io;
    auto room = kj::refcounted<MessageRoom>(io.provider->getTimer(), 1 << 20);
    auto first = room->take(1 << 20).wait(io.waitScope);
    kj::Promise<kj::Own<MessageRoom::Share>> second = room->take(1 << 20);
    auto third = room->take(1 << 20);
    second = nullptr;
    EXPECT_FALSE(third.poll(io.waitScope));
    first = nullptr;
    EXPECT_TRUE(third.poll(io.waitScope));
}

} // namespace
} // namespace kelvo
