#include "client/ServiceStatus.h"

#include "platform/foundation/processes/ProcessFacts.h"

#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace kelvo {
namespace {

std::string folderOfProcess(pid_t processIdentifier) {
    return "/proc/" + std::to_string(processIdentifier);
}

std::string textOfFile(const std::string& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

double uptimeOfProcess(pid_t processIdentifier) {
    // The second field, the program's name in parentheses, may hold anything; the fields after it are
    // numbers. The start is field 22, in ticks from the start of the system.
    const std::string stat = textOfFile(folderOfProcess(processIdentifier) + "/stat");
    const std::size_t nameEnd = stat.rfind(')');
    if (nameEnd == std::string::npos)
        return 0;
    std::istringstream fields(stat.substr(nameEnd + 1));
    std::string skipped;
    for (int field = 3; field < 22; ++field)
        fields >> skipped;
    double startTicks = 0;
    double systemUptime = 0;
    if (!(fields >> startTicks) || !(std::istringstream(textOfFile("/proc/uptime")) >> systemUptime))
        return 0;
    return systemUptime - startTicks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

/// A program file, read at given places; what lies outside it is absent.
class ProgramFile {
public:
    explicit ProgramFile(const std::string& path) : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ProgramFile(const ProgramFile&) = delete;
    ProgramFile& operator=(const ProgramFile&) = delete;
    ~ProgramFile() {
        if (descriptor_ >= 0)
            close(descriptor_);
    }

    bool read(void* target, std::size_t size, std::uint64_t place) const {
        return pread(descriptor_, target, size, static_cast<off_t>(place)) == static_cast<ssize_t>(size);
    }

private:
    int descriptor_;
};

/// The text of a note of owner "Kelvo" and type 1 among the notes.
std::optional<std::string> versionAmongNotes(const std::vector<char>& notes) {
    const auto padded = [](std::uint32_t size) { return (std::size_t{size} + 3) / 4 * 4; };
    std::size_t place = 0;
    Elf64_Nhdr header;
    while (notes.size() - place >= sizeof header) {
        std::memcpy(&header, notes.data() + place, sizeof header);
        const std::size_t owner = place + sizeof header;
        const std::size_t text = owner + padded(header.n_namesz);
        const std::size_t next = text + padded(header.n_descsz);
        if (text < owner || next < text || next > notes.size())
            return std::nullopt;
        if (header.n_type == 1 && header.n_namesz == 6 && std::memcmp(notes.data() + owner, "Kelvo", 6) == 0)
            return std::string(notes.data() + text, strnlen(notes.data() + text, header.n_descsz));
        place = next;
    }
    return std::nullopt;
}

NSString versionOfProgram(const std::string& path) {
    constexpr std::uint64_t largestNotes = 1 << 16;
    const ProgramFile file(path);
    Elf64_Ehdr header;
    if (!file.read(&header, sizeof header, 0) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_phentsize != sizeof(Elf64_Phdr))
        return nullptr;
    for (std::uint64_t index = 0; index < header.e_phnum; ++index) {
        Elf64_Phdr segment;
        if (!file.read(&segment, sizeof segment, header.e_phoff + index * sizeof segment))
            return nullptr;
        if (segment.p_type != PT_NOTE || segment.p_filesz > largestNotes)
            continue;
        std::vector<char> notes(segment.p_filesz);
        if (!file.read(notes.data(), notes.size(), segment.p_offset))
            continue;
        if (const auto version = versionAmongNotes(notes))
            return NSString::stringByRepairingUTF8String(*version);
    }
    return nullptr;
}

} // namespace

ServiceStatus statusOfProcess(pid_t processIdentifier) {
    ServiceStatus status;
    status.registeredName = KelvoImExport::registeredName;
    status.processIdentifier = processIdentifier;
    status.uptimeSeconds = uptimeOfProcess(processIdentifier);
    status.residentBytes = residentBytesOfProcess(processIdentifier);
    status.version = versionOfProgram(folderOfProcess(processIdentifier) + "/exe");
    return status;
}

} // namespace kelvo
