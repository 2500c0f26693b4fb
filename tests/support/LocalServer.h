#pragma once

#include <gtest/gtest.h>

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace kelvo::tests {

/// A web server on a port of this machine's loopback that counts what it is asked for.
class LocalServer {
public:
    LocalServer() {
        listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        EXPECT_EQ(bind(listener_, reinterpret_cast<const sockaddr*>(&address), size), 0);
        EXPECT_EQ(listen(listener_, 64), 0);
        EXPECT_EQ(getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &size), 0);
        port_ = ntohs(address.sin_port);
        EXPECT_EQ(pipe2(stop_, O_CLOEXEC), 0);
        thread_ = std::thread([this] { serve(); });
    }
    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;
    ~LocalServer() {
        close(stop_[1]);
        thread_.join();
        for (const int held : held_)
            close(held);
        close(stop_[0]);
        close(listener_);
    }

    std::string url(const std::string& path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    void respond(const std::string& path, const std::string& type, const std::string& body,
                 const char* status = "200 OK") {
        set(path, std::string("HTTP/1.1 ") + status + "\r\nContent-Type: " + type + "\r\nContent-Length: " +
                      std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
    }
    /// Scripts of any page may follow.
    void redirect(const std::string& path, const std::string& to, const char* status = "302 Found") {
        set(path, redirection(to, status));
    }
    /// The connection is taken and nothing comes, unless release() is called.
    void keepSilent(const std::string& path) { set(path, ""); }
    /// Redirects what has been kept waiting so far; how many there were.
    int releaseTo(const std::string& to) {
        const std::lock_guard lock(mutex_);
        const std::string response = redirection(to, "302 Found");
        for (const int held : held_) {
            send(held, response.data(), response.size(), MSG_NOSIGNAL);
            close(held);
        }
        const auto count = static_cast<int>(held_.size());
        held_.clear();
        return count;
    }

    int count(const std::string& path) {
        const std::lock_guard lock(mutex_);
        return counts_[path];
    }

private:
    static std::string redirection(const std::string& to, const char* status) {
        return std::string("HTTP/1.1 ") + status + "\r\nLocation: " + to +
               "\r\nAccess-Control-Allow-Origin: *\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    }
    void set(const std::string& path, const std::string& response) {
        const std::lock_guard lock(mutex_);
        responses_[path] = response;
    }

    void serve() {
        for (;;) {
            pollfd waits[2] = {{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
            if (poll(waits, 2, -1) < 0)
                continue;
            if (waits[1].revents != 0)
                return;
            const int peer = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
            if (peer >= 0 && answer(peer)) {
                close(peer);
            } else if (peer >= 0) {
                const std::lock_guard lock(mutex_);
                held_.push_back(peer);
            }
        }
    }

    /// False when the connection is to stay open.
    bool answer(int peer) {
        std::string request;
        char buffer[4096];
        while (request.find("\r\n\r\n") == std::string::npos) {
            const ssize_t count = recv(peer, buffer, sizeof buffer, 0);
            if (count <= 0)
                return true;
            request.append(buffer, static_cast<std::size_t>(count));
        }
        const std::size_t begin = request.find(' ') + 1;
        const std::string path = request.substr(begin, request.find(' ', begin) - begin);
        std::string response = "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
        {
            const std::lock_guard lock(mutex_);
            ++counts_[path];
            if (const auto found = responses_.find(path); found != responses_.end())
                response = found->second;
        }
        if (response.empty())
            return false;
        send(peer, response.data(), response.size(), MSG_NOSIGNAL);
        return true;
    }

    int listener_ = -1;
    int stop_[2] = {-1, -1};
    int port_ = 0;
    std::thread thread_;
    std::mutex mutex_;
    std::map<std::string, std::string> responses_;
    std::map<std::string, int> counts_;
    std::vector<int> held_;
};

/// One black pixel.
inline const std::string
    smallPicture("GIF89a\x01\0\x01\0\x80\0\0\0\0\0\xFF\xFF\xFF!\xF9\4\1\0\0\0\0,\0\0\0\0\1\0\1\0\0\2\2D\1\0;",
                 43);

} // namespace kelvo::tests
