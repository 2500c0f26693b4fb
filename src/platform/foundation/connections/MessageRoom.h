#pragma once

#include <capnp/serialize-async.h>
#include <kj/refcount.h>
#include <kj/timer.h>

#include <cstddef>
#include <deque>
#include <vector>

namespace kelvo {

/// The memory that the messages of all clients may take together, each from its beginning until nobody needs
/// it any more. What does not fit waits in its socket for its turn. A client that begins a large message and
/// does not go on would keep the others waiting for ever; its message is given up as soon as one waits.
class MessageRoom : public kj::Refcounted {
public:
    /// The part that one message takes; given back with this object.
    class Share {
    public:
        Share(MessageRoom& room, std::size_t bytes);
        KJ_DISALLOW_COPY(Share);
        ~Share() noexcept(false);

        /// Fails when the message is given up.
        kj::Promise<void> whenGivenUp();
        void addReceived(std::size_t bytes) { received_ += bytes; }
        /// From now on it is the service that others wait for.
        void finish() { isFinished_ = true; }

    private:
        friend class MessageRoom;

        kj::Own<MessageRoom> room_;
        std::size_t size_;
        std::size_t received_ = 0;
        std::size_t receivedAtCheck_ = 0;
        int checksWithoutProgress_ = 0;
        bool isFinished_ = false;
        kj::Maybe<kj::Own<kj::PromiseFulfiller<void>>> giveUp_;
    };

    /// No message may be larger than that.
    MessageRoom(kj::Timer& timer, std::size_t bytes) : timer_(timer), free_(bytes) {}

    /// Small ones are not counted and never wait: there can be no more of them than connections.
    kj::Promise<kj::Own<Share>> take(std::size_t bytes);

private:
    struct Waiting {
        std::size_t bytes;
        kj::Own<kj::PromiseFulfiller<kj::Own<Share>>> fulfiller;
    };

    void giveToThoseWaiting();
    kj::Promise<void> checkWhileOthersWait();
    void giveUpUnfinished();

    kj::Timer& timer_;
    std::size_t free_;
    std::vector<Share*> shares_;
    std::deque<Waiting> waiting_;
    kj::Promise<void> checking_ = nullptr;
    bool isChecking_ = false;
};

/// The messages of one connection, read into the room that all of them share.
class BoundedMessageStream final : public capnp::MessageStream {
public:
    /// Both must live as long as this.
    BoundedMessageStream(kj::AsyncIoStream& stream, MessageRoom& room)
        : stream_(stream), writer_(stream), room_(room) {}

    /// File descriptors are not taken.
    kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>>
    tryReadMessage(kj::ArrayPtr<kj::AutoCloseFd> fdSpace, capnp::ReaderOptions options,
                   kj::ArrayPtr<capnp::word> scratchSpace) override;
    kj::Promise<void> writeMessage(kj::ArrayPtr<const int> fds,
                                   kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>> segments) override {
        return writer_.writeMessage(fds, segments);
    }
    kj::Promise<void>
    writeMessages(kj::ArrayPtr<kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>>> messages) override {
        return writer_.writeMessages(messages);
    }
    kj::Maybe<int> getSendBufferSize() override { return writer_.getSendBufferSize(); }
    kj::Promise<void> end() override { return writer_.end(); }

private:
    kj::AsyncIoStream& stream_;
    capnp::AsyncIoMessageStream writer_;
    MessageRoom& room_;
};

} // namespace kelvo
