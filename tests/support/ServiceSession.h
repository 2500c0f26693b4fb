#pragma once

#include "support/TemporaryFolder.h"

#include <plumwick/Client.h>

#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>

namespace kelvo::tests {

/// Program of the build that is being tested; it stands beside the test program.
inline std::string builtProgram(const char* name) {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

inline void waitUntil(const std::function<bool()>& isSo) {
    for (int turn = 0; turn < 2000 && !isSo(); ++turn)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

/// A runtime folder of its own for the services that a test starts. Whatever serves there at the end is
/// ended.
class ServiceSession {
public:
    explicit ServiceSession(const char* program) : program_(builtProgram(program)) {
        setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1);
    }
    ServiceSession(const ServiceSession&) = delete;
    ServiceSession& operator=(const ServiceSession&) = delete;
    ~ServiceSession() {
        setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1);
        try {
            end(Client(options(false)).status().processIdentifier);
        } catch (const ClientError&) {
        }
    }

    const TemporaryFolder& folder() const { return folder_; }
    std::string socketPath() const { return folder_.path("PlumwickHelper_2.0pb8build4"); }

    ClientOptions options(bool startsService = true) const {
        ClientOptions result;
        result.startsService = startsService;
        result.servicePath = NSString::stringWithUTF8String(program_);
        return result;
    }

    /// Kills the process and waits until it is gone.
    static void end(pid_t process) {
        kill(process, SIGKILL);
        waitUntil([process] { return hasEnded(process); });
    }
    /// Also when nobody has waited for it yet, which for a service is up to the first process of the system.
    static bool hasEnded(pid_t process) {
        if (waitpid(process, nullptr, WNOHANG) == process || kill(process, 0) != 0)
            return true;
        std::ifstream file("/proc/" + std::to_string(process) + "/stat");
        const std::string stat{std::istreambuf_iterator<char>(file), {}};
        const std::size_t nameEnd = stat.rfind(')');
        return nameEnd == std::string::npos || stat.substr(nameEnd, 3) == ") Z";
    }

private:
    TemporaryFolder folder_;
    std::string program_;
};

} // namespace kelvo::tests
