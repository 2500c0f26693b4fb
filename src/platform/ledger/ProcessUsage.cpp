#include "platform/ledger/ProcessUsage.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <charconv>
#include <cstddef>
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

long pageFaults() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt + usage.ru_majflt;
}

/// Of a file of /proc, from its beginning.
template <std::size_t capacity>
std::string_view textOf(const FileDescriptor& file, char (&text)[capacity]) {
    const ssize_t length = pread(file.get(), text, capacity, 0);
    return {text, length > 0 ? static_cast<std::size_t>(length) : 0};
}

std::uint64_t numberAfter(std::string_view text, std::size_t place) {
    std::uint64_t number = 0;
    if (place = text.find_first_of("0123456789", place); place != std::string_view::npos)
        std::from_chars(text.data() + place, text.data() + text.size(), number);
    return number;
}

} // namespace

ProcessUsage::ProcessUsage()
    : clearing_(open("/proc/self/clear_refs", O_WRONLY | O_CLOEXEC)),
      status_(open("/proc/self/status", O_RDONLY | O_CLOEXEC)),
      statm_(open("/proc/self/statm", O_RDONLY | O_CLOEXEC)),
      restarts_(writeRestart(clearing_.get())) {}

void ProcessUsage::restartPeak() {
    if (!restarts_)
        return;
    writeRestart(clearing_.get());
    char text[128];
    const std::string_view pages = textOf(statm_, text);
    residentAtRestart_ =
        numberAfter(pages, pages.find(' ')) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    faultsAtRestart_ = pageFaults();
}

std::uint64_t ProcessUsage::peakBytes() const {
    // The most since the process began would be said of every request after the largest.
    if (!restarts_)
        return 0;
    if (residentAtRestart_ > 0 && pageFaults() == faultsAtRestart_)
        return residentAtRestart_;
    char text[1024];
    const std::string_view status = textOf(status_, text);
    const std::size_t place = status.find("\nVmHWM:");
    return place == std::string_view::npos ? 0 : numberAfter(status, place) * 1024;
}

double nowInMilliseconds() {
    return millisecondsOfClock(CLOCK_MONOTONIC);
}

double cpuMillisecondsOfThisProcess() {
    return millisecondsOfClock(CLOCK_PROCESS_CPUTIME_ID);
}

} // namespace kelvo
