#include "platform/foundation/processes/ServiceProcess.h"
#include "service/ServiceEntry.h"

#include <cstdint>

namespace {

constexpr char versionText[] = KELVO_VERSION;

/// A note in the executable (ELF, note section), by which a client tells the version of a running service
/// without asking it: owner "Kelvo", type 1, the version as NUL-terminated text.
struct VersionNote {
    std::uint32_t ownerSize = 6;
    std::uint32_t textSize = sizeof versionText;
    std::uint32_t type = 1;
    char owner[8] = "Kelvo";
    char text[(sizeof versionText + 3) / 4 * 4] = KELVO_VERSION;
};

[[gnu::section(".note.kelvo"), gnu::used, gnu::aligned(4)]] constexpr VersionNote versionNote;

} // namespace

int main() {
    kelvo::becomeServiceProcess();
    kelvo::runService();
}
