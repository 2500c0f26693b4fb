#include "platform/appkit/documents/engine/Confinement.h"

#include "platform/foundation/FileIO.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <string>
#include <system_error>

namespace kelvo::documentengine {
namespace {

/// The largest text that anyone could take from us, with its pictures, is far below.
constexpr rlim_t largestFileInBytes = rlim_t{1} << 30;
#ifndef KELVO_SANITIZED
/// The suite's libraries alone take about 1 GiB of addresses.
constexpr rlim_t addressSpaceInBytes = rlim_t{4} << 30;
#endif

void limit(__rlimit_resource resource, rlim_t bytes) {
    const rlimit both{bytes, bytes};
    ::setrlimit(resource, &both);
}

bool writeFile(const char* path, const std::string& text) {
    const FileDescriptor file(::open(path, O_WRONLY | O_CLOEXEC));
    return file && writeAll(file.get(), text.data(), text.size());
}

} // namespace

void leaveNetwork() {
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
        return;
    // The same user inside as outside; without that its files would be nobody's.
    writeFile("/proc/self/setgroups", "deny");
    writeFile("/proc/self/uid_map", user + ' ' + user + " 1");
    writeFile("/proc/self/gid_map", group + ' ' + group + " 1");
}

void boundResources() {
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, largestFileInBytes);
#ifndef KELVO_SANITIZED
    limit(RLIMIT_AS, addressSpaceInBytes);
#endif
    const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    ::dup2(nowhere.get(), STDOUT_FILENO);
    ::dup2(nowhere.get(), STDERR_FILENO);
}

void moveInto(const std::filesystem::path& folder) {
    const std::filesystem::path temporary = folder / "tmp";
    std::error_code ignored;
    std::filesystem::create_directories(temporary, ignored);
    ::setenv("HOME", folder.c_str(), 1);
    for (const char* name : {"TMPDIR", "TMP", "TEMP"})
        ::setenv(name, temporary.c_str(), 1);
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "DISPLAY",
          "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XAUTHORITY", "http_proxy", "https_proxy"})
        ::unsetenv(name);
    ::setenv("GSETTINGS_BACKEND", "memory", 1);
    // Draws into memory.
    ::setenv("SAL_USE_VCLPLUGIN", "svp", 1);
}

} // namespace kelvo::documentengine
