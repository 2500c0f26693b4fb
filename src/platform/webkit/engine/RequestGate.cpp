#include "platform/webkit/engine/RequestGate.h"

#include "platform/webkit/engine/GateMessages.h"

#include <glib-unix.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

namespace kelvo {

RequestGate::RequestGate(std::string folder, Decision decide)
    : folder_(static_cast<std::string&&>(folder)), decide_(static_cast<Decision&&>(decide)) {}

RequestGate::~RequestGate() {
    close();
}

void RequestGate::close() {
    disconnect();
    stopListening();
}

bool RequestGate::openForOne() {
    close();
    const auto address = gate::addressOfSocket(socketPath());
    if (folder_.empty() || !address || (mkdir(folder_.c_str(), 0700) != 0 && errno != EEXIST))
        return false;
    struct stat status {};
    // Somebody else's folder that took the place of ours is not to be used.
    if (lstat(folder_.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid())
        return false;
    listening_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listening_ < 0 ||
        bind(listening_, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0 ||
        listen(listening_, 1) != 0)
        return false;
    listeningSource_ = g_unix_fd_add(listening_, G_IO_IN, accept, this);
    return true;
}

void RequestGate::stopListening() {
    if (listeningSource_)
        g_source_remove(listeningSource_);
    listeningSource_ = 0;
    if (listening_ >= 0)
        ::close(listening_);
    listening_ = -1;
    // With what WebKit notes down there of each sandbox.
    std::error_code ignored;
    if (!folder_.empty())
        std::filesystem::remove_all(folder_, ignored);
}

void RequestGate::disconnect() {
    if (connectedSource_)
        g_source_remove(connectedSource_);
    connectedSource_ = 0;
    if (connected_ >= 0)
        ::close(connected_);
    connected_ = -1;
    peer_ = 0;
}

gboolean RequestGate::accept(gint descriptor, GIOCondition, gpointer self) {
    auto& own = *static_cast<RequestGate*>(self);
    const int peer = accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC);
    if (peer < 0)
        return G_SOURCE_CONTINUE;
    // A web process that stops in the middle of a question must not hold up the engine.
    const timeval patience{2, 0};
    setsockopt(peer, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(peer, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    ucred credentials{};
    socklen_t size = sizeof credentials;
    if (getsockopt(peer, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0)
        own.peer_ = credentials.pid;
    own.connected_ = peer;
    own.connectedSource_ = g_unix_fd_add(peer, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), serve, self);
    own.listeningSource_ = 0;
    own.stopListening();
    return G_SOURCE_REMOVE;
}

gboolean RequestGate::serve(gint, GIOCondition, gpointer self) {
    auto& own = *static_cast<RequestGate*>(self);
    if (own.answerOne())
        return G_SOURCE_CONTINUE;
    own.connectedSource_ = 0;
    own.disconnect();
    return G_SOURCE_REMOVE;
}

bool RequestGate::answerOne() {
    const int descriptor = connected_;
    const auto url = gate::receiveText(descriptor);
    const auto redirectedFrom = url ? gate::receiveText(descriptor) : std::nullopt;
    const auto statusCode = redirectedFrom ? gate::receiveText(descriptor) : std::nullopt;
    return statusCode &&
           gate::sendText(descriptor, decide_({*url, *redirectedFrom, std::atoi(statusCode->c_str())}));
}

} // namespace kelvo
