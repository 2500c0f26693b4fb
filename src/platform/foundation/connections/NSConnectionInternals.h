#pragma once

#include "platform/foundation/NSAutoreleasePool.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/connections/LocalStream.h"
#include "platform/foundation/connections/MessageRoom.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/foundation/connections/NSRunLoopInternals.h"

#include <capnp/capability.h>
#include <capnp/rpc-twoparty.h>
#include <kj/async-io.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace kelvo {

/// The largest field, with room for what stands beside it.
inline constexpr std::size_t messageLimitInBytes = NSConnection::fieldLimitInBytes + (std::size_t{64} << 20);

/// How much of one message is read, and as many levels as the deepest value takes.
capnp::ReaderOptions messageLimits();

/// A request that has come in and waits for its turn.
class PendingRequest {
public:
    virtual ~PendingRequest();
    /// False once the one who asked has gone away or given up.
    virtual bool isAwaited() = 0;
    /// Performs and answers it; never throws.
    virtual void perform() = 0;

    const void* conversation = nullptr;
};

/// One client of a vending connection, as the adapter sees it.
class Conversation : public std::enable_shared_from_this<Conversation> {
public:
    explicit Conversation(NSConnection::Internals& connection) : connection_(connection) {}

    /// Answers one call, later, from the top of the run loop: `decode` takes the arguments out of the call's
    /// parameters, `operate` is given them and does the work, `encode` puts its result into the call's
    /// results. Nothing is done when the caller has gone away by then; what any of the three throws becomes
    /// the call's failure.
    template <typename Context, typename Decode, typename Operate, typename Encode>
    kj::Promise<void> answer(Context context, Decode decode, Operate operate, Encode encode);

private:
    void enqueue(std::shared_ptr<PendingRequest> request);

    NSConnection::Internals& connection_;
};

class NSVendedObject {
public:
    virtual ~NSVendedObject();
    virtual capnp::Capability::Client capabilityFor(std::shared_ptr<Conversation> conversation) = 0;
};

struct NSConnection::Internals final : NSRunLoopSource, kj::TaskSet::ErrorHandler {
    /// The other side of a conversation that this process began.
    struct Remote {
        Remote(kj::UnixEventPort& port, FileDescriptor socket, pid_t peer);
        capnp::Capability::Client rootProxy();

        LocalStream stream;
        LocalMessageStream messages;
        capnp::TwoPartyVatNetwork network;
        capnp::RpcSystem<capnp::rpc::twoparty::VatId> system;
        kj::Promise<void> disconnection;
        pid_t peer;
        bool isConnected = true;
    };

    Internals();
    ~Internals() noexcept override;

    bool hasPending() override { return nextRequest() != queue.end(); }
    bool performPending() override;
    void taskFailed(kj::Exception&& exception) override;
    void enqueue(std::shared_ptr<PendingRequest> request);
    void listen(FileDescriptor socket);

    NSRunLoop& loop = NSRunLoop::currentRunLoop();
    double requestTimeoutSeconds;
    double replyTimeoutSeconds;

    // Vending.
    /// For the messages of all clients; one of the largest fits.
    kj::Own<MessageRoom> messageRoom;
    bool isAcceptFailing = false;
    std::shared_ptr<NSVendedObject> rootObject;
    std::unique_ptr<PortLock> nameLock;
    bool conversationsWait = false;
    std::deque<std::shared_ptr<PendingRequest>> queue;
    std::vector<const void*> conversationsUnderWay;
    FileDescriptor listening;
    kj::Own<kj::UnixEventPort::FdObserver> listeningObserver;
    kj::TaskSet tasks{*this};

    // Asking.
    std::unique_ptr<Remote> remote;

private:
    /// The first request that may be performed now, or the end.
    std::deque<std::shared_ptr<PendingRequest>>::iterator nextRequest();
    kj::Promise<void> acceptNext();
    void converse(FileDescriptor socket);
};

/// What becomes of an exception on its way to the caller.
kj::Exception failureOfCall(const char* what);
/// What becomes of it at the caller's side.
[[noreturn]] void throwFailureOfRequest(const kj::Exception& exception, bool isTimedOut,
                                        const NSString& selector);

/// A time-out of this length or more never runs out.
inline constexpr double longestTimeoutSeconds = 1e8;

/// Waits for the answer to a request, at most for the connection's time-outs. Throws NSException; see
/// KelvoImExportProxy.h. What failed is named by the selector.
template <typename Reply>
Reply awaitReply(NSConnection& connection, kj::Promise<Reply> reply, const NSString& selector) {
    NSConnection::Internals& own = connection.internals();
    kj::AsyncIoContext& io = own.loop.internals().io;
    bool isTimedOut = false;
    const auto giveUp = [&isTimedOut]() -> kj::Promise<Reply> {
        isTimedOut = true;
        return kj::Promise<Reply>(failureOfCall("timed out"));
    };
    const auto after = [&io](double seconds) {
        // The timer's own notion of now is as old as the last wait.
        const auto now = kj::systemPreciseMonotonicClock().now();
        return io.provider->getTimer().atTime(now +
                                              static_cast<std::int64_t>(seconds * 1e9) * kj::NANOSECONDS);
    };
    if (own.requestTimeoutSeconds < std::min(own.replyTimeoutSeconds, longestTimeoutSeconds))
        reply =
            reply.exclusiveJoin(after(own.requestTimeoutSeconds).then([&own, giveUp]() -> kj::Promise<Reply> {
                return own.remote->network.getCurrentQueueCount() > 0 ? giveUp()
                                                                      : kj::Promise<Reply>(kj::NEVER_DONE);
            }));
    if (own.replyTimeoutSeconds < longestTimeoutSeconds)
        reply = reply.exclusiveJoin(after(own.replyTimeoutSeconds).then(giveUp));
    try {
        return reply.wait(io.waitScope);
    } catch (const kj::Exception& exception) {
        throwFailureOfRequest(exception, isTimedOut, selector);
    }
}

template <typename Context, typename Decode, typename Operate, typename Encode>
kj::Promise<void> Conversation::answer(Context context, Decode decode, Operate operate, Encode encode) {
    struct Request final : PendingRequest {
        Request(Context&& given, Decode&& d, Operate&& o, Encode&& e)
            : context_(kj::mv(given)), decode_(std::move(d)), operate_(std::move(o)), encode_(std::move(e)) {}

        ~Request() noexcept override {}

        bool isAwaited() override { return fulfiller->isWaiting(); }
        void perform() override {
            try {
                auto arguments = decode_(context_.getParams());
                context_.releaseParams();
                auto result = std::apply(operate_, std::move(arguments));
                // The work may have run the loop, and the caller may have gone away meanwhile; its context
                // went with it.
                if (!isAwaited())
                    return;
                encode_(context_, result);
                fulfiller->fulfill();
            } catch (const kj::Exception& exception) {
                fulfiller->reject(failureOfCall(exception.getDescription().cStr()));
            } catch (const std::exception& exception) {
                fulfiller->reject(failureOfCall(exception.what()));
            }
        }

        kj::Own<kj::PromiseFulfiller<void>> fulfiller;

    private:
        Context context_;
        Decode decode_;
        Operate operate_;
        Encode encode_;
    };

    context.allowCancellation();
    auto request =
        std::make_shared<Request>(kj::mv(context), std::move(decode), std::move(operate), std::move(encode));
    auto pair = kj::newPromiseAndFulfiller<void>();
    request->fulfiller = kj::mv(pair.fulfiller);
    enqueue(std::move(request));
    return kj::mv(pair.promise);
}

} // namespace kelvo
