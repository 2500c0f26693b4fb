#include "platform/foundation/processes/ServiceProcess.h"

#include "platform/foundation/processes/DescriptorLimit.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>

namespace kelvo {

void becomeServiceProcess() {
    close_range(3, UINT_MAX, 0);
    // The lowest free number is given out first: what is missing among 0, 1 and 2 is filled in order.
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO)
        close(descriptor);
    raiseDescriptorLimit();
    // What an ended engine has left behind becomes a child of this process, which ends it.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // Neither this process nor what it starts gains rights by executing a program, and what users' files made of
    // its memory is not written anywhere.
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    const rlimit nothing{0, 0};
    setrlimit(RLIMIT_CORE, &nothing);
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    // A service that cannot even reach the root folder stays where it is.
    [[maybe_unused]] const int changed = chdir("/");
}

} // namespace kelvo
