#include "platform/engine/program/Landlock.h"

#include "platform/foundation/FileIO.h"

#include <cstddef>
#include <cstdint>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kelvo {
namespace {

// The headers of the system describe an older interface than its kernel may have, so it is written down here,
// with the numbers that all architectures share.
constexpr long createRuleset = 444;
constexpr long addRule = 445;
constexpr long restrictSelf = 446;
constexpr unsigned askForVersion = 1;
constexpr int pathBeneath = 1;

struct RulesetAttributes {
    std::uint64_t handledFileRights;
    std::uint64_t handledNetworkRights;
    std::uint64_t scopes;
};

struct [[gnu::packed]] PathAttributes {
    std::uint64_t rights;
    std::int32_t parent;
};

using Rights = std::uint64_t;

constexpr Rights execute = 1 << 0;
constexpr Rights writeFile = 1 << 1;
constexpr Rights readFile = 1 << 2;
constexpr Rights readFolder = 1 << 3;
constexpr Rights removeFolder = 1 << 4;
constexpr Rights removeFile = 1 << 5;
constexpr Rights makeFolder = 1 << 7;
constexpr Rights makeFile = 1 << 8;
constexpr Rights makeSocket = 1 << 9;
constexpr Rights moveAcross = 1 << 13;
constexpr Rights truncateFile = 1 << 14;
constexpr Rights controlDevice = 1 << 15;
constexpr Rights rightsOfFiles = execute | writeFile | readFile | truncateFile | controlDevice;

constexpr Rights bindTCP = 1 << 0;
constexpr Rights connectTCP = 1 << 1;

constexpr std::uint64_t abstractSockets = 1 << 0;
constexpr std::uint64_t signals = 1 << 1;

Rights fileRightsOfVersion(int version) {
    const int count = version >= 5 ? 16 : version >= 3 ? 15 : version == 2 ? 14 : 13;
    return (Rights{1} << count) - 1;
}

class Ruleset {
public:
    Ruleset(int version, bool areOfFilesAlone) : handled_(fileRightsOfVersion(version)) {
        // An older kernel takes a longer structure when the part it does not know is zero.
        const RulesetAttributes attributes{handled_,
                                           version >= 4 && !areOfFilesAlone ? bindTCP | connectTCP : 0,
                                           version >= 6 && !areOfFilesAlone ? abstractSockets | signals : 0};
        descriptor_ =
            FileDescriptor(static_cast<int>(::syscall(createRuleset, &attributes, sizeof attributes, 0)));
    }

    void allow(const std::vector<std::string>& paths, Rights rights) const {
        for (const std::string& path : paths) {
            FileDescriptor beneath(::open(path.c_str(), O_PATH | O_CLOEXEC));
            struct stat status {};
            if (!beneath || ::fstat(beneath.get(), &status) != 0)
                continue;
            const PathAttributes attributes{
                rights & handled_ & (S_ISDIR(status.st_mode) ? ~Rights{0} : rightsOfFiles), beneath.get()};
            ::syscall(addRule, descriptor_.get(), pathBeneath, &attributes, 0);
            // The rule holds for the very inode. What the kernel shows as files gets another as soon as nobody
            // has it open and memory is short, and would be out of reach then.
            if (path.starts_with("/proc/"))
                beneath.release();
        }
    }

    bool apply() const { return descriptor_ && ::syscall(restrictSelf, descriptor_.get(), 0) == 0; }

private:
    Rights handled_;
    FileDescriptor descriptor_;
};

} // namespace

int versionOfLandlock() {
    const long version = ::syscall(createRuleset, nullptr, std::size_t{0}, askForVersion);
    return version > 0 ? static_cast<int>(version) : 0;
}

bool restrictByLandlock(const LandlockRules& rules, int version) {
    constexpr Rights reading = readFile | readFolder;
    const Ruleset ruleset(version, rules.areOfFilesAlone);
    ruleset.allow(rules.readable, rules.readableMayBeStarted ? reading | execute : reading);
    ruleset.allow(rules.rewritable, reading | writeFile | truncateFile);
    ruleset.allow(rules.writable, reading | writeFile | truncateFile | makeFile | makeFolder | makeSocket |
                                      removeFile | removeFolder | moveAcross);
    return ruleset.apply();
}

} // namespace kelvo
