#include "platform/webkit/engine/NetworkProxy.h"

#include "platform/foundation/FileIO.h"
#include "support/LocalServer.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>

namespace kelvo {
namespace {

using State = ConnectionDecision::State;
using namespace std::string_literals;

/// Somebody who has found the port of a proxy.
class Client {
public:
    explicit Client(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        EXPECT_EQ(connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
    }

    /// What comes back for it: so many bytes, or fewer when the other side has ended.
    std::string say(const std::string& bytes, std::size_t count) {
        EXPECT_EQ(send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
        return hear(count);
    }
    std::string hear(std::size_t count) {
        std::string heard;
        const gint64 end = g_get_monotonic_time() + 20 * G_USEC_PER_SEC;
        while (heard.size() < count && g_get_monotonic_time() < end) {
            while (g_main_context_iteration(nullptr, FALSE)) {
            }
            char buffer[4096];
            pollfd wait{socket_.get(), POLLIN, 0};
            if (poll(&wait, 1, 1) <= 0)
                continue;
            const ssize_t got = recv(socket_.get(), buffer, std::min(count - heard.size(), sizeof buffer), 0);
            if (got <= 0)
                return heard + "(end)";
            heard.append(buffer, static_cast<std::size_t>(got));
        }
        return heard;
    }
    std::string greet(const std::string& password) {
        std::string heard = say("\5\2\0\2"s, 2);
        return heard += say("\1\10plumwick"s + static_cast<char>(password.size()) + password, 2);
    }

private:
    FileDescriptor socket_;
};

class NetworkProxyTest : public testing::Test {
protected:
    NetworkProxyTest()
        : proxy([this](const std::string& host, std::uint16_t hostPort) {
              asked += host + ' ' + std::to_string(hostPort) + '\n';
              return decision;
          }) {
        const std::string address = proxy.renewAddress();
        const std::size_t at = address.find('@');
        password = address.substr(address.find("plumwick:") + 9, at - address.find("plumwick:") - 9);
        port = std::stoi(address.substr(address.rfind(':') + 1));
        proxy.open();
    }
    std::string request(const std::string& host) {
        const std::string url = server.url("");
        const int target = std::stoi(url.substr(url.rfind(':') + 1));
        return "\5\1\0\3"s + static_cast<char>(host.size()) + host + static_cast<char>(target >> 8) +
               static_cast<char>(target);
    }

    tests::LocalServer server;
    ConnectionDecision decision{State::allowed, {"127.0.0.1"}};
    std::string asked;
    NetworkProxy proxy;
    std::string password;
    int port = 0;
};

TEST_F(NetworkProxyTest, NobodyGetsInWithoutThePassword) {
    EXPECT_EQ(password.size(), 32U);
    EXPECT_EQ(Client(port).say("\5\1\0"s, 3), "\5\xFF(end)");
    EXPECT_EQ(Client(port).say("\4\1\0\x50\x7F\0\0\1\0"s, 3), "(end)");
    EXPECT_EQ(Client(port).say("GET / HTTP/1.1\r\n\r\n", 3), "(end)");
    std::string wrong = password;
    wrong.back() = wrong.back() == '0' ? '1' : '0';
    for (const std::string& other : {wrong, ""s, password.substr(1), password + "0", std::string(255, 'x')})
        EXPECT_EQ(Client(port).greet(other), "\5\2\1\1") << other;
    const std::string old = password;
    proxy.renewAddress();
    EXPECT_EQ(Client(port).greet(old), "\5\2\1\1");
    EXPECT_EQ(asked, "");
}

TEST_F(NetworkProxyTest, ConnectsToTheAddressesOfTheDecision) {
    server.respond("/a", "text/plain", std::string(300000, 'x'));
    // Where nobody listens comes first; names are never looked up here.
    decision.addresses = {"nonsense", "::1", "127.0.0.1"};
    Client client(port);
    EXPECT_EQ(client.greet(password), "\5\2\1\0"s);
    EXPECT_EQ(client.say(request("name.invalid"), 10), "\5\0\0\1\0\0\0\0\0\0"s);
    EXPECT_EQ(asked, "name.invalid " + server.url("").substr(17) + "\n");
    const std::string answer = client.say("GET /a HTTP/1.0\r\n\r\n", 400000);
    EXPECT_EQ(answer.size(), answer.find("\r\n\r\n") + 4 + 300000 + 5);
    EXPECT_TRUE(answer.ends_with("x(end)") && proxy.wasUsed());

    asked.clear();
    Client byAddress(port);
    byAddress.greet(password);
    EXPECT_EQ(byAddress.say("\5\1\0\4"s + std::string(15, '\0') + "\1\1\2", 2), "\5\4")
        << "nobody listens there";
    EXPECT_EQ(asked, "::1 258\n");
}

TEST_F(NetworkProxyTest, RefusesAndHolds) {
    decision = {State::refused, {"127.0.0.1"}};
    for (const std::string& asks : {request("far.test"), "\5\1\0\1\x7F\0\0\1\0\x50"s}) {
        Client client(port);
        client.greet(password);
        EXPECT_EQ(client.say(asks, 11), "\5\2\0\1\0\0\0\0\0\0(end)"s);
    }
    for (const std::string& asks : {"\5\2\0\1\x7F\0\0\1\0\x50"s, "\5\1\0\7\x7F\0\0\1\0\x50"s}) {
        Client client(port);
        client.greet(password);
        EXPECT_EQ(client.say(asks, 11), "\5\7\0\1\0\0\0\0\0\0(end)"s) << "listening, unknown address";
    }
    EXPECT_FALSE(proxy.wasUsed());

    decision = {State::pending, {}};
    Client held(port), ended(port);
    held.greet(password);
    ended.greet(password);
    asked.clear();
    EXPECT_EQ(held.say(request("slow.test"), 0), "");
    while (std::ranges::count(asked, '\n') < 3)
        g_main_context_iteration(nullptr, TRUE);
    decision = {State::allowed, {"127.0.0.1"}};
    EXPECT_EQ(held.hear(10), "\5\0\0\1\0\0\0\0\0\0"s);

    proxy.close();
    EXPECT_EQ(held.hear(1), "(end)");
    EXPECT_EQ(ended.hear(1), "(end)");
    Client late(port);
    late.greet(password);
    EXPECT_EQ(late.say(request("near.test"), 2), "\5\2") << "refused";
}

TEST_F(NetworkProxyTest, SilentStrangersTakeNoRoom) {
    std::vector<std::unique_ptr<Client>> strangers;
    for (int count = 0; count < 100; ++count)
        strangers.push_back(std::make_unique<Client>(port));
    Client client(port);
    EXPECT_EQ(client.greet(password), "\5\2\1\0"s);
    EXPECT_EQ(client.say(request("near.test"), 2), "\5\0"s);
    EXPECT_EQ(strangers.front()->hear(1), "(end)");
}

} // namespace
} // namespace kelvo
