#pragma once

#include "platform/foundation/FileIO.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>

namespace kelvo::tests {

/// A port of this machine at which nobody is to ask for anything.
class Listener {
public:
    Listener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        ::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&address), length);
        ::listen(socket_.get(), 5);
        ::getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&address), &length);
        port_ = ntohs(address.sin_port);
    }

    std::uint16_t port() const { return port_; }
    /// "http://127.0.0.1:<port>", without a slash at the end.
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }
    bool wasAsked() const { return FileDescriptor(::accept(socket_.get(), nullptr, nullptr)).get() >= 0; }

private:
    FileDescriptor socket_;
    std::uint16_t port_ = 0;
};

} // namespace kelvo::tests
