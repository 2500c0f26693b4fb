#pragma once

#include "platform/foundation/connections/LocalStream.h"

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

/// The messages of one connection. Short ones are taken as they have been read, large ones into the room that all
/// connections share, where there is one.
class LocalMessageStream final : public capnp::MessageStream {
public:
    /// Both must live as long as this.
    LocalMessageStream(LocalStream& stream, MessageRoom* room)
        : stream_(stream), whole_(stream), room_(room) {}

    /// File descriptors are not taken.
    kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>>
    tryReadMessage(kj::ArrayPtr<kj::AutoCloseFd> fdSpace, capnp::ReaderOptions options,
                   kj::ArrayPtr<capnp::word> scratchSpace) override;
    kj::Promise<void> writeMessage(kj::ArrayPtr<const int> fds,
                                   kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>> segments) override {
        return whole_.writeMessage(fds, segments);
    }
    kj::Promise<void>
    writeMessages(kj::ArrayPtr<kj::ArrayPtr<const kj::ArrayPtr<const capnp::word>>> messages) override {
        return whole_.writeMessages(messages);
    }
    kj::Maybe<int> getSendBufferSize() override { return whole_.getSendBufferSize(); }
    kj::Promise<void> end() override { return whole_.end(); }

private:
    /// The next message, if all of it has been read already.
    kj::Maybe<capnp::MessageReaderAndFds> messageRead(capnp::ReaderOptions options);
    kj::Promise<kj::Maybe<capnp::MessageReaderAndFds>>
    readPieceByPiece(kj::ArrayPtr<kj::AutoCloseFd> fdSpace, capnp::ReaderOptions options,
                     kj::ArrayPtr<capnp::word> scratchSpace);

    LocalStream& stream_;
    capnp::AsyncIoMessageStream whole_;
    MessageRoom* room_;
};

} // namespace kelvo
