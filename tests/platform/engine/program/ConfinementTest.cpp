#include "platform/engine/program/Confinement.h"

#include "platform/engine/program/Landlock.h"
#include "platform/foundation/FileIO.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {
namespace {

namespace fs = std::filesystem;

/// What every act finds: a user's file, a folder that may be read and one that may be written, and servers that
/// nobody confined has any business with.
struct Scene {
    Scene() {
        char name[] = "/tmp/plumwick-confinement-XXXXXX";
        root = ::mkdtemp(name);
        own = root + "/own";
        for (const char* folder : {"/own", "/shown", "/users"}) {
            fs::create_directory(root + folder);
            std::ofstream(root + folder + "/file") << "contents";
        }
        handed = ::open((root + "/users/file").c_str(), O_RDONLY | O_CLOEXEC);
        sockaddr_in any{};
        any.sin_family = AF_INET;
        any.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        internet = listener(AF_INET, reinterpret_cast<sockaddr*>(&any), sizeof any);
        socklen_t length = sizeof internetAddress;
        ::getsockname(internet, reinterpret_cast<sockaddr*>(&internetAddress), &length);
        withPath = unixAddress(root + "/users/socket");
        onPath = listener(AF_UNIX, reinterpret_cast<sockaddr*>(&withPath), sizeof withPath);
        withoutPath = unixAddress(root);
        withoutPath.sun_path[0] = '\0';
        abstract = listener(AF_UNIX, reinterpret_cast<sockaddr*>(&withoutPath), sizeof withoutPath);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
    ~Scene() {
        for (const int descriptor : {handed, internet, onPath, abstract})
            ::close(descriptor);
        fs::remove_all(root);
    }

    static sockaddr_un unixAddress(const std::string& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }
    static int listener(int family, const sockaddr* address, socklen_t length) {
        const int descriptor = ::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(::bind(descriptor, address, length), 0);
        EXPECT_EQ(::listen(descriptor, 1), 0);
        return descriptor;
    }

    std::string root, own;
    int handed = -1, internet = -1, onPath = -1, abstract = -1;
    sockaddr_in internetAddress{};
    sockaddr_un withPath{}, withoutPath{};
};

constexpr int ended(int signal) {
    return -signal;
}

std::string describe(int result) {
    const char* const name = result < 0 ? ::sigabbrev_np(-result) : ::strerrorname_np(result);
    return name ? name : std::to_string(result);
}

using Act = int (*)(const Scene&);

/// No error has that number.
constexpr int notConfined = 250;

/// Does the act in a process of its own that has shut itself in: 0, the error, or the signal that ended it.
int resultOf(Act act, ConfinementProfile profile, const ConfinementSwitches& switches) {
    const Scene scene;
    profile.readable.push_back(scene.root + "/shown");
    profile.readable.push_back(scene.root + "/missing");
    profile.writable.push_back(scene.own);
    const pid_t child = ::fork();
    if (child == 0) {
        const ConfinementLayers layers = confine(profile, switches);
        const bool isAsAsked =
            layers.limits && layers.noNetwork == (switches.network && !profile.keepsNetwork) &&
            (layers.landlock > 0) == switches.landlock && layers.systemCalls == switches.systemCalls;
        // An exception must not go on as a second program of tests.
        const auto actOrAbort = [&]() noexcept { return act(scene); };
        ::_exit(isAsAsked ? actOrAbort() : notConfined);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? ended(WTERMSIG(status)) : WEXITSTATUS(status);
}

int errorOf(long result) {
    return result < 0 ? errno : 0;
}

int opening(const std::string& path, int flags) {
    return errorOf(::open(path.c_str(), flags | O_CLOEXEC, 0600));
}

int connecting(int type, const void* address, socklen_t length) {
    const auto* general = static_cast<const sockaddr*>(address);
    const int descriptor = ::socket(general->sa_family, type, 0);
    return descriptor < 0 ? errno : errorOf(::connect(descriptor, general, length));
}

int waitingFor(pid_t child) {
    int status = 0;
    if (child < 0)
        return errno;
    return errorOf(::waitpid(child, &status, 0)) + (WIFEXITED(status) ? WEXITSTATUS(status) : 255);
}

int executing(const std::string& path) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(path.c_str(), path.c_str(), nullptr);
        ::_exit(errno);
    }
    return waitingFor(child);
}

struct Row {
    const char* name;
    Act act;
    /// With all layers, and with each of them alone.
    int all, filter, landlock, network;
    /// The version of Landlock from which on these hold.
    int since = 1;
};

/// The layers that this system lacks are told apart from those that do not hold.
void check(const Row& row, const ConfinementProfile& profile) {
    static const bool hasNetworks = resultOf([](const Scene&) { return 0; }, {}, {true, false, false}) == 0;
    const bool hasLandlock = versionOfLandlock() >= row.since;
    const struct {
        const char* name;
        ConfinementSwitches switches;
        int expected;
        bool isPossible;
    } columns[] = {
        {"all", {true, true, true}, row.all, hasLandlock && hasNetworks},
        {"filter alone", {false, false, true}, row.filter, true},
        {"Landlock alone", {false, true, false}, row.landlock, hasLandlock},
        {"network alone", {true, false, false}, row.network, hasNetworks},
    };
    for (const auto& column : columns) {
        if (column.isPossible) {
            const int result = resultOf(row.act, profile, column.switches);
            EXPECT_EQ(result, column.expected) << row.name << ", " << column.name << ": " << describe(result)
                                               << " for " << describe(column.expected);
        }
    }
}

TEST(Confinement, EachLayerHoldsWhatItIsThereFor) {
    const Row rows[] = {
        // Files
        {"reads a system file", [](const Scene&) { return opening("/etc/passwd", O_RDONLY); }, EACCES, 0,
         EACCES, 0},
        {"reads a user's file", [](const Scene& s) { return opening(s.root + "/users/file", O_RDONLY); },
         EACCES, 0, EACCES, 0},
        {"lists a user's folder", [](const Scene& s) { return opening(s.root + "/users", O_RDONLY); }, EACCES,
         0, EACCES, 0},
        {"opens the handed file by its path",
         [](const Scene& s) { return opening("/proc/self/fd/" + std::to_string(s.handed), O_RDONLY); },
         EACCES, 0, EACCES, 0},
        {"reads the handed file",
         [](const Scene& s) {
             char byte;
             return errorOf(::read(s.handed, &byte, 1));
         },
         0, 0, 0, 0},
        {"reads what is shown", [](const Scene& s) { return opening(s.root + "/shown/file", O_RDONLY); }, 0,
         0, 0, 0},
        {"writes what is shown", [](const Scene& s) { return opening(s.root + "/shown/file", O_RDWR); },
         EACCES, 0, EACCES, 0},
        {"writes a new file in its folder",
         [](const Scene& s) {
             fs::create_directory(s.own + "/new");
             std::ofstream(s.own + "/new/one") << "text";
             fs::rename(s.own + "/new/one", s.own + "/one");
             return fs::file_size(s.own + "/one") == 4 && fs::remove_all(s.own + "/new") == 1 ? 0 : EIO;
         },
         0, 0, 0, 0, 2},
        {"writes beside its folder",
         [](const Scene& s) { return opening(s.root + "/beside", O_WRONLY | O_CREAT); }, EACCES, 0, EACCES,
         0},
        {"truncates a user's file",
         [](const Scene& s) { return errorOf(::truncate((s.root + "/users/file").c_str(), 0)); }, EACCES,
         EACCES, EACCES, 0, 3},
        {"truncates a shown file while opening it to read",
         [](const Scene& s) { return opening(s.root + "/shown/file", O_RDONLY | O_TRUNC); }, EACCES, ENOSYS,
         EACCES, 0, 3},
        {"moves a file out",
         [](const Scene& s) {
             return errorOf(::rename((s.own + "/file").c_str(), (s.root + "/users/file").c_str()));
         },
         EACCES, 0, EACCES, 0},
        {"links a user's file in",
         [](const Scene& s) {
             return errorOf(::link((s.root + "/users/file").c_str(), (s.own + "/linked").c_str()));
         },
         EXDEV, 0, EXDEV, 0},
        {"makes a symbolic link",
         [](const Scene& s) { return errorOf(::symlink("/etc/passwd", (s.own + "/link").c_str())); }, EACCES,
         0, EACCES, 0},
        {"changes the mode of a user's file",
         [](const Scene& s) { return errorOf(::chmod((s.root + "/users/file").c_str(), 0)); }, EPERM, EPERM,
         0, 0},
        {"changes the mode of the handed file", [](const Scene& s) { return errorOf(::fchmod(s.handed, 0)); },
         EPERM, EPERM, 0, 0},
        {"changes the times of the handed file",
         [](const Scene& s) { return errorOf(::futimens(s.handed, nullptr)); }, EPERM, EPERM, 0, 0},
        {"takes a lease on the handed file",
         [](const Scene& s) { return errorOf(::fcntl(s.handed, F_SETLEASE, F_RDLCK)); }, ENOSYS, ENOSYS, 0,
         0},
        {"uses what everybody may",
         [](const Scene&) { return opening("/proc/meminfo", O_RDONLY) + opening("/dev/null", O_WRONLY); }, 0,
         0, 0, 0},
        {"reads what it is itself", [](const Scene&) { return opening("/proc/self/status", O_RDONLY); }, 0, 0,
         0, 0},
        {"reads what its parent is",
         [](const Scene&) { return opening("/proc/" + std::to_string(::getppid()) + "/status", O_RDONLY); },
         EACCES, 0, EACCES, 0},

        // Sockets
        {"connects to this machine",
         [](const Scene& s) { return connecting(SOCK_STREAM, &s.internetAddress, sizeof s.internetAddress); },
         EACCES, EACCES, EACCES, ENETUNREACH, 4},
        {"sends a datagram to this machine",
         [](const Scene& s) { return connecting(SOCK_DGRAM, &s.internetAddress, sizeof s.internetAddress); },
         EACCES, EACCES, 0, ENETUNREACH},
        {"connects to a socket without a path",
         [](const Scene& s) { return connecting(SOCK_STREAM, &s.withoutPath, sizeof s.withoutPath); }, EACCES,
         EACCES, EPERM, ECONNREFUSED, 6},
        {"connects to a socket in a folder",
         [](const Scene& s) { return connecting(SOCK_STREAM, &s.withPath, sizeof s.withPath); }, EACCES,
         EACCES, 0, 0},
        {"talks over a pair of sockets",
         [](const Scene&) {
             int ends[2];
             char byte = 'x';
             return errorOf(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends)) +
                    errorOf(::send(ends[0], &byte, 1, MSG_NOSIGNAL)) + errorOf(::recv(ends[1], &byte, 1, 0));
         },
         0, 0, 0, 0},
        {"sends from one of a pair to another address",
         [](const Scene& s) {
             int ends[2] = {-1, -1};
             if (::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends) != 0)
                 return errno;
             const int result = errorOf(::sendto(
                 ends[0], "x", 1, 0, reinterpret_cast<const sockaddr*>(&s.withPath), sizeof s.withPath));
             return result == EPROTOTYPE ? 0 : result; // found, and is no socket for datagrams
         },
         ENOSYS, ENOSYS, 0, 0},

        // Processes
        {"forks",
         [](const Scene&) {
             const pid_t child = ::fork();
             if (child == 0)
                 ::_exit(0);
             return waitingFor(child);
         },
         EPERM, EPERM, 0, 0},
        {"starts threads",
         [](const Scene&) {
             int sum = 0;
             std::thread([&] { sum = 1; }).join();
             return sum == 1 ? 0 : EIO;
         },
         0, 0, 0, 0},
        {"becomes another program",
         [](const Scene&) { return errorOf(::execl("/usr/bin/true", "true", nullptr)); }, EACCES, EACCES,
         EACCES, 0},
        {"signals its parent", [](const Scene&) { return errorOf(::kill(::getppid(), 0)); }, ENOSYS, ENOSYS,
         EPERM, 0, 6},
        {"signals a thread of its parent",
         [](const Scene&) { return errorOf(::syscall(SYS_tgkill, ::getppid(), ::getppid(), 0)); }, EPERM,
         EPERM, EPERM, 0, 6},
        {"has its parent signalled",
         [](const Scene& s) { return errorOf(::fcntl(s.internet, F_SETOWN, ::getppid())); }, ENOSYS, ENOSYS,
         0, 0},
        {"limits its parent",
         [](const Scene&) {
             rlimit limit{};
             ::getrlimit(RLIMIT_CORE, &limit);
             return errorOf(::prlimit(::getppid(), RLIMIT_MSGQUEUE, &limit, nullptr)); // zero
         },
         EPERM, EPERM, 0, 0},
        {"leaves its group", [](const Scene&) { return errorOf(::setpgid(0, 0)); }, EPERM, EPERM, 0, 0},
        {"raises its limits",
         [](const Scene&) {
             const rlimit more{RLIM_INFINITY, RLIM_INFINITY};
             return errorOf(::setrlimit(RLIMIT_FSIZE, &more));
         },
         EPERM, EPERM, EPERM, EPERM},
        {"writes too large a file",
         [](const Scene& s) {
             const int file = ::open((s.own + "/large").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
             return errorOf(::ftruncate(file, 1 << 20)) + errorOf(::ftruncate(file, (1 << 20) + 1));
         },
         ended(SIGXFSZ), ended(SIGXFSZ), ended(SIGXFSZ), ended(SIGXFSZ)},
        {"aborts",
         [](const Scene&) {
             std::abort();
             return 0;
         },
         ended(SIGABRT), ended(SIGABRT), ended(SIGABRT), ended(SIGABRT)},
        {"makes code in memory",
         [](const Scene&) {
             void* const page =
                 ::mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
             return errorOf(::mprotect(page, 4096, PROT_READ | PROT_EXEC));
         },
         0, 0, 0, 0},
        {"seals memory",
         [](const Scene&) {
             const int memory = ::memfd_create("memory", MFD_CLOEXEC | MFD_ALLOW_SEALING);
             return errorOf(memory) + errorOf(::ftruncate(memory, 4096)) +
                    errorOf(::fcntl(memory, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_WRITE)) +
                    opening("/proc/self/fd/" + std::to_string(memory), O_RDONLY);
         },
         0, 0, 0, 0},

        // The system
        {"mounts",
         [](const Scene& s) { return errorOf(::mount("none", s.own.c_str(), "tmpfs", 0, nullptr)); },
         ended(SIGSYS), ended(SIGSYS), EPERM, EPERM},
        {"leaves its namespaces", [](const Scene&) { return errorOf(::unshare(CLONE_NEWNS)); }, ended(SIGSYS),
         ended(SIGSYS), EPERM, EPERM},
        {"types into a terminal",
         [](const Scene& s) { return errorOf(::syscall(SYS_ioctl, s.handed, TIOCSTI | (1L << 32), "x")); },
         ENOSYS, ENOSYS, ENOTTY, ENOTTY},
        {"calls what is not there", [](const Scene&) { return errorOf(::syscall(100'000)); }, ENOSYS, ENOSYS,
         ENOSYS, ENOSYS},
#ifndef KELVO_SANITIZED
        {"traces its parent",
         [](const Scene&) { return errorOf(::ptrace(PTRACE_SEIZE, ::getppid(), nullptr, nullptr)); },
         ended(SIGSYS), ended(SIGSYS), EPERM, EPERM},
        {"takes more memory than it may",
         [](const Scene&) {
             return ::mmap(nullptr, 2UL << 30, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED
                        ? errno
                        : 0;
         },
         ENOMEM, ENOMEM, ENOMEM, ENOMEM},
#endif
    };
    ConfinementProfile profile;
    // Readable is not startable.
    profile.readable = {"/usr/bin"};
    profile.largestFileBytes = 1 << 20;
    profile.addressSpaceBytes = 1 << 30;
    for (const Row& row : rows)
        check(row, profile);
}

TEST(Confinement, AttacksEndTheProcess) {
    // With arguments that would fail harmlessly.
    const struct {
        const char* name;
        int call;
    } rows[] = {
        {"add_key", SYS_add_key},
        {"bpf", SYS_bpf},
        {"init_module", SYS_init_module},
        {"io_uring_setup", SYS_io_uring_setup},
        {"kcmp", SYS_kcmp},
        {"kexec_load", SYS_kexec_load},
        {"keyctl", SYS_keyctl},
        {"open_by_handle_at", SYS_open_by_handle_at},
        {"perf_event_open", SYS_perf_event_open},
        {"pidfd_getfd", SYS_pidfd_getfd},
        {"pivot_root", SYS_pivot_root},
        {"process_vm_writev", SYS_process_vm_writev},
        {"setns", SYS_setns},
        {"umount2", SYS_umount2},
        {"userfaultfd", SYS_userfaultfd},
    };
    static int call;
    for (const auto& row : rows) {
        call = row.call;
        const Act act = [](const Scene&) {
            std::thread([] { ::syscall(call, -1L, -1L, -1L, -1L, -1L, -1L); }).join();
            return 0;
        };
        EXPECT_EQ(resultOf(act, {}, {false, false, true}), ended(SIGSYS)) << row.name;
    }
}

TEST(Confinement, ServersServeAndStartWhatTheyMay) {
    const Row rows[] = {
        {"serves a socket in its folder",
         [](const Scene& s) {
             const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
             const sockaddr_un address = Scene::unixAddress(s.own + "/socket");
             return errorOf(::bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address)) +
                    errorOf(::listen(server, 1));
         },
         0, 0, 0, 0},
        {"serves a socket beside its folder",
         [](const Scene& s) {
             const int server = ::socket(AF_UNIX, SOCK_STREAM, 0);
             const sockaddr_un address = Scene::unixAddress(s.root + "/beside");
             return errorOf(::bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address));
         },
         EACCES, 0, EACCES, 0},
        {"connects to the socket of another",
         [](const Scene& s) { return connecting(SOCK_STREAM, &s.withPath, sizeof s.withPath); }, EACCES,
         EACCES, 0, 0},
        {"makes a socket for datagrams",
         [](const Scene&) { return errorOf(::socket(AF_UNIX, SOCK_DGRAM, 0)); }, ENOSYS, ENOSYS, 0, 0},
        {"makes a socket for the network",
         [](const Scene&) { return errorOf(::socket(AF_INET, SOCK_STREAM, 0)); }, EACCES, EACCES, 0, 0},
        {"starts a program", [](const Scene&) { return executing("/usr/bin/true"); }, 0, 0, 0, 0},
        {"starts a program that it has written",
         [](const Scene& s) {
             ::close(::open((s.own + "/program").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0700));
             std::ofstream(s.own + "/program") << std::ifstream("/usr/bin/true").rdbuf();
             return executing(s.own + "/program");
         },
         EACCES, 0, EACCES, 0},
        {"starts a process in namespaces",
         [](const Scene&) {
             return errorOf(::syscall(SYS_clone, CLONE_NEWNS | SIGCHLD, nullptr, nullptr, nullptr, nullptr));
         },
         ENOSYS, ENOSYS, EPERM, EPERM},
    };
    ConfinementProfile profile;
    profile.readable = {"/usr/bin"};
    profile.mayServeUnixSockets = true;
    profile.mayStartPrograms = true;
    for (const Row& row : rows)
        check(row, profile);
}

TEST(Confinement, ThreadsThatRunAlreadyAreFilteredToo) {
    const Act act = [](const Scene&) {
        int result = 0;
        std::thread thread([&] { static_cast<void>(confine({}, {false, false, true})); });
        thread.join();
        result = errorOf(::execl("/usr/bin/true", "true", nullptr));
        return result;
    };
    EXPECT_EQ(resultOf(act, {}, {false, false, false}), EACCES);
}

TEST(Confinement, LayersAreNamed) {
    EXPECT_EQ(ConfinementLayers().names(), "none");
    const ConfinementLayers all{true, true, 6, true, ""};
    EXPECT_EQ(all.names(), "limits, no network, landlock 6, seccomp");
}

} // namespace
} // namespace kelvo
