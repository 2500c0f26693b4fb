// What the way to the service costs: its start, an empty call, and large arguments against the same bytes
// through a bare socket.

#include "BuiltService.h"
#include "Comparison.h"

#include <plumwick/Client.h>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kelvo;
using bench::endService;
using bench::optionsOfBuiltService;

constexpr std::size_t largeSize = std::size_t{64} << 20;

void execToFirstAnswer(benchmark::State& state) {
    for (auto _ : state) {
        Client client(optionsOfBuiltService());
        const auto begin = std::chrono::steady_clock::now();
        client.posterImageForMovieWithFile(u"/nonexistent");
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        state.counters["resident MB"] = static_cast<double>(client.status().residentBytes) / 1e6;
        endService(client);
    }
}
BENCHMARK(execToFirstAnswer)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(25)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMillisecond);

/// What a process has had of the processor, in seconds.
double processorTime(pid_t process) {
    double nanoseconds = 0;
    std::ifstream("/proc/" + std::to_string(process) + "/schedstat") >> nanoseconds;
    return nanoseconds / 1e9;
}

void emptyCall(benchmark::State& state) {
    Client client(optionsOfBuiltService());
    client.posterImageForMovieWithFile(u"/nonexistent");
    const pid_t service = client.status().processIdentifier;
    const double begin = processorTime(service);
    for (auto _ : state)
        benchmark::DoNotOptimize(client.posterImageForMovieWithFile(u"/nonexistent"));
    state.counters["service's CPU"] =
        benchmark::Counter(processorTime(service) - begin, benchmark::Counter::kAvgIterations);
    endService(client);
}
BENCHMARK(emptyCall)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMicrosecond);

/// The peer: another process gives back one byte.
void bareRoundTrip(benchmark::State& state) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return state.SkipWithError("no socket");
    const pid_t echo = fork();
    if (echo == 0) {
        close(ends[0]);
        char byte;
        while (read(ends[1], &byte, 1) == 1 && write(ends[1], &byte, 1) == 1) {
        }
        _exit(0);
    }
    close(ends[1]);
    char byte = 'x';
    for (auto _ : state) {
        if (write(ends[0], &byte, 1) != 1 || read(ends[0], &byte, 1) != 1)
            return state.SkipWithError("no answer");
    }
    close(ends[0]);
    waitpid(echo, nullptr, 0);
}
BENCHMARK(bareRoundTrip)
    ->UseRealTime()
    ->Repetitions(9)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMicrosecond);

void largeArgument(benchmark::State& state) {
    Client client(optionsOfBuiltService());
    const NSData bytes = NSData::dataWithBytesNoCopy(std::vector<std::uint8_t>(largeSize, 'x'));
    // No RTFD, as its first bytes tell, so that the answer takes no work; libraries look for a PDF in all of it.
    for (auto _ : state)
        benchmark::DoNotOptimize(client.writeRTFDData_toFile(bytes, u"/nonexistent/page.rtfd"));
    endService(client);
}
BENCHMARK(largeArgument)
    ->UseRealTime()
    ->Repetitions(9)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMillisecond);

/// The peer: another process reads the same bytes into fresh memory and answers with one byte.
void bareSocket(benchmark::State& state) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        return state.SkipWithError("no socket");
    const pid_t reader = fork();
    if (reader == 0) {
        close(ends[0]);
        for (;;) {
            std::vector<char> received(largeSize);
            std::size_t length = 0;
            while (length < largeSize) {
                const ssize_t got = read(ends[1], received.data() + length, largeSize - length);
                if (got <= 0)
                    _exit(0);
                length += static_cast<std::size_t>(got);
            }
            if (write(ends[1], "x", 1) != 1)
                _exit(1);
        }
    }
    close(ends[1]);
    const std::vector<char> bytes(largeSize, 'x');
    for (auto _ : state) {
        std::size_t length = 0;
        while (length < largeSize) {
            const ssize_t put = write(ends[0], bytes.data() + length, largeSize - length);
            if (put <= 0)
                return state.SkipWithError("write failed");
            length += static_cast<std::size_t>(put);
        }
        char answer = 0;
        if (read(ends[0], &answer, 1) != 1)
            return state.SkipWithError("no answer");
    }
    close(ends[0]);
    waitpid(reader, nullptr, 0);
}
BENCHMARK(bareSocket)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMillisecond);

} // namespace

int main(int count, char** arguments) {
    std::string folder = (std::filesystem::temp_directory_path() / "kelvo-bench-XXXXXX").string();
    if (!mkdtemp(folder.data()))
        return EXIT_FAILURE;
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    benchmark::Initialize(&count, arguments);
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\n");
    comparison.printTimeRatio("empty call, time against a byte and back", "emptyCall", "bareRoundTrip");
    comparison.printTimeRatio("64 MiB argument, time against a bare socket", "largeArgument", "bareSocket");
    std::filesystem::remove_all(folder);
}
