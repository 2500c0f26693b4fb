#include "platform/foundation/processes/ProcessFacts.h"

#include <climits>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <unistd.h>

namespace kelvo {

std::string folderOfThisProgram() {
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    const std::string program(path, length > 0 ? static_cast<std::size_t>(length) : 0);
    const std::size_t slash = program.rfind('/');
    return program.substr(0, slash == std::string::npos ? 0 : slash);
}

std::vector<pid_t> childProcesses() {
    std::vector<pid_t> found;
    std::error_code ignored;
    // Each thread has the children that it started.
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task", ignored)) {
        std::ifstream children(thread.path() / "children");
        for (pid_t child = 0; children >> child;)
            found.push_back(child);
    }
    return found;
}

std::vector<pid_t> childProcessesNamed(std::string_view name) {
    std::vector<pid_t> found = childProcesses();
    std::erase_if(found, [name](pid_t child) {
        std::ifstream file("/proc/" + std::to_string(child) + "/comm");
        std::string own;
        return !std::getline(file, own) || own != name;
    });
    return found;
}

std::uint64_t residentBytesOfProcess(pid_t process) {
    if (process <= 0)
        return 0;
    std::ifstream file("/proc/" + std::to_string(process) + "/statm");
    std::uint64_t pages = 0;
    std::uint64_t residentPages = 0;
    return file >> pages >> residentPages
               ? residentPages * static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE))
               : 0;
}

} // namespace kelvo
