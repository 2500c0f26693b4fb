#include "platform/engine/program/Confinement.h"

#include "platform/engine/program/Landlock.h"
#include "platform/engine/program/SystemCallFilter.h"
#include "platform/foundation/FileIO.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kelvo {
namespace {

/// What programs read that only compute: libraries, locales and time zones, what the machine is and what they
/// are themselves.
constexpr const char* readableByAll[] = {"/usr/lib",
                                         "/usr/lib32",
                                         "/usr/lib64",
                                         "/usr/share/locale",
                                         "/usr/share/zoneinfo",
                                         "/lib",
                                         "/lib32",
                                         "/lib64",
                                         "/etc/ld.so.cache",
                                         "/etc/localtime",
                                         "/etc/locale.alias",
                                         "/proc/self",
                                         "/proc/filesystems",
                                         "/proc/meminfo",
                                         "/proc/cpuinfo",
                                         "/dev/urandom",
                                         "/dev/random",
                                         "/sys/devices/system/cpu"};
constexpr const char* writableByAll[] = {"/dev/null", "/dev/zero", "/dev/full"};

constexpr int versionWithTruncation = 3;

bool leftNetwork = false;

bool limit(__rlimit_resource resource, std::uint64_t most) {
    // Never more than whoever started this process left it.
    rlimit both{};
    if (::getrlimit(resource, &both) != 0)
        return false;
    if (most < both.rlim_max)
        both.rlim_max = most;
    both.rlim_cur = both.rlim_max;
    return ::setrlimit(resource, &both) == 0;
}

bool applyLimits(const ConfinementProfile& profile) {
    bool isWhole = limit(RLIMIT_CORE, 0) && limit(RLIMIT_FSIZE, profile.largestFileBytes);
#ifndef KELVO_SANITIZED
    if (profile.addressSpaceBytes != 0)
        isWhole = limit(RLIMIT_AS, profile.addressSpaceBytes) && isWhole;
#endif
    return isWhole;
}

/// Also those that a process has over namespaces of its own.
bool dropPrivileges() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3]{};
    return ::syscall(SYS_capset, &header, none) == 0;
}

bool writeFile(const char* path, const std::string& text) {
    const FileDescriptor file(::open(path, O_WRONLY | O_CLOEXEC));
    return file && writeAll(file.get(), text.data(), text.size());
}

bool applyLandlock(const ConfinementProfile& profile, int version) {
    LandlockRules rules;
    rules.readable.assign(std::begin(readableByAll), std::end(readableByAll));
    rules.readable.insert(rules.readable.end(), profile.readable.begin(), profile.readable.end());
    // A program is started by the loader, which stands among the libraries.
    rules.readableMayBeStarted = profile.mayStartPrograms;
    rules.rewritable.assign(std::begin(writableByAll), std::end(writableByAll));
    rules.writable = profile.writable;
    rules.areOfFilesAlone = profile.landlockIsOfFilesAlone;
    return restrictByLandlock(rules, version);
}

} // namespace

std::string ConfinementLayers::names() const {
    std::string all;
    const auto add = [&all](bool isOn, const std::string& name) {
        if (isOn)
            all += (all.empty() ? "" : ", ") + name;
    };
    add(limits, "limits");
    add(noNetwork, "no network");
    add(landlock > 0, "landlock " + std::to_string(landlock));
    add(systemCalls, "seccomp");
    return all.empty() ? "none" : all;
}

bool leaveNetwork() {
    if (leftNetwork)
        return true;
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return false;
    // The same user inside as outside; without that its files would be nobody's.
    writeFile("/proc/self/setgroups", "deny");
    writeFile("/proc/self/uid_map", user + ' ' + user + " 1");
    writeFile("/proc/self/gid_map", group + ' ' + group + " 1");
    return leftNetwork = true;
}

ConfinementLayers confine(const ConfinementProfile& profile, const ConfinementSwitches& switches) {
    ConfinementLayers layers;
    const auto miss = [&layers](const char* what) {
        layers.missing += layers.missing.empty() ? "" : "; ";
        layers.missing += what;
    };
    // Without this neither of the last two layers is given to a process without privileges.
    const bool noNewPrivileges = ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
    // Before Landlock, under which nothing in /proc can be written.
    if (switches.network && !profile.keepsNetwork) {
        layers.noNetwork = leaveNetwork();
        if (!layers.noNetwork)
            miss("the system lets no process leave the network by itself");
    }
    const bool isWithoutPrivileges = dropPrivileges();
    layers.limits = applyLimits(profile) && isWithoutPrivileges && noNewPrivileges;
    if (!layers.limits)
        miss("the system takes no limits");
    if (const int version = switches.landlock ? versionOfLandlock() : 0; version > 0) {
        layers.landlock = applyLandlock(profile, version) ? version : 0;
    }
    if (switches.landlock && layers.landlock == 0)
        miss("the kernel has no Landlock");
    if (switches.systemCalls) {
        layers.systemCalls = filterSystemCalls(
            {profile.mayServeUnixSockets, profile.mayStartPrograms, layers.landlock < versionWithTruncation});
        if (!layers.systemCalls)
            miss("the kernel filters no system calls");
    }
    return layers;
}

} // namespace kelvo
