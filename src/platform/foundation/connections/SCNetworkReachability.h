#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

// Bits of the flags; the numbers are the platform's.

/// A packet to the host would find a way out of this machine (or stay in it).
inline constexpr std::uint32_t kSCNetworkFlagsReachable = 0x2;
/// The host is this machine: any address of 127/8, ::1, or one of its interfaces' own.
inline constexpr std::uint32_t kSCNetworkFlagsIsLocalAddress = 0x10000;
/// The host is in a network that an interface of this machine stands in, so that no gateway is needed. Also
/// set for this machine itself.
inline constexpr std::uint32_t kSCNetworkFlagsIsDirect = 0x20000;

/// How far away a host is, from its name or its address as it stands in a URL: IPv6 addresses with or without
/// brackets, with or without a zone, IPv4 addresses in every form that the resolver knows ("127.1",
/// "0x7f000001", "2130706433"). "localhost" and names below it are this machine and are not looked up.
///
/// A bit is set only when it holds for every address of the name, so that a name cannot pass for a near one
/// by having a near address as well. Nothing is sent to the host. 0.0.0.0 and :: are no host's address: they
/// have no bit but perhaps the first.
///
/// False, with no bit set, when the name is none, is not known, or was not looked up in time. A look-up may
/// take 2 s; what takes longer goes on by itself, to no effect. Names are looked up side by side, 32 at a
/// time, and wait for their turn within the same 2 s. Answers, failures as well, hold for 15 s, the time that
/// a page has to load: asking for each of its resources is cheap. Not for use from two threads at once.
bool SCNetworkCheckReachabilityByName(const std::string& hostUTF8, std::uint32_t* flags);

/// Whether the answer is held already. Starts looking the name up where it is not, and does not wait.
bool SCNetworkPrepareReachabilityByName(const std::string& hostUTF8);

/// The addresses that were judged for the answer that is held, as text ("192.0.2.7", "fe80::1%eth0"), in the
/// resolver's order. A later look-up may give others. Empty where the check gives false. Waits as that does.
std::vector<std::string> SCNetworkAddressesByName(const std::string& hostUTF8);

/// An address of an interface and the network that it stands in.
struct SCNetworkAttachment {
    std::string address; ///< "192.168.1.7", "fe80::1%eth0"
    unsigned prefixLength = 0;
};

/// For tests: while it lives, names are looked up here and this machine has these interfaces (and its
/// loopback), so that no test depends on a network. Addresses are still judged by the real code. Answers that
/// were kept are forgotten at its beginning and at its end.
class SCNetworkRehearsal {
public:
    /// The addresses of a name as text; absent when it is not known. Called on another thread, and after the
    /// end of this object too when it took longer than a look-up may.
    using LookUp = std::function<std::optional<std::vector<std::string>>(const std::string& name)>;

    SCNetworkRehearsal(LookUp lookUp, const std::vector<SCNetworkAttachment>& attachments,
                       double lookUpSeconds = 2);
    SCNetworkRehearsal(const SCNetworkRehearsal&) = delete;
    SCNetworkRehearsal& operator=(const SCNetworkRehearsal&) = delete;
    ~SCNetworkRehearsal();
};

} // namespace kelvo
