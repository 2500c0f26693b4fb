#include "platform/ledger/ProcessUsage.h"

#include <fcntl.h>
#include <time.h>

#include <charconv>
#include <string_view>

namespace kelvo {
namespace {

double millisecondsOfClock(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

bool writeRestart(int descriptor) {
    return pwrite(descriptor, "5", 1, 0) == 1;
}

} // namespace

ProcessUsage::ProcessUsage()
    : clearing_(open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC)),
      status_(open("/proc/self/status", O_RDONLY | O_CLOEXEC)),
      restarts_(writeRestart(clearing_.get())) {}

void ProcessUsage::restartPeak() const {
    if (restarts_)
        writeRestart(clearing_.get());
}

std::uint64_t ProcessUsage::peakBytes() const {
    // The most since the process began would be said of every request after the largest.
    if (!restarts_)
        return 0;
    char text[1024];
    const ssize_t length = pread(status_.get(), text, sizeof text, 0);
    if (length <= 0)
        return 0;
    const std::string_view status(text, static_cast<std::size_t>(length));
    constexpr std::string_view name = "\nVmHWM:";
    const std::size_t place = status.find(name);
    if (place == std::string_view::npos)
        return 0;
    const std::size_t number = status.find_first_of("0123456789", place + name.size());
    std::uint64_t kibibytes = 0;
    if (number != std::string_view::npos)
        std::from_chars(status.data() + number, status.data() + status.size(), kibibytes);
    return kibibytes * 1024;
}

double nowInMilliseconds() {
    return millisecondsOfClock(CLOCK_MONOTONIC);
}

double cpuMillisecondsOfThisProcess() {
    return millisecondsOfClock(CLOCK_PROCESS_CPUTIME_ID);
}

} // namespace kelvo
