#include "platform/webkit/engine/NetworkProxy.h"

#include "platform/foundation/NSLog.h"
#include "platform/foundation/units/ASCII.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>
#include <utility>

#include <sys/random.h>

namespace kelvo {
namespace {

constexpr char userName[] = "plumwick";
constexpr std::size_t passwordBytes = 16;
/// WebKit keeps to six connections a host and a few dozen in all.
constexpr std::size_t mostConnections = 256;
/// Connections that have not shown the password yet: any user can come this far.
constexpr std::size_t mostStrangers = 32;
/// To one of several addresses. A page has 15 seconds in all.
constexpr guint secondsToConnect = 4;
constexpr guint millisecondsBetweenQuestions = 20;

enum Reply : std::uint8_t { succeeded = 0, notAllowed = 2, hostUnreachable = 4, notSupported = 7 };

template <typename T>
class Reference {
public:
    explicit Reference(T* object = nullptr) : object_(object) {}
    Reference(const Reference&) = delete;
    Reference& operator=(const Reference&) = delete;
    ~Reference() { reset(nullptr); }

    T* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    void reset(T* object) {
        if (object_)
            g_object_unref(object_);
        object_ = object;
    }

private:
    T* object_;
};

std::string newPassword() {
    std::array<std::uint8_t, passwordBytes> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        return {};
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += {lowerHexDigits[byte >> 4], lowerHexDigits[byte & 15]};
    return text;
}

/// In a time that does not tell how much of it is right.
bool isSameSecret(const std::string& left, const std::string& right) {
    unsigned difference = left.size() == right.size() ? 0 : 1;
    for (std::size_t at = 0; at < std::min(left.size(), right.size()); ++at)
        difference |= static_cast<unsigned char>(left[at] ^ right[at]);
    return difference == 0;
}

std::string textOfAddress(GSocketFamily family, const std::string& bytes) {
    const Reference address(
        g_inet_address_new_from_bytes(reinterpret_cast<const guint8*>(bytes.data()), family));
    char* text = g_inet_address_to_string(address.get());
    std::string copy = text;
    g_free(text);
    return copy;
}

} // namespace

/// One connection on its way: greeting, password, request, then bytes in both directions.
class NetworkProxy::Connection : public std::enable_shared_from_this<Connection> {
public:
    Connection(NetworkProxy& proxy, GSocketConnection* client, std::uint64_t number)
        : proxy_(&proxy),
          client_(G_SOCKET_CONNECTION(g_object_ref(client))),
          cancellable_(g_cancellable_new()),
          number_(number) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        for (GSocketConnection* stream : {client_.get(), server_.get()}) {
            if (stream)
                g_io_stream_close(G_IO_STREAM(stream), nullptr, nullptr);
        }
    }

    void start() { need(2, &Connection::greeted); }
    /// At once for both sides. The descriptors go when the operations that were under way have been told.
    void end() {
        for (GSocketConnection* stream : {client_.get(), server_.get()}) {
            if (stream)
                g_socket_shutdown(g_socket_connection_get_socket(stream), TRUE, TRUE, nullptr);
        }
        g_cancellable_cancel(cancellable_.get());
        if (auto* proxy = std::exchange(proxy_, nullptr))
            proxy->remove(shared_from_this());
    }
    bool isStranger() const noexcept { return !isKnown_; }
    bool isPending() const noexcept { return isPending_; }
    std::uint64_t number() const noexcept { return number_; }

    void decide() {
        const ConnectionDecision decision =
            proxy_->isOpen_ ? proxy_->decide_(host_, port_) : ConnectionDecision();
        isPending_ = decision.state == ConnectionDecision::State::pending;
        if (isPending_)
            return proxy_->wait();
        if (decision.state == ConnectionDecision::State::refused)
            return refuse(notAllowed);
        addresses_ = decision.addresses;
        proxy_->wasUsed_ = true;
        connectToNext();
    }

private:
    using Step = void (Connection::*)();
    struct Waiting {
        std::shared_ptr<Connection> connection;
        Step next;
    };
    /// What the callback of an operation holds; empty when the connection has been ended meanwhile.
    static std::unique_ptr<Waiting> take(gpointer data) {
        std::unique_ptr<Waiting> waiting(static_cast<Waiting*>(data));
        return waiting->connection->proxy_ ? std::move(waiting) : nullptr;
    }
    Waiting* hold(Step next) { return new Waiting{shared_from_this(), next}; }

    /// Goes on with so many bytes in in_.
    void need(std::size_t count, Step next) {
        in_.assign(count, '\0');
        g_input_stream_read_all_async(
            g_io_stream_get_input_stream(G_IO_STREAM(client_.get())), in_.data(), count, G_PRIORITY_DEFAULT,
            cancellable_.get(),
            [](GObject* stream, GAsyncResult* result, gpointer data) {
                gsize got = 0;
                const bool isRead =
                    g_input_stream_read_all_finish(G_INPUT_STREAM(stream), result, &got, nullptr);
                if (const auto waiting = take(data)) {
                    Connection& own = *waiting->connection;
                    if (isRead && got == own.in_.size())
                        (own.*waiting->next)();
                    else
                        own.end();
                }
            },
            hold(next));
    }
    void say(std::string bytes, Step next) {
        out_ = std::move(bytes);
        g_output_stream_write_all_async(
            g_io_stream_get_output_stream(G_IO_STREAM(client_.get())), out_.data(), out_.size(),
            G_PRIORITY_DEFAULT, cancellable_.get(),
            [](GObject* stream, GAsyncResult* result, gpointer data) {
                const bool isWritten =
                    g_output_stream_write_all_finish(G_OUTPUT_STREAM(stream), result, nullptr, nullptr);
                if (const auto waiting = take(data)) {
                    Connection& own = *waiting->connection;
                    if (isWritten)
                        (own.*waiting->next)();
                    else
                        own.end();
                }
            },
            hold(next));
    }
    std::uint8_t byte(std::size_t at) const { return static_cast<std::uint8_t>(in_[at]); }

    void greeted() {
        if (byte(0) != 5)
            return end();
        need(byte(1), &Connection::gotMethods);
    }
    void gotMethods() {
        constexpr char withPassword = 2;
        if (in_.find(withPassword) == std::string::npos)
            return say("\x05\xFF", &Connection::end);
        say("\x05\x02", &Connection::waitForName);
    }
    void waitForName() { need(2, &Connection::gotNameLength); }
    void gotNameLength() {
        if (byte(0) != 1)
            return end();
        need(byte(1) + std::size_t{1}, &Connection::gotName);
    }
    void gotName() {
        name_ = in_.substr(0, in_.size() - 1);
        need(byte(in_.size() - 1), &Connection::gotPassword);
    }
    void gotPassword() {
        if (proxy_->password_.empty() || name_ != userName || !isSameSecret(in_, proxy_->password_))
            return say("\x01\x01", &Connection::end);
        isKnown_ = true;
        say(std::string("\x01\x00", 2), &Connection::waitForRequest);
    }
    void waitForRequest() { need(4, &Connection::gotRequest); }
    void gotRequest() {
        if (byte(0) != 5 || byte(1) != 1)
            return refuse(notSupported);
        addressKind_ = byte(3);
        if (addressKind_ == 3)
            need(1, &Connection::gotHostLength);
        else if (addressKind_ == 1 || addressKind_ == 4)
            need(addressKind_ == 1 ? 6 : 18, &Connection::gotHost);
        else
            refuse(notSupported);
    }
    void gotHostLength() { need(byte(0) + std::size_t{2}, &Connection::gotHost); }
    void gotHost() {
        const std::size_t length = in_.size() - 2;
        port_ = static_cast<std::uint16_t>(byte(length) << 8 | byte(length + 1));
        host_ = in_.substr(0, length);
        if (addressKind_ != 3)
            host_ = textOfAddress(addressKind_ == 1 ? G_SOCKET_FAMILY_IPV4 : G_SOCKET_FAMILY_IPV6, host_);
        decide();
    }

    static std::string reply(Reply code) {
        return std::string{5, static_cast<char>(code), 0, 1, 0, 0, 0, 0, 0, 0};
    }
    void refuse(Reply code) { say(reply(code), &Connection::end); }

    void connectToNext() {
        if (addresses_.empty())
            return refuse(hostUnreachable);
        const std::string next = addresses_.front();
        addresses_.erase(addresses_.begin());
        const Reference<GSocketAddress> address(g_inet_socket_address_new_from_string(next.c_str(), port_));
        if (!address)
            return connectToNext();
        const Reference<GSocketClient> client(g_socket_client_new());
        g_socket_client_set_enable_proxy(client.get(), FALSE);
        g_socket_client_set_timeout(client.get(), secondsToConnect);
        g_socket_client_connect_async(
            client.get(), G_SOCKET_CONNECTABLE(address.get()), cancellable_.get(),
            [](GObject* source, GAsyncResult* result, gpointer data) {
                GSocketConnection* server =
                    g_socket_client_connect_finish(G_SOCKET_CLIENT(source), result, nullptr);
                if (const auto waiting = take(data))
                    waiting->connection->connected(server);
                else if (server)
                    g_object_unref(server);
            },
            hold(nullptr));
    }
    void connected(GSocketConnection* server) {
        if (!server)
            return connectToNext();
        server_.reset(server);
        // The time was for connecting. How long a server may be silent is the page's business.
        g_socket_set_timeout(g_socket_connection_get_socket(server), 0);
        say(reply(succeeded), &Connection::relay);
    }
    void relay() {
        pass(client_.get(), server_.get());
        pass(server_.get(), client_.get());
    }
    void pass(GSocketConnection* from, GSocketConnection* to) {
        struct Passing {
            std::shared_ptr<Connection> connection;
            GSocketConnection* to;
        };
        g_output_stream_splice_async(
            g_io_stream_get_output_stream(G_IO_STREAM(to)), g_io_stream_get_input_stream(G_IO_STREAM(from)),
            G_OUTPUT_STREAM_SPLICE_NONE, G_PRIORITY_DEFAULT, cancellable_.get(),
            [](GObject* stream, GAsyncResult* result, gpointer data) {
                const std::unique_ptr<Passing> passing(static_cast<Passing*>(data));
                Connection& own = *passing->connection;
                const bool isWhole =
                    g_output_stream_splice_finish(G_OUTPUT_STREAM(stream), result, nullptr) >= 0;
                if (!own.proxy_)
                    return;
                // One side may have said all that it has to say long before the other.
                if (isWhole && ++own.endedDirections_ < 2)
                    g_socket_shutdown(g_socket_connection_get_socket(passing->to), FALSE, TRUE, nullptr);
                else
                    own.end();
            },
            new Passing{shared_from_this(), to});
    }

    /// Null once it has been ended.
    NetworkProxy* proxy_;
    Reference<GSocketConnection> client_;
    Reference<GSocketConnection> server_;
    Reference<GCancellable> cancellable_;
    std::uint64_t number_;
    std::string in_;
    std::string out_;
    std::string name_;
    std::string host_;
    std::uint8_t addressKind_ = 0;
    std::uint16_t port_ = 0;
    std::vector<std::string> addresses_;
    bool isKnown_ = false;
    bool isPending_ = false;
    int endedDirections_ = 0;
};

NetworkProxy::NetworkProxy(Decision decide) : decide_(std::move(decide)) {
    const Reference<GInetAddress> loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
    const Reference<GSocketAddress> any(g_inet_socket_address_new(loopback.get(), 0));
    GSocketService* service = g_socket_service_new();
    g_socket_listener_set_backlog(G_SOCKET_LISTENER(service), mostConnections);
    GSocketAddress* own = nullptr;
    if (g_socket_listener_add_address(G_SOCKET_LISTENER(service), any.get(), G_SOCKET_TYPE_STREAM,
                                      G_SOCKET_PROTOCOL_TCP, nullptr, &own, nullptr)) {
        port_ = g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(own));
        g_object_unref(own);
    } else {
        NSLog(u"Pages have no network: no port of this machine is free.");
    }
    service_ = service;
    g_signal_connect(service, "incoming", G_CALLBACK(onIncoming), this);
    g_socket_service_start(service);
}

NetworkProxy::~NetworkProxy() {
    close();
    g_signal_handlers_disconnect_by_data(service_, this);
    g_socket_service_stop(G_SOCKET_SERVICE(service_));
    g_object_unref(service_);
}

void NetworkProxy::open() {
    close();
    isOpen_ = true;
}

void NetworkProxy::close() {
    isOpen_ = false;
    if (timer_)
        g_source_remove(std::exchange(timer_, 0));
    while (!connections_.empty())
        (*connections_.begin())->end();
}

std::string NetworkProxy::renewAddress() {
    password_ = newPassword();
    wasUsed_ = false;
    return std::string("socks5://") + userName + ':' + password_ + "@127.0.0.1:" + std::to_string(port_);
}

gboolean NetworkProxy::onIncoming(void*, void* connection, void*, gpointer self) {
    auto& own = *static_cast<NetworkProxy*>(self);
    own.add(std::make_shared<Connection>(own, G_SOCKET_CONNECTION(connection), own.connectionCount_++));
    return TRUE;
}

void NetworkProxy::add(const std::shared_ptr<Connection>& connection) {
    std::size_t strangers = 0;
    std::shared_ptr<Connection> oldest;
    for (const auto& other : connections_) {
        if (!other->isStranger())
            continue;
        ++strangers;
        if (!oldest || other->number() < oldest->number())
            oldest = other;
    }
    if (connections_.size() - strangers >= mostConnections)
        return;
    // Those who hold a place without a word do not keep WebKit out.
    if (strangers >= mostStrangers)
        oldest->end();
    connections_.insert(connection);
    connection->start();
}

void NetworkProxy::remove(const std::shared_ptr<Connection>& connection) {
    connections_.erase(connection);
}

void NetworkProxy::wait() {
    if (!timer_)
        timer_ = g_timeout_add(millisecondsBetweenQuestions, onTimer, this);
}

gboolean NetworkProxy::onTimer(gpointer self) {
    auto& own = *static_cast<NetworkProxy*>(self);
    own.timer_ = 0;
    std::vector<std::shared_ptr<Connection>> pending;
    std::ranges::copy_if(own.connections_, std::back_inserter(pending),
                         [](const auto& connection) { return connection->isPending(); });
    for (const auto& connection : pending)
        connection->decide();
    return G_SOURCE_REMOVE;
}

} // namespace kelvo
