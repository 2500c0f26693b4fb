#include "platform/engine/program/SystemCallFilter.h"

#include <cerrno>
#include <cstdint>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace kelvo {
namespace {

// The library gives calls that an architecture lacks numbers below zero, which are passed over.

constexpr int allowedCalls[] = {
    // Memory
    SCMP_SYS(brk), SCMP_SYS(madvise), SCMP_SYS(membarrier), SCMP_SYS(memfd_create), SCMP_SYS(mincore),
    SCMP_SYS(mlock), SCMP_SYS(mmap), SCMP_SYS(mprotect), SCMP_SYS(mremap), SCMP_SYS(msync), SCMP_SYS(munlock),
    SCMP_SYS(munmap),
    // Threads, and the process itself
    SCMP_SYS(arch_prctl), SCMP_SYS(exit), SCMP_SYS(exit_group), SCMP_SYS(futex), SCMP_SYS(getcpu),
    SCMP_SYS(gettid), SCMP_SYS(restart_syscall), SCMP_SYS(rseq), SCMP_SYS(sched_get_priority_max),
    SCMP_SYS(sched_get_priority_min), SCMP_SYS(sched_getaffinity), SCMP_SYS(sched_getparam),
    SCMP_SYS(sched_getscheduler), SCMP_SYS(sched_yield), SCMP_SYS(set_robust_list), SCMP_SYS(set_tid_address),
    SCMP_SYS(wait4), SCMP_SYS(waitid), SCMP_SYS(getegid), SCMP_SYS(geteuid), SCMP_SYS(getgid),
    SCMP_SYS(getgroups), SCMP_SYS(getpgid), SCMP_SYS(getpgrp), SCMP_SYS(getpid), SCMP_SYS(getppid),
    SCMP_SYS(getpriority), SCMP_SYS(getresgid), SCMP_SYS(getresuid), SCMP_SYS(getrlimit), SCMP_SYS(getrusage),
    SCMP_SYS(getsid), SCMP_SYS(getuid), SCMP_SYS(umask),
    // Signals and time
    SCMP_SYS(pause), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
    SCMP_SYS(rt_sigsuspend), SCMP_SYS(rt_sigtimedwait), SCMP_SYS(sigaltstack), SCMP_SYS(signalfd4),
    SCMP_SYS(alarm), SCMP_SYS(clock_getres), SCMP_SYS(clock_gettime), SCMP_SYS(clock_nanosleep),
    SCMP_SYS(gettimeofday), SCMP_SYS(nanosleep), SCMP_SYS(setitimer), SCMP_SYS(time), SCMP_SYS(timer_create),
    SCMP_SYS(timer_delete), SCMP_SYS(timer_settime), SCMP_SYS(timerfd_create), SCMP_SYS(timerfd_settime),
    SCMP_SYS(times),
    // The machine
    SCMP_SYS(getrandom), SCMP_SYS(sysinfo), SCMP_SYS(uname),
    // Descriptors
    SCMP_SYS(close), SCMP_SYS(close_range), SCMP_SYS(copy_file_range), SCMP_SYS(dup), SCMP_SYS(dup2),
    SCMP_SYS(dup3), SCMP_SYS(epoll_create1), SCMP_SYS(epoll_ctl), SCMP_SYS(epoll_pwait), SCMP_SYS(epoll_wait),
    SCMP_SYS(eventfd2), SCMP_SYS(fadvise64), SCMP_SYS(fallocate), SCMP_SYS(fdatasync), SCMP_SYS(flock),
    SCMP_SYS(fstat), SCMP_SYS(fstatfs), SCMP_SYS(fsync), SCMP_SYS(ftruncate), SCMP_SYS(lseek), SCMP_SYS(pipe),
    SCMP_SYS(pipe2), SCMP_SYS(poll), SCMP_SYS(ppoll), SCMP_SYS(pread64), SCMP_SYS(preadv), SCMP_SYS(pselect6),
    SCMP_SYS(pwrite64), SCMP_SYS(pwritev), SCMP_SYS(read), SCMP_SYS(readahead), SCMP_SYS(readv),
    SCMP_SYS(select), SCMP_SYS(sendfile), SCMP_SYS(write), SCMP_SYS(writev),
    // Paths
    SCMP_SYS(access), SCMP_SYS(chdir), SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(fchdir),
    SCMP_SYS(getcwd), SCMP_SYS(getdents), SCMP_SYS(getdents64), SCMP_SYS(link), SCMP_SYS(linkat),
    SCMP_SYS(lstat), SCMP_SYS(mkdir), SCMP_SYS(mkdirat), SCMP_SYS(newfstatat), SCMP_SYS(readlink),
    SCMP_SYS(readlinkat), SCMP_SYS(rename), SCMP_SYS(renameat), SCMP_SYS(renameat2), SCMP_SYS(rmdir),
    SCMP_SYS(stat), SCMP_SYS(statfs), SCMP_SYS(statx), SCMP_SYS(symlink), SCMP_SYS(symlinkat),
    SCMP_SYS(unlink), SCMP_SYS(unlinkat),
    // Sockets that are there
    SCMP_SYS(getpeername), SCMP_SYS(getsockname), SCMP_SYS(getsockopt), SCMP_SYS(recvfrom), SCMP_SYS(recvmsg),
    SCMP_SYS(sendmsg), SCMP_SYS(sendto), SCMP_SYS(setsockopt), SCMP_SYS(shutdown)};

// No library that computes makes these. The rest of what only administrators may do is not known here.
constexpr int attacks[] = {SCMP_SYS(add_key),
                           SCMP_SYS(bpf),
                           SCMP_SYS(init_module),
                           SCMP_SYS(finit_module),
                           SCMP_SYS(io_uring_enter),
                           SCMP_SYS(io_uring_register),
                           SCMP_SYS(io_uring_setup),
                           SCMP_SYS(kcmp),
                           SCMP_SYS(kexec_file_load),
                           SCMP_SYS(kexec_load),
                           SCMP_SYS(keyctl),
                           SCMP_SYS(mount),
                           SCMP_SYS(open_by_handle_at),
                           SCMP_SYS(perf_event_open),
                           SCMP_SYS(pidfd_getfd),
                           SCMP_SYS(pivot_root),
                           SCMP_SYS(process_vm_readv),
                           SCMP_SYS(process_vm_writev),
                           SCMP_SYS(request_key),
                           SCMP_SYS(setns),
                           SCMP_SYS(umount2),
                           SCMP_SYS(unshare),
                           SCMP_SYS(userfaultfd)};

struct Answer {
    int call;
    int error;
};

constexpr Answer answers[] = {
    {SCMP_SYS(chmod), EPERM},     {SCMP_SYS(connect), EACCES}, {SCMP_SYS(fchmod), EPERM},
    {SCMP_SYS(fchmodat), EPERM},  {SCMP_SYS(setpgid), EPERM},  {SCMP_SYS(setpriority), EPERM},
    {SCMP_SYS(setrlimit), EPERM}, {SCMP_SYS(setsid), EPERM},   {SCMP_SYS(utimensat), EPERM}};
// Unless programs may be started, which give up privileges that they do not have here.
constexpr Answer answersAboutPrograms[] = {{SCMP_SYS(execve), EACCES},   {SCMP_SYS(execveat), EACCES},
                                           {SCMP_SYS(fork), EPERM},      {SCMP_SYS(setgid), EPERM},
                                           {SCMP_SYS(setregid), EPERM},  {SCMP_SYS(setresgid), EPERM},
                                           {SCMP_SYS(setresuid), EPERM}, {SCMP_SYS(setreuid), EPERM},
                                           {SCMP_SYS(setuid), EPERM},    {SCMP_SYS(vfork), EPERM}};

/// Values of an argument, under a mask: one comparison takes as long to compile as several calls.
struct Values {
    unsigned mask;
    unsigned value;
};

// Never whom it signals (F_SETOWN, F_SETSIG, FIOASYNC), nor leases, which hold up whoever owns the file.
static_assert(F_GETFD == 1 && F_SETLKW == 7 && F_OFD_GETLK == 36 && F_OFD_SETLKW == 38);
static_assert(F_DUPFD_CLOEXEC == 0x406 && F_SETPIPE_SZ == 0x407 && F_GETPIPE_SZ == 0x408 &&
              F_GET_SEALS == 0x40a);
constexpr Values fileCommands[] = {
    {~7U, F_DUPFD}, {~3U, F_OFD_GETLK}, {~1U, F_DUPFD_CLOEXEC}, {~3U, F_GETPIPE_SZ}};
static_assert(FIOCLEX == 0x5451 && FIONCLEX == 0x5450);
constexpr Values deviceCommands[] = {{~0U, TCGETS}, {~0U, FIONREAD}, {~0U, FIONBIO}, {~1U, FIONCLEX}};
constexpr Values processOptions[] = {
    {~0U, PR_SET_PDEATHSIG}, {~0U, PR_SET_NAME},     {~0U, PR_GET_NAME}, {~0U, PR_GET_DUMPABLE},
#ifdef KELVO_SANITIZED
    {~0U, PR_SET_PTRACER},   {~0U, PR_SET_DUMPABLE},
#endif
};

constexpr scmp_datum_t kindsOfNamespaces =
    CLONE_NEWCGROUP | CLONE_NEWIPC | CLONE_NEWNET | CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWUSER | CLONE_NEWUTS;

scmp_arg_cmp equals(unsigned argument, scmp_datum_t value) {
    return {argument, SCMP_CMP_EQ, value, 0};
}

scmp_arg_cmp differs(unsigned argument, scmp_datum_t value) {
    return {argument, SCMP_CMP_NE, value, 0};
}

scmp_arg_cmp hasBits(unsigned argument, scmp_datum_t mask, scmp_datum_t value) {
    return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

class Filter {
public:
    // What is not known includes clone3 and openat2, whose flags stand in memory, where no filter looks; the C
    // library goes on to clone and openat.
    Filter() : context_(seccomp_init(SCMP_ACT_ERRNO(ENOSYS)), seccomp_release) {
        set(SCMP_FLTATR_CTL_TSYNC, 1);
        set(SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS);
        // A tree: the list would cost each call up to as many comparisons as there are rules.
        set(SCMP_FLTATR_CTL_OPTIMIZE, 2);
    }

    void set(scmp_filter_attr attribute, std::uint32_t value) {
        isWhole_ = isWhole_ && context_ && seccomp_attr_set(context_.get(), attribute, value) == 0;
    }

    template <typename... Conditions>
    void add(std::uint32_t action, int call, Conditions... conditions) {
        if (call >= 0)
            isWhole_ = isWhole_ && seccomp_rule_add(context_.get(), action, call, sizeof...(conditions),
                                                    conditions...) == 0;
    }
    template <typename... Conditions>
    void allow(int call, Conditions... conditions) {
        add(SCMP_ACT_ALLOW, call, conditions...);
    }
    template <typename... Conditions>
    void refuse(int error, int call, Conditions... conditions) {
        add(SCMP_ACT_ERRNO(static_cast<std::uint32_t>(error)), call, conditions...);
    }
    template <std::size_t count>
    void refuse(const Answer (&list)[count]) {
        for (const Answer& answer : list)
            refuse(answer.error, answer.call);
    }

    bool load() const { return isWhole_ && seccomp_load(context_.get()) == 0; }

private:
    std::unique_ptr<void, decltype(&seccomp_release)> context_;
    bool isWhole_ = true;
};

void addFiles(Filter& filter, bool refusesTruncation) {
    const std::pair<int, unsigned> calls[] = {{SCMP_SYS(open), 1}, {SCMP_SYS(openat), 2}};
    for (const auto& [call, flags] : calls) {
        if (!refusesTruncation) {
            filter.allow(call);
            continue;
        }
        // Opening for reading truncates as well when asked to.
        filter.allow(call, hasBits(flags, O_TRUNC, 0));
        filter.allow(call, hasBits(flags, O_ACCMODE | O_TRUNC, O_WRONLY | O_TRUNC));
        filter.allow(call, hasBits(flags, O_ACCMODE | O_TRUNC, O_RDWR | O_TRUNC));
    }
    filter.allow(SCMP_SYS(creat));
    if (refusesTruncation)
        filter.refuse(EACCES, SCMP_SYS(truncate));
    else
        filter.allow(SCMP_SYS(truncate));
    for (const Values& commands : fileCommands)
        filter.allow(SCMP_SYS(fcntl), hasBits(1, commands.mask, commands.value));
    for (const Values& commands : deviceCommands)
        filter.allow(SCMP_SYS(ioctl), hasBits(1, commands.mask, commands.value));
}

void addProcesses(Filter& filter, bool startsPrograms) {
    const auto self = static_cast<scmp_datum_t>(getpid());
    filter.allow(SCMP_SYS(tgkill), equals(0, self));
    filter.refuse(EPERM, SCMP_SYS(tgkill), differs(0, self));
    filter.allow(SCMP_SYS(kill), equals(0, self));
    if (getpgrp() == getpid())
        filter.allow(SCMP_SYS(kill), equals(0, 0));

    filter.allow(SCMP_SYS(clone), hasBits(0, kindsOfNamespaces | CLONE_THREAD, CLONE_THREAD));
    if (startsPrograms) {
        filter.allow(SCMP_SYS(clone), hasBits(0, kindsOfNamespaces | CLONE_THREAD, 0));
        for (const Answer& answer : answersAboutPrograms)
            filter.allow(answer.call);
    } else {
        filter.refuse(answersAboutPrograms);
#ifdef KELVO_SANITIZED
        // At the end of a program LeakSanitizer looks at its threads from a process that shares their memory.
        filter.allow(SCMP_SYS(clone), hasBits(0, CLONE_THREAD | CLONE_VM, CLONE_VM));
        filter.refuse(EPERM, SCMP_SYS(clone), hasBits(0, CLONE_THREAD | CLONE_VM, 0));
#else
        filter.refuse(EPERM, SCMP_SYS(clone), hasBits(0, CLONE_THREAD, 0));
#endif
    }
#ifdef KELVO_SANITIZED
    filter.allow(SCMP_SYS(ptrace));
#else
    filter.add(SCMP_ACT_KILL_PROCESS, SCMP_SYS(ptrace));
#endif

    // Nobody's limits are changed, and one's own are read.
    filter.allow(SCMP_SYS(prlimit64), equals(0, 0), equals(2, 0));
    filter.allow(SCMP_SYS(prlimit64), equals(0, self), equals(2, 0));
    filter.refuse(EPERM, SCMP_SYS(prlimit64), differs(2, 0));
    constexpr scmp_datum_t question = 0xffffffff;
    filter.allow(SCMP_SYS(personality), equals(0, question));
    for (const Values& options : processOptions)
        filter.allow(SCMP_SYS(prctl), hasBits(0, options.mask, options.value));
}

void addSockets(Filter& filter, bool servesUnixSockets) {
    // Never for datagrams, which one half of a pair sends to any address.
    constexpr unsigned typeMask = ~unsigned{SOCK_CLOEXEC | SOCK_NONBLOCK};
    filter.allow(SCMP_SYS(socketpair), equals(0, AF_UNIX), hasBits(1, typeMask, SOCK_STREAM));
    filter.allow(SCMP_SYS(socketpair), equals(0, AF_UNIX), hasBits(1, typeMask, SOCK_SEQPACKET));
    if (!servesUnixSockets) {
        filter.refuse(EACCES, SCMP_SYS(socket));
        return;
    }
    filter.allow(SCMP_SYS(socket), equals(0, AF_UNIX), hasBits(1, typeMask, SOCK_STREAM));
    filter.refuse(EACCES, SCMP_SYS(socket), differs(0, AF_UNIX));
    for (const int call : {SCMP_SYS(bind), SCMP_SYS(listen), SCMP_SYS(accept), SCMP_SYS(accept4)})
        filter.allow(call);
}

} // namespace

bool filterSystemCalls(const SystemCallAllowances& allowances) {
    Filter filter;
    for (const int call : allowedCalls)
        filter.allow(call);
    for (const int call : attacks)
        filter.add(SCMP_ACT_KILL_PROCESS, call);
    filter.refuse(answers);
    addFiles(filter, allowances.refusesTruncation);
    addProcesses(filter, allowances.startsPrograms);
    addSockets(filter, allowances.servesUnixSockets);
    return filter.load();
}

} // namespace kelvo
