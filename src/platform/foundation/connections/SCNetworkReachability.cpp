#include "platform/foundation/connections/SCNetworkReachability.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/encodings/HostNames.h"
#include "platform/foundation/units/ASCII.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <unordered_map>

namespace kelvo {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double lookUpSeconds = 2;
constexpr auto answersHold = std::chrono::seconds(15);
constexpr std::size_t keptAnswers = 512;
constexpr int simultaneousLookUps = 32;
constexpr std::size_t longestHostInBytes = 1024;

struct Address {
    bool isIPv6 = false;
    std::array<std::uint8_t, 16> bytes{};
    std::uint32_t zone = 0; ///< The interface's number, 0 where none was given.

    unsigned bitCount() const { return isIPv6 ? 128 : 32; }
    bool startsLike(const Address& other, unsigned bits) const {
        const unsigned whole = bits / 8;
        const auto rest = static_cast<std::uint8_t>(0xFF00U >> (bits % 8));
        return isIPv6 == other.isIPv6 &&
               std::equal(bytes.begin(), bytes.begin() + whole, other.bytes.begin()) &&
               (bits % 8 == 0 || ((bytes[whole] ^ other.bytes[whole]) & rest) == 0) &&
               (zone == 0 || other.zone == 0 || zone == other.zone);
    }
    bool isUnspecified() const {
        return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
    }
};

enum class Side : std::uint8_t { own, peer };

struct Attachment {
    Address address;
    unsigned prefixLength = 0;
    Side side = Side::own;
};

using Addresses = std::vector<Address>;
using Attachments = std::vector<Attachment>;

struct Answer {
    Addresses addresses;
    std::uint32_t flags = 0;
    Clock::time_point until;

    bool isKnown() const { return !addresses.empty(); }
};

struct Rehearsal {
    SCNetworkRehearsal::LookUp lookUp;
    Attachments attachments;
    double lookUpSeconds = 0;
};

std::optional<Rehearsal>& rehearsal() {
    static std::optional<Rehearsal> current;
    return current;
}

std::unordered_map<std::string, Answer>& answers() {
    static std::unordered_map<std::string, Answer> kept;
    return kept;
}

std::optional<Address> addressOfSocket(const sockaddr* socketAddress) {
    Address address;
    if (!socketAddress)
        return std::nullopt;
    if (socketAddress->sa_family == AF_INET) {
        sockaddr_in version4;
        std::memcpy(&version4, socketAddress, sizeof version4);
        std::memcpy(address.bytes.data(), &version4.sin_addr, 4);
        return address;
    }
    if (socketAddress->sa_family != AF_INET6)
        return std::nullopt;
    sockaddr_in6 version6;
    std::memcpy(&version6, socketAddress, sizeof version6);
    if (IN6_IS_ADDR_V4MAPPED(&version6.sin6_addr)) {
        // Such an address is only another spelling of the one inside.
        std::memcpy(address.bytes.data(), version6.sin6_addr.s6_addr + 12, 4);
        return address;
    }
    address.isIPv6 = true;
    std::memcpy(address.bytes.data(), &version6.sin6_addr, 16);
    address.zone = version6.sin6_scope_id;
    return address;
}

/// Empty when the name has no address.
Addresses resolve(const std::string& name, int flags) {
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    addrinfo* list = nullptr;
    Addresses addresses;
    if (getaddrinfo(name.c_str(), nullptr, &hints, &list) != 0)
        return addresses;
    for (const addrinfo* entry = list; entry; entry = entry->ai_next) {
        if (const auto address = addressOfSocket(entry->ai_addr))
            addresses.push_back(*address);
    }
    freeaddrinfo(list);
    return addresses;
}

Addresses resolveAll(const std::vector<std::string>& texts) {
    Addresses addresses;
    for (const std::string& text : texts)
        std::ranges::copy(resolve(text, AI_NUMERICHOST), std::back_inserter(addresses));
    return addresses;
}

/// The resolver cannot be interrupted, so it works on a thread that may be left alone with what it shares.
class LookUp {
public:
    explicit LookUp(std::string name)
        : name_(std::move(name)),
          end_(Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(
                                  rehearsal() ? rehearsal()->lookUpSeconds : lookUpSeconds))) {}

    /// Starts it, unless too many are under way; whether it has been started now or before.
    bool start() {
        if (shared_)
            return true;
        if (running_.fetch_add(1) >= simultaneousLookUps) {
            --running_;
            return false;
        }
        auto shared = std::make_shared<Shared>();
        // Signals are for the threads that expect them; a new thread inherits this one's mask.
        sigset_t everySignal;
        sigset_t before;
        sigfillset(&everySignal);
        pthread_sigmask(SIG_SETMASK, &everySignal, &before);
        try {
            std::thread(run, shared, name_, rehearsal() ? rehearsal()->lookUp : nullptr).detach();
            shared_ = std::move(shared);
        } catch (const std::system_error&) {
            --running_;
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        return shared_ != nullptr;
    }

    bool isOver() const { return Clock::now() >= end_; }
    /// The addresses, empty when there are none or the time is over; absent before.
    std::optional<Addresses> result() {
        if (start()) {
            const std::lock_guard lock(shared_->mutex);
            if (shared_->isDone)
                return shared_->addresses;
        }
        return isOver() ? std::optional(Addresses()) : std::nullopt;
    }

    Addresses wait() {
        while (!start() && !isOver())
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (!shared_)
            return {};
        std::unique_lock lock(shared_->mutex);
        shared_->done.wait_until(lock, end_, [this] { return shared_->isDone; });
        return shared_->addresses;
    }

private:
    struct Shared {
        std::mutex mutex;
        std::condition_variable done;
        Addresses addresses;
        bool isDone = false;
    };

    static void run(const std::shared_ptr<Shared>& shared, const std::string& name,
                    const SCNetworkRehearsal::LookUp& rehearsed) {
        Addresses found;
        if (!rehearsed)
            found = resolve(name, 0);
        else if (const auto texts = rehearsed(name))
            found = resolveAll(*texts);
        --running_;
        const std::lock_guard lock(shared->mutex);
        shared->addresses = std::move(found);
        shared->isDone = true;
        shared->done.notify_one();
    }

    static inline std::atomic<int> running_{0};
    std::string name_;
    Clock::time_point end_;
    std::shared_ptr<Shared> shared_;
};

std::unordered_map<std::string, LookUp>& lookUps() {
    static std::unordered_map<std::string, LookUp> underWay;
    return underWay;
}

unsigned prefixLengthOfMask(const Address& mask) {
    unsigned length = 0;
    for (const std::uint8_t byte : mask.bytes) {
        length += static_cast<unsigned>(std::countl_one(byte));
        if (byte != 0xFF)
            break;
    }
    return length;
}

void appendAttachments(Attachments& attachments, const ifaddrs& entry) {
    auto own = addressOfSocket(entry.ifa_addr);
    const auto mask = addressOfSocket(entry.ifa_netmask);
    if (!own || !mask || !(entry.ifa_flags & IFF_UP))
        return;
    if (own->isIPv6 && own->zone == 0)
        own->zone = if_nametoindex(entry.ifa_name);
    attachments.push_back({*own, prefixLengthOfMask(*mask)});
    if (!(entry.ifa_flags & IFF_POINTOPOINT))
        return;
    if (const auto peer = addressOfSocket(entry.ifa_dstaddr))
        attachments.push_back({*peer, peer->bitCount(), Side::peer});
}

Attachments attachmentsOfThisMachine() {
    // What the loopback interface stands for holds even where there is none.
    Attachments attachments;
    for (const Address& loopback : resolveAll({"127.0.0.1", "::1"}))
        attachments.push_back({loopback, loopback.isIPv6 ? 128U : 8U});
    if (rehearsal()) {
        std::ranges::copy(rehearsal()->attachments, std::back_inserter(attachments));
        return attachments;
    }
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return attachments;
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next)
        appendAttachments(attachments, *entry);
    freeifaddrs(list);
    return attachments;
}

bool isLoopback(const Address& address) {
    return address.isIPv6
               ? address.bytes[15] == 1 && std::all_of(address.bytes.begin(), address.bytes.end() - 1,
                                                       [](std::uint8_t byte) { return byte == 0; })
               : address.bytes[0] == 127;
}

/// Connecting a datagram socket sends nothing; it only looks for a route.
bool hasRoute(const Address& address) {
    sockaddr_storage destination{};
    socklen_t length = 0;
    if (address.isIPv6) {
        sockaddr_in6 version6{};
        version6.sin6_family = AF_INET6;
        version6.sin6_port = htons(9);
        version6.sin6_scope_id = address.zone;
        std::memcpy(&version6.sin6_addr, address.bytes.data(), 16);
        std::memcpy(&destination, &version6, length = sizeof version6);
    } else {
        sockaddr_in version4{};
        version4.sin_family = AF_INET;
        version4.sin_port = htons(9);
        std::memcpy(&version4.sin_addr, address.bytes.data(), 4);
        std::memcpy(&destination, &version4, length = sizeof version4);
    }
    const FileDescriptor probe(socket(destination.ss_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return probe && connect(probe.get(), reinterpret_cast<const sockaddr*>(&destination), length) == 0;
}

std::uint32_t flagsOfAddress(const Address& address, const Attachments& attachments) {
    std::uint32_t flags = 0;
    if (!address.isUnspecified()) {
        const bool isLocal =
            isLoopback(address) || std::ranges::any_of(attachments, [&](const Attachment& attachment) {
                return attachment.side == Side::own &&
                       address.startsLike(attachment.address, address.bitCount());
            });
        // A mask of no bits says nothing about where a host is.
        const bool isDirect = isLocal || std::ranges::any_of(attachments, [&](const Attachment& attachment) {
                                  return attachment.prefixLength > 0 &&
                                         address.startsLike(attachment.address, attachment.prefixLength);
                              });
        flags = (isLocal ? kSCNetworkFlagsIsLocalAddress : 0) | (isDirect ? kSCNetworkFlagsIsDirect : 0);
    }
    if (flags != 0 || hasRoute(address))
        flags |= kSCNetworkFlagsReachable;
    return flags;
}

/// The form in which a host is looked up: lower-case, without brackets, and a name of other scripts as DNS
/// knows it. Empty when it can be no host.
std::string comparableHost(std::string host) {
    if (host.empty() || host.size() > longestHostInBytes || host.find('\0') != std::string::npos)
        return {};
    if (host.front() == '[' && host.back() == ']' && host.find(':') != std::string::npos)
        host = host.substr(1, host.size() - 2);
    if (std::ranges::any_of(host, [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; })) {
        host = ASCIIHostName(host);
        if (host.empty())
            return {};
    }
    // Zones are interface names, in which case counts.
    const auto nameEnd = std::ranges::find(host, '%');
    std::transform(host.begin(), nameEnd, host.begin(), asciiLowerCase<char>);
    return host;
}

bool isLocalhost(std::string_view host) {
    if (host.ends_with('.'))
        host.remove_suffix(1);
    return host == "localhost" || host.ends_with(".localhost");
}

enum class Patience : std::uint8_t { none, untilAnswered };

/// Absent when it has to be waited for.
std::optional<Addresses> addressesOfHost(const std::string& host, Patience patience) {
    if (isLocalhost(host))
        return resolveAll({"127.0.0.1", "::1"});
    Addresses addresses = resolve(host, AI_NUMERICHOST);
    if (!addresses.empty() || host.find_first_of(":%") != std::string::npos)
        return addresses;
    auto& underWay = lookUps();
    // Whoever prepared an answer may never have come back for it.
    if (underWay.size() >= keptAnswers)
        std::erase_if(underWay, [](const auto& entry) { return entry.second.isOver(); });
    if (underWay.size() >= keptAnswers)
        return Addresses();
    const auto lookUp = underWay.try_emplace(host, host).first;
    std::optional<Addresses> found =
        patience == Patience::none ? lookUp->second.result() : lookUp->second.wait();
    if (found)
        underWay.erase(lookUp);
    return found;
}

Answer answerWithAddresses(Addresses addresses) {
    Answer answer;
    answer.until = Clock::now() + answersHold;
    if (addresses.empty())
        return answer;
    const Attachments attachments = attachmentsOfThisMachine();
    answer.flags = ~std::uint32_t{0};
    for (const Address& address : addresses)
        answer.flags &= flagsOfAddress(address, attachments);
    answer.addresses = std::move(addresses);
    return answer;
}

/// Null when it has to be waited for, and when the host can be none.
const Answer* answerOfHost(const std::string& host, Patience patience) {
    auto& kept = answers();
    const auto entry = kept.find(host);
    if (entry != kept.end() && Clock::now() < entry->second.until)
        return &entry->second;
    auto addresses = host.empty() ? std::nullopt : addressesOfHost(host, patience);
    if (!addresses)
        return nullptr;
    if (kept.size() >= keptAnswers)
        kept.clear();
    return &(kept[host] = answerWithAddresses(std::move(*addresses)));
}

std::string textOfAddress(const Address& address) {
    char text[INET6_ADDRSTRLEN] = "";
    inet_ntop(address.isIPv6 ? AF_INET6 : AF_INET, address.bytes.data(), text, sizeof text);
    char interface[IF_NAMESIZE];
    return address.zone != 0 && if_indextoname(address.zone, interface) ? std::string(text) + '%' + interface : std::string(text);
}

} // namespace

bool SCNetworkCheckReachabilityByName(const std::string& hostUTF8, std::uint32_t* flags) {
    const Answer* answer = answerOfHost(comparableHost(hostUTF8), Patience::untilAnswered);
    *flags = answer ? answer->flags : 0;
    return answer && answer->isKnown();
}

bool SCNetworkPrepareReachabilityByName(const std::string& hostUTF8) {
    const std::string host = comparableHost(hostUTF8);
    return host.empty() || answerOfHost(host, Patience::none);
}

std::vector<std::string> SCNetworkAddressesByName(const std::string& hostUTF8) {
    std::vector<std::string> texts;
    if (const Answer* answer = answerOfHost(comparableHost(hostUTF8), Patience::untilAnswered))
        std::ranges::transform(answer->addresses, std::back_inserter(texts), textOfAddress);
    return texts;
}

SCNetworkRehearsal::SCNetworkRehearsal(LookUp lookUp, const std::vector<SCNetworkAttachment>& attachments,
                                       double seconds) {
    answers().clear();
    lookUps().clear();
    rehearsal().emplace();
    rehearsal()->lookUp = std::move(lookUp);
    rehearsal()->lookUpSeconds = seconds;
    for (const SCNetworkAttachment& attachment : attachments) {
        for (const Address& address : resolveAll({attachment.address}))
            rehearsal()->attachments.push_back(
                {address, std::min(attachment.prefixLength, address.bitCount())});
    }
}

SCNetworkRehearsal::~SCNetworkRehearsal() {
    rehearsal().reset();
    answers().clear();
    lookUps().clear();
}

} // namespace kelvo
