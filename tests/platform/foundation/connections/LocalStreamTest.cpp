#include "platform/foundation/connections/LocalStream.h"

#include "platform/foundation/connections/MessageRoom.h"
#include "platform/foundation/connections/NSConnectionInternals.h"

#include <capnp/serialize.h>
#include <gtest/gtest.h>
#include <kj/debug.h>
#include <sys/socket.h>

#include <random>
#include <vector>

namespace kelvo {
namespace {

struct Ends {
    Ends() {
        int descriptors[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, descriptors), 0);
        one = std::make_unique<LocalStream>(io.unixEventPort, FileDescriptor(descriptors[0]));
        other = std::make_unique<LocalStream>(io.unixEventPort, FileDescriptor(descriptors[1]));
    }
    kj::AsyncIoContext& io = NSRunLoop::currentRunLoop().internals().io;
    std::unique_ptr<LocalStream> one, other;
};

std::vector<kj::byte> numbered(std::size_t size, std::size_t from) {
    std::vector<kj::byte> bytes(size);
    for (std::size_t index = 0; index < size; ++index)
        bytes[index] = static_cast<kj::byte>((from + index) * 2654435761u >> 24);
    return bytes;
}

/// Some below and some above what one read takes, what is held back, and what the socket holds.
std::size_t someSize(std::mt19937& random) {
    constexpr std::size_t most[] = {1, 30, 5000, 20000, 400000};
    return 1 + random() % most[random() % std::size(most)];
}

TEST(LocalStream, BytesArriveInTheirOrder) {
    Ends ends;
    std::mt19937 random(3);
    std::size_t sent = 0, received = 0;
    for (int round = 0; round < 400; ++round) {
        std::vector<std::vector<kj::byte>> parts;
        std::vector<kj::ArrayPtr<const kj::byte>> pieces;
        for (std::size_t count = 1 + random() % (round % 50 == 0 ? 100 : 4); count > 0; --count) {
            parts.push_back(numbered(someSize(random) / (count > 8 ? 50 : 1) + 1, sent));
            sent += parts.back().size();
        }
        for (const auto& part : parts)
            pieces.emplace_back(part.data(), part.size());
        ends.one->setHoldsWrites(random() % 3 == 0);
        auto written = ends.one->write(kj::arrayPtr(pieces.data(), pieces.size()));
        ends.one->setHoldsWrites(false);
        const bool isHeld = written.poll(ends.io.waitScope) && round % 7 != 0;
        while (!isHeld && received < sent && (!written.poll(ends.io.waitScope) || random() % 2)) {
            std::vector<kj::byte> got(someSize(random));
            auto reading = ends.other->tryRead(got.data(), 1, got.size());
            // What comes next may be held back.
            if (!reading.poll(ends.io.waitScope))
                break;
            got.resize(reading.wait(ends.io.waitScope));
            ASSERT_EQ(got, numbered(got.size(), received));
            received += got.size();
        }
        while (!written.poll(ends.io.waitScope)) {
            std::vector<kj::byte> got(100000);
            got.resize(ends.other->tryRead(got.data(), 1, got.size()).wait(ends.io.waitScope));
            ASSERT_EQ(got, numbered(got.size(), received));
            received += got.size();
        }
        written.wait(ends.io.waitScope);
    }
    const kj::byte last = numbered(1, sent++).front();
    auto written = ends.one->write(&last, 1);
    std::vector<kj::byte> rest(sent - received + 1);
    auto reading = ends.other->tryRead(rest.data(), rest.size(), rest.size());
    written.wait(ends.io.waitScope);
    ends.one->shutdownWrite();
    ASSERT_EQ(reading.wait(ends.io.waitScope), rest.size() - 1) << "and then the end";
    rest.pop_back();
    EXPECT_EQ(rest, numbered(rest.size(), received));
}

TEST(LocalStream, AReadThatIsGivenUpLosesNothing) {
    Ends ends;
    kj::byte byte = 0;
    for (kj::byte round = 1; round < 4; ++round) {
        {
            auto abandoned = ends.other->tryRead(&byte, 1, 1);
            EXPECT_FALSE(abandoned.poll(ends.io.waitScope));
        }
        ends.one->write(&round, 1).wait(ends.io.waitScope);
        EXPECT_EQ(ends.other->tryRead(&byte, 1, 1).wait(ends.io.waitScope), 1u);
        EXPECT_EQ(byte, round);
    }
}

// Whole messages in one read, several in one read, and messages that are cut anywhere.
TEST(LocalMessageStream, MessagesCutAnywhere) {
    for (const bool hasRoom : {false, true}) {
        Ends ends;
        auto room = kj::refcounted<MessageRoom>(ends.io.provider->getTimer(), std::size_t{1} << 24);
        LocalMessageStream messages(*ends.other, hasRoom ? room.get() : nullptr);
        std::mt19937 random(11);
        for (int round = 0; round < 300; ++round) {
            std::vector<kj::byte> wire;
            std::vector<kj::Array<capnp::word>> sent;
            for (std::size_t count = 1 + random() % 4; count > 0; --count) {
                capnp::MallocMessageBuilder builder(16, capnp::AllocationStrategy::FIXED_SIZE);
                auto data = builder.getRoot<capnp::AnyPointer>().initAs<capnp::Data>(
                    static_cast<kj::uint>(someSize(random) / (round % 10 == 0 ? 1 : 20)));
                for (std::size_t index = 0; index < data.size(); ++index)
                    data[index] = static_cast<kj::byte>(random());
                sent.push_back(capnp::messageToFlatArray(builder));
                const auto bytes = sent.back().asBytes();
                wire.insert(wire.end(), bytes.begin(), bytes.end());
            }
            std::size_t place = 0;
            auto next = messages.tryReadMessage(nullptr, messageLimits(), nullptr);
            for (std::size_t index = 0; index < sent.size();) {
                if (!next.poll(ends.io.waitScope)) {
                    ASSERT_LT(place, wire.size());
                    // No more than the socket holds.
                    const std::size_t size =
                        std::min(wire.size() - place, 1 + random() % (random() % 2 ? 40 : 50000));
                    auto written = ends.one->write(wire.data() + place, size);
                    place += size;
                    ASSERT_TRUE(written.poll(ends.io.waitScope));
                    continue;
                }
                auto got = next.wait(ends.io.waitScope);
                capnp::MessageReader* whole = nullptr;
                KJ_IF_MAYBE (message, got)
                    whole = message->reader.get();
                ASSERT_TRUE(whole);
                capnp::MessageReader& reader = *whole;
                capnp::FlatArrayMessageReader expected(sent[index]);
                ASSERT_TRUE(reader.getRoot<capnp::AnyPointer>().getAs<capnp::Data>() ==
                            expected.getRoot<capnp::AnyPointer>().getAs<capnp::Data>());
                if (++index < sent.size())
                    next = messages.tryReadMessage(nullptr, messageLimits(), nullptr);
            }
        }
    }
}

} // namespace
} // namespace kelvo
