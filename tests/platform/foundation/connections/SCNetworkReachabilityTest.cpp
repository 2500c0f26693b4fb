#include "platform/foundation/connections/SCNetworkReachability.h"

#include <gtest/gtest.h>

#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace kelvo {
namespace {

constexpr std::uint32_t distance = kSCNetworkFlagsIsLocalAddress | kSCNetworkFlagsIsDirect;

/// "local", "near", "far" or "unknown".
std::string judgement(const std::string& host) {
    std::uint32_t flags = 0xFFFF;
    if (!SCNetworkCheckReachabilityByName(host, &flags))
        return flags == 0 ? "unknown" : "flags without an answer";
    switch (flags & distance) {
    case distance:
        return "local";
    case kSCNetworkFlagsIsDirect:
        return "near";
    case 0:
        return "far";
    default:
        return "local, but not direct";
    }
}

class Reachability : public testing::Test {
protected:
    const std::map<std::string, std::vector<std::string>> names{
        {"own.test", {"192.168.7.20"}},
        {"printer.test", {"192.168.7.99", "fd00:7::99"}},
        {"far.test", {"203.0.113.5"}},
        {"half.test", {"203.0.113.5", "192.168.7.99"}},
        {"ownandnear.test", {"127.0.0.1", "192.168.7.99"}},
        {"none.test", {}},
        {"xn--drucker-cxa.test", {"192.168.7.99"}},
    };
    std::atomic<int> lookUps = 0;
    const SCNetworkRehearsal rehearsal{
        [this](const std::string& name) -> std::optional<std::vector<std::string>> {
            ++lookUps;
            const auto entry = names.find(name);
            return entry == names.end() ? std::nullopt : std::optional(entry->second);
        },
        {{"192.168.7.20", 24}, {"10.1.2.3", 30}, {"fd00:7::20", 64}, {"fe80::20", 64}, {"100.64.0.1", 0}}};
};

TEST_F(Reachability, JudgesByTheAddress) {
    const std::pair<const char*, const char*> rows[] = {
        {"local", "127.0.0.1 127.255.255.254 127.1 0177.0.0.1 0x7f000001 2130706433 ::1 [::1] "
                  "[0:0:0:0:0:0:0:1] ::ffff:127.0.0.1 [::ffff:c0a8:714] 192.168.7.20 [FE80::20] 100.64.0.1"},
        {"far",
         "128.0.0.1 ::2 0.0.0.0 0 [::] [::ffff:0.0.0.0] 192.168.8.20 10.1.2.4 fd00:7:0:1::20 100.64.0.2"},
        {"near", "192.168.7.21 3232237333 10.1.2.1 [fd00:7::21] fe80::21 fe80::21%lo"},
        {"unknown", "[fe80::21%nosuchinterface] [127.0.0.1] 256.1.1.1.1"},
    };
    for (const auto& [expected, hosts] : rows) {
        std::istringstream list(hosts);
        for (std::string host; list >> host;)
            EXPECT_EQ(judgement(host), expected) << host;
    }
}

TEST_F(Reachability, ANameIsNearOnlyWithAllItsAddresses) {
    const std::pair<const char*, const char*> rows[] = {
        {"own.test", "local"},
        {"OWN.test", "local"},
        {"printer.test", "near"},
        {"far.test", "far"},
        {"half.test", "far"},
        {"ownandnear.test", "near"},
        {"none.test", "unknown"},
        {"nowhere.test", "unknown"},
        {"localhost", "local"},
        {"LocalHost.", "local"},
        {"pages.localhost", "local"},
        {"notlocalhost", "unknown"},
        {"drucker\xC3\xA4.test", "near"},
        {"\xEF\xBC\x91\xEF\xBC\x92\xEF\xBC\x97.1", "local"}, // full-width "127"
        {"\xFF.test", "unknown"},
        {"", "unknown"},
    };
    for (const auto& [host, expected] : rows)
        EXPECT_EQ(judgement(host), expected) << host;
    EXPECT_EQ(judgement(std::string("localhost\0.test", 15)), "unknown");
    EXPECT_EQ(judgement(std::string(100000, 'a')), "unknown");
}

TEST_F(Reachability, AnswersAreKept) {
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(judgement("far.test"), "far");
        EXPECT_EQ(judgement("nowhere.test"), "unknown");
        EXPECT_EQ(judgement("127.0.0.1"), "local");
        EXPECT_EQ(judgement("localhost"), "local");
    }
    EXPECT_EQ(lookUps, 2);
}

TEST(ReachabilityOfLinks, AZoneIsNotAnothers) {
    const SCNetworkRehearsal rehearsal([](const std::string&) { return std::nullopt; },
                                       {{"fe80::20%lo", 64}});
    EXPECT_EQ(judgement("fe80::21%lo"), "near");
    EXPECT_EQ(judgement("fe80::21"), "near");
    EXPECT_EQ(judgement("fe80::21%77"), "far");
}

TEST(ReachabilityOfASilentResolver, FailsAndLeavesAddressesAlone) {
    const auto isSilent = std::make_shared<std::atomic<bool>>(true);
    const auto waiting = std::make_shared<std::atomic<int>>(0);
    const SCNetworkRehearsal rehearsal(
        [isSilent, waiting](const std::string&) -> std::optional<std::vector<std::string>> {
            ++*waiting;
            while (*isSilent)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            --*waiting;
            return std::vector<std::string>{"127.0.0.1"};
        },
        {}, 0.05);
    for (int name = 0; name < 40; ++name)
        SCNetworkPrepareReachabilityByName(std::to_string(name) + ".test");
    for (int name = 0; name < 40; ++name)
        EXPECT_EQ(judgement(std::to_string(name) + ".test"), "unknown") << name;
    EXPECT_EQ(*waiting, 32);
    EXPECT_EQ(judgement("127.0.0.1"), "local");
    *isSilent = false;
    while (*waiting != 0)
        std::this_thread::yield();
    // The last of them may still be on its way out.
    std::string answer;
    for (int attempt = 0; attempt < 1000 && answer != "local"; ++attempt) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        answer = judgement("new" + std::to_string(attempt) + ".test");
    }
    EXPECT_EQ(answer, "local");
}

TEST(ReachabilityOfManyNames, AreLookedUpSideBySide) {
    const auto isSilent = std::make_shared<std::atomic<bool>>(true);
    int attempts = 0;
    {
        const SCNetworkRehearsal rehearsal(
            [isSilent](const std::string& name) -> std::optional<std::vector<std::string>> {
                while (*isSilent && name.starts_with("slow"))
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                if (name == "none.test")
                    return std::nullopt;
                return std::vector<std::string>{"192.0.2.7", "::ffff:127.0.0.1", "fe80::1%lo"};
            },
            {}, 60);
        for (int name = 0; name < 20; ++name)
            EXPECT_FALSE(SCNetworkPrepareReachabilityByName("slow" + std::to_string(name) + ".test"));
        for (const char* name : {"quick.test", "none.test"})
            while (!SCNetworkPrepareReachabilityByName(name) && ++attempts < 10000)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(judgement("quick.test"), "far");
        EXPECT_EQ(SCNetworkAddressesByName("QUICK.test"),
                  (std::vector<std::string>{"192.0.2.7", "127.0.0.1", "fe80::1%lo"}));
        EXPECT_TRUE(SCNetworkAddressesByName("none.test").empty());
        EXPECT_TRUE(SCNetworkPrepareReachabilityByName("127.1"));
        EXPECT_EQ(SCNetworkAddressesByName("localhost"), (std::vector<std::string>{"127.0.0.1", "::1"}));
        EXPECT_FALSE(SCNetworkPrepareReachabilityByName("slow7.test"));
        *isSilent = false;
        EXPECT_EQ(judgement("slow7.test"), "far");
    }
}

TEST(ReachabilityOfThisMachine, ItsOwnAddressesAreLocal) {
    ifaddrs* list = nullptr;
    ASSERT_EQ(getifaddrs(&list), 0);
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_addr || !(entry->ifa_flags & IFF_UP) ||
            (entry->ifa_addr->sa_family != AF_INET && entry->ifa_addr->sa_family != AF_INET6))
            continue;
        char text[NI_MAXHOST];
        const bool isIPv6 = entry->ifa_addr->sa_family == AF_INET6;
        ASSERT_EQ(getnameinfo(entry->ifa_addr, isIPv6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in), text,
                              sizeof text, nullptr, 0, NI_NUMERICHOST),
                  0);
        EXPECT_EQ(judgement(text), "local") << text;
    }
    freeifaddrs(list);
}

} // namespace
} // namespace kelvo
