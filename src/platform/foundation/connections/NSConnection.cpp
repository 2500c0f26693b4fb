#include "platform/foundation/connections/NSConnection.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnectionInternals.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>
#include <thread>
#include <utility>

namespace kelvo {
namespace {

constexpr int longestBacklog = 128;
// So much of one client's requests is held in memory before its socket is left to wait.
constexpr std::size_t flowLimitInWords = NSConnection::fieldLimitInBytes / sizeof(capnp::word);
constexpr auto pauseAfterFailedAccept = 1 * kj::SECONDS;

NSString stringFromBytes(const std::string& bytes) {
    return NSString::stringByRepairingUTF8String(bytes);
}

NSString textOfError(int error) {
    return stringFromBytes(std::system_category().message(error));
}

FileDescriptor makeSocket() {
    FileDescriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!made)
        throw NSException(NSPortException,
                          stringWithFormat(u"No socket could be made: %@.", textOfError(errno)));
    return made;
}

sockaddr_un addressOfPath(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), std::min(path.size() + 1, sizeof address.sun_path));
    return address;
}

NSString reasonOfFailedAccept(int error) {
    if (error == EMFILE)
        return stringWithFormat(u"All %lld file descriptors of the service are in use.",
                                static_cast<long long>(sysconf(_SC_OPEN_MAX)));
    return stringWithFormat(u"A client could not be let in: %@.", textOfError(error));
}

/// Whether this process's own user is at the other end; tells which process that is.
bool isOwnUsers(int socket, pid_t& process) {
    ucred peer{};
    socklen_t size = sizeof peer;
    const bool isOwn =
        getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
    process = peer.pid;
    return isOwn;
}

/// 0, or the error. A full queue of waiting clients is tried again until the patience ends.
int connectSocket(int descriptor, const sockaddr_un& address, double patienceSeconds) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (;;) {
        if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return 0;
        if (errno == EINTR)
            continue;
        const std::chrono::duration<double> waited = Clock::now() - begin;
        if (errno != EAGAIN || !(waited.count() < patienceSeconds))
            return errno;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

} // namespace

capnp::ReaderOptions messageLimits() {
    capnp::ReaderOptions options;
    options.traversalLimitInWords = messageLimitInBytes / sizeof(capnp::word);
    // A value takes a struct, a list and an entry per level.
    options.nestingLimit = static_cast<int>(Value::maximumDepth) * 3 + 16;
    return options;
}

kj::Exception failureOfCall(const char* what) {
    return kj::Exception(kj::Exception::Type::FAILED, __FILE__, __LINE__, kj::heapString(what));
}

void throwFailureOfRequest(const kj::Exception& exception, bool isTimedOut, const NSString& selector) {
    if (isTimedOut)
        throw NSException(NSPortTimeoutException,
                          stringWithFormat(u"%@ was not answered in time.", selector));
    if (exception.getType() == kj::Exception::Type::DISCONNECTED)
        throw NSException(NSInvalidReceivePortException,
                          stringWithFormat(u"The connection broke off before %@ was answered.", selector));
    std::string_view text(exception.getDescription().cStr());
    constexpr std::string_view prefix = "remote exception: ";
    if (text.starts_with(prefix))
        text.remove_prefix(prefix.size());
    // The other side sent "name: reason" of an NSException, or the bare text of something else.
    const std::size_t colon = text.find(": ");
    if (colon == std::string_view::npos || text.substr(0, colon).find(' ') != std::string_view::npos)
        throw NSException(NSGenericException, NSString::stringByRepairingUTF8String(text));
    throw NSException(NSString::stringByRepairingUTF8String(text.substr(0, colon)),
                      NSString::stringByRepairingUTF8String(text.substr(colon + 2)));
}

PendingRequest::~PendingRequest() = default;

NSVendedObject::~NSVendedObject() = default;

void Conversation::enqueue(std::shared_ptr<PendingRequest> request) {
    request->conversation = this;
    connection_.enqueue(std::move(request));
}

NSConnection::Internals::Internals()
    : requestTimeoutSeconds(std::numeric_limits<double>::infinity()),
      replyTimeoutSeconds(std::numeric_limits<double>::infinity()),
      messageRoom(
          kj::refcounted<MessageRoom>(loop.internals().io.provider->getTimer(), messageLimitInBytes)) {}

NSConnection::Internals::~Internals() noexcept {
    loop.removeSource(*this);
}

void NSConnection::Internals::enqueue(std::shared_ptr<PendingRequest> request) {
    queue.push_back(std::move(request));
    loop.wakeUp();
}

std::deque<std::shared_ptr<PendingRequest>>::iterator NSConnection::Internals::nextRequest() {
    return std::ranges::find_if(queue, [this](const std::shared_ptr<PendingRequest>& request) {
        return conversationsUnderWay.empty() ||
               (!conversationsWait && std::ranges::find(conversationsUnderWay, request->conversation) ==
                                          conversationsUnderWay.end());
    });
}

bool NSConnection::Internals::performPending() {
    const auto next = nextRequest();
    if (next == queue.end())
        return false;
    const std::shared_ptr<PendingRequest> request = std::move(*next);
    queue.erase(next);
    if (request->isAwaited()) {
        NSAutoreleasePool pool;
        conversationsUnderWay.push_back(request->conversation);
        request->perform();
        conversationsUnderWay.pop_back();
    }
    return true;
}

void NSConnection::Internals::taskFailed(kj::Exception&&) {
    // A conversation that ended badly is over; the others do not care, and its client knows.
}

void NSConnection::Internals::listen(FileDescriptor socket) {
    listening = std::move(socket);
    listeningObserver = kj::heap<kj::UnixEventPort::FdObserver>(
        loop.internals().io.unixEventPort, listening.get(), kj::UnixEventPort::FdObserver::OBSERVE_READ);
    tasks.add(acceptNext());
}

kj::Promise<void> NSConnection::Internals::acceptNext() {
    for (;;) {
        FileDescriptor socket(accept4(listening.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (socket) {
            isAcceptFailing = false;
            converse(std::move(socket));
        } else if (errno == EAGAIN) {
            return listeningObserver->whenBecomesReadable().then([this] { return acceptNext(); });
        } else if (errno != EINTR && errno != ECONNABORTED) {
            if (const int error = errno; !std::exchange(isAcceptFailing, true))
                NSLog(u"%@ Clients wait until one can be let in again.", reasonOfFailedAccept(error));
            return loop.internals().io.provider->getTimer().afterDelay(pauseAfterFailedAccept).then([this] {
                return acceptNext();
            });
        }
    }
}

void NSConnection::Internals::converse(FileDescriptor socket) {
    pid_t ignored = 0;
    if (!isOwnUsers(socket.get(), ignored)) {
        NSLog(u"A connection by another user was refused.");
        return;
    }
    if (!rootObject)
        return;

    struct Client {
        Client(kj::UnixEventPort& port, FileDescriptor connected, MessageRoom& room,
               capnp::Capability::Client bootstrap)
            : stream(port, std::move(connected)),
              messages(stream, &room),
              network(messages, capnp::rpc::twoparty::Side::SERVER, messageLimits()),
              system(capnp::makeRpcServer(network, kj::mv(bootstrap))) {
            system.setFlowLimit(flowLimitInWords);
        }
        LocalStream stream;
        LocalMessageStream messages;
        capnp::TwoPartyVatNetwork network;
        capnp::RpcSystem<capnp::rpc::twoparty::VatId> system;
    };
    auto client = kj::heap<Client>(loop.internals().io.unixEventPort, std::move(socket), *messageRoom,
                                   rootObject->capabilityFor(std::make_shared<Conversation>(*this)));
    auto end = client->network.onDisconnect();
    tasks.add(end.attach(kj::mv(client)));
}

NSConnection::Internals::Remote::Remote(kj::UnixEventPort& port, FileDescriptor socket, pid_t peerProcess)
    : stream(port, std::move(socket)),
      messages(stream, nullptr),
      network(messages, capnp::rpc::twoparty::Side::CLIENT, messageLimits()),
      system(capnp::makeRpcClient(network)),
      disconnection(network.onDisconnect().then([this] { isConnected = false; }).eagerlyEvaluate(nullptr)),
      peer(peerProcess) {}

capnp::Capability::Client NSConnection::Internals::Remote::rootProxy() {
    capnp::MallocMessageBuilder message(4);
    auto server = message.getRoot<capnp::rpc::twoparty::VatId>();
    server.setSide(capnp::rpc::twoparty::Side::SERVER);
    return system.bootstrap(server);
}

NSConnection::NSConnection() : internals_(std::make_unique<Internals>()) {}

NSConnection::~NSConnection() = default;

NSConnection& NSConnection::defaultConnection() {
    // The loop is made first, so that it outlives the connection.
    NSRunLoop& loop = NSRunLoop::currentRunLoop();
    static thread_local const std::unique_ptr<NSConnection> connection = [&loop] {
        std::unique_ptr<NSConnection> made(new NSConnection);
        loop.addSource(*made->internals_);
        return made;
    }();
    return *connection;
}

std::unique_ptr<NSConnection> NSConnection::connectionWithRegisteredName(const NSString& name) {
    const std::string path = socketPathOfPortName(name);
    FileDescriptor socket = makeSocket();
    const sockaddr_un address = addressOfPath(path);
    constexpr double patienceSeconds = 2;
    if (const int error = connectSocket(socket.get(), address, patienceSeconds)) {
        if (error == ENOENT || error == ECONNREFUSED)
            return nullptr;
        throw NSException(NSPortException, stringWithFormat(u"The socket %@ cannot be reached: %@.",
                                                            stringFromBytes(path), textOfError(error)));
    }
    pid_t peer = 0;
    if (!isOwnUsers(socket.get(), peer))
        throw NSException(NSPortException, stringWithFormat(u"The socket %@ is served by another user.",
                                                            stringFromBytes(path)));
    std::unique_ptr<NSConnection> connection(new NSConnection);
    Internals& internals = *connection->internals_;
    internals.remote = std::make_unique<Internals::Remote>(internals.loop.internals().io.unixEventPort,
                                                           std::move(socket), peer);
    return connection;
}

void NSConnection::setRootObject(std::shared_ptr<NSVendedObject> rootObject) {
    internals_->rootObject = std::move(rootObject);
}

bool NSConnection::registerName(const NSString& name) {
    try {
        const std::string path = socketPathOfPortName(name);
        auto lock = PortLock::lock(path, ".lock", 0);
        if (!lock)
            throw NSException(NSPortException, u"Another process holds it.");
        // Whoever left this socket behind no longer holds the lock.
        unlink(path.c_str());
        FileDescriptor socket = makeSocket();
        const sockaddr_un address = addressOfPath(path);
        if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(socket.get(), longestBacklog) != 0)
            throw NSException(NSPortException, textOfError(errno));
        internals_->nameLock = std::move(lock);
        internals_->listen(std::move(socket));
        return true;
    } catch (const NSException& exception) {
        NSLog(u"The name %@ could not be registered: %@", name, exception.reason());
        return false;
    }
}

void NSConnection::setIndependentConversationQueueing(bool waits) {
    internals_->conversationsWait = waits;
}

void NSConnection::setRequestTimeout(double seconds) {
    internals_->requestTimeoutSeconds = seconds;
}

void NSConnection::setReplyTimeout(double seconds) {
    internals_->replyTimeoutSeconds = seconds;
}

double NSConnection::requestTimeout() const {
    return internals_->requestTimeoutSeconds;
}

double NSConnection::replyTimeout() const {
    return internals_->replyTimeoutSeconds;
}

bool NSConnection::isValid() {
    if (!internals_->remote)
        return true;
    // What is left to say of the last request goes out with the next.
    internals_->remote->stream.setHoldsWrites(true);
    internals_->loop.internals().io.waitScope.poll();
    internals_->remote->stream.setHoldsWrites(false);
    return internals_->remote->isConnected;
}

pid_t NSConnection::peerProcessIdentifier() const {
    return internals_->remote ? internals_->remote->peer : 0;
}

} // namespace kelvo
