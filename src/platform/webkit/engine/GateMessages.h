#pragma once

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

/// What the extension in the web process and the engine program say to each other: texts, each after its
/// length in 32 bits. Three (address, the one that redirected, status code) ask, one answers.
namespace kelvo::gate {

/// Longer addresses are no question: nothing is sent for them. Of embedded data only the kind is asked about.
inline constexpr std::uint32_t maximumLength = 1 << 20;

/// Absent for a path that is too long for a socket.
inline std::optional<sockaddr_un> addressOfSocket(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return std::nullopt;
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

inline bool receiveAll(int descriptor, void* bytes, std::size_t count) {
    auto* at = static_cast<char*>(bytes);
    while (count > 0) {
        const ssize_t got = recv(descriptor, at, count, 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        at += got;
        count -= static_cast<std::size_t>(got);
    }
    return true;
}

inline bool sendText(int descriptor, const std::string& text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    std::string message(reinterpret_cast<const char*>(&length), sizeof length);
    message += text;
    const char* at = message.data();
    std::size_t left = message.size();
    while (left > 0) {
        const ssize_t sent = send(descriptor, at, left, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return false;
        at += sent;
        left -= static_cast<std::size_t>(sent);
    }
    return true;
}

inline std::optional<std::string> receiveText(int descriptor) {
    std::uint32_t length = 0;
    if (!receiveAll(descriptor, &length, sizeof length) || length > maximumLength)
        return std::nullopt;
    std::string text(length, '\0');
    if (!receiveAll(descriptor, text.data(), length))
        return std::nullopt;
    return text;
}

} // namespace kelvo::gate
