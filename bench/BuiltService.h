#pragma once

#include <plumwick/Client.h>

#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

namespace kelvo::bench {

/// For clients that start the service of this build, which stands beside the benchmark.
inline ClientOptions optionsOfBuiltService() {
    ClientOptions options;
    options.servicePath = NSString::stringWithUTF8String(
        (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "PlumwickHelper").string());
    return options;
}

/// Kills the service that the client has started, and waits until it is gone.
inline void endService(Client& client) {
    const pid_t process = client.status().processIdentifier;
    if (process <= 0)
        return;
    kill(process, SIGKILL);
    while (waitpid(process, nullptr, 0) != process && kill(process, 0) == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

} // namespace kelvo::bench
