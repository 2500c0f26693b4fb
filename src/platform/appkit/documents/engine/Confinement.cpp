#include "platform/appkit/documents/engine/Confinement.h"

#include "platform/foundation/FileIO.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <initializer_list>
#include <system_error>

namespace kelvo::documentengine {

ConfinementProfile profileOfOffice(const std::filesystem::path& programFolder,
                                   const std::filesystem::path& folder) {
    ConfinementProfile profile;
    profile.readable = {programFolder.parent_path(), "/usr/share",
                        "/usr/local/share/fonts",    "/etc/fonts",
                        "/etc/libreoffice",          "/var/spool/libreoffice",
                        "/var/cache/fontconfig",     "/var/lib/libreoffice"};
    profile.writable = {folder};
    // The suite's libraries alone take about 1 GiB of addresses.
    profile.addressSpaceBytes = std::uint64_t{4} << 30;
    // The largest text that anyone could take from us, with its pictures, is far below.
    profile.largestFileBytes = std::uint64_t{1} << 30;
    return profile;
}

void moveInto(const std::filesystem::path& folder) {
    const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    ::dup2(nowhere.get(), STDOUT_FILENO);
    ::dup2(nowhere.get(), STDERR_FILENO);
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
