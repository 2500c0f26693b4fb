// What it costs to have something done in another process: an empty message against a byte and back over a bare socket
// pair, 200 MB by descriptor, the start of an engine that links nothing with and without its confinement, and what a
// thousand crashes in a row leave behind.

#include "Comparison.h"
#include "platform/engine/EngineProcess.h"
#include "platform/engine/program/EngineProgram.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/processes/ProcessFacts.h"
#include "platform/ledger/RequestNotes.h"

#include <benchmark/benchmark.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace kelvo;

constexpr double ample = 60;
constexpr int crashCount = 1000;
constexpr std::size_t fileLength = 200'000'000;

EngineDescription description(std::vector<std::string> arguments = {}) {
    EngineDescription description;
    description.programName = "bench_engine_program";
    description.arguments = std::move(arguments);
    return description;
}

void bareSocketPair(benchmark::State& state) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        return state.SkipWithError("no sockets");
    const pid_t other = fork();
    char byte = 0;
    if (other == 0) {
        close(ends[0]);
        while (read(ends[1], &byte, 1) == 1 && write(ends[1], &byte, 1) == 1) {
        }
        _exit(0);
    }
    close(ends[1]);
    for (auto _ : state) {
        if (write(ends[0], &byte, 1) != 1 || read(ends[0], &byte, 1) != 1)
            state.SkipWithError("the other side is gone");
    }
    close(ends[0]);
    waitpid(other, nullptr, 0);
}

void emptyMessage(benchmark::State& state) {
    EngineProcess engine(description());
    engine.ask({}, ample);
    for (auto _ : state)
        engine.ask({}, ample);
}

void emptyMessageInRequest(benchmark::State& state) {
    EngineProcess engine(description());
    const RequestNotes notes;
    engine.ask({}, ample);
    for (auto _ : state)
        engine.ask({}, ample);
}

NSString largeFile() {
    static const std::string path =
        (std::filesystem::temp_directory_path() / "plumwick-bench-engine").string();
    if (!std::filesystem::exists(path))
        std::ofstream(path, std::ios::binary) << std::string(fileLength, 'x');
    return NSString::stringWithUTF8String(path);
}

void fileByDescriptor(benchmark::State& state) {
    EngineProcess engine(description());
    const NSString path = largeFile();
    engine.ask({}, ample);
    const std::uint64_t before = residentBytesOfProcess(getpid());
    for (auto _ : state)
        engine.ask(NSData::dataWithContentsOfFileWhenNeeded(path), ample);
    state.counters["growth MB"] =
        (static_cast<double>(residentBytesOfProcess(getpid())) - static_cast<double>(before)) / 1e6;
}

void firstAnswer(benchmark::State& state, bool isConfined) {
    EngineProcess engine(
        isConfined ? description()
                   : description({engineWithoutOwnNetwork, engineWithoutLandlock, engineWithoutFilter}));
    for (auto _ : state) {
        engine.ask({}, ample);
        state.PauseTiming();
        engine.stop();
        state.ResumeTiming();
    }
}
void firstAnswerConfined(benchmark::State& state) {
    firstAnswer(state, true);
}
void firstAnswerUnconfined(benchmark::State& state) {
    firstAnswer(state, false);
}

std::size_t descriptorCount() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                                  std::filesystem::directory_iterator()));
}

void printThousandCrashes() {
    EngineProcess engine(description());
    const auto crash = [&engine] {
        try {
            engine.ask(NSNumber::numberWithInt(SIGSEGV), ample);
        } catch (const NSException&) {
        }
    };
    for (int each = 0; each < 20; ++each)
        crash();
    const std::size_t descriptors = descriptorCount();
    const std::size_t children = childProcesses().size();
    const std::uint64_t resident = residentBytesOfProcess(getpid());
    for (int each = 0; each < crashCount; ++each)
        crash();
    std::printf("%d crashes: descriptors %zu, %zu before; children %zu, %zu before; resident %+.1f MB\n",
                crashCount, descriptorCount(), descriptors, childProcesses().size(), children,
                (static_cast<double>(residentBytesOfProcess(getpid())) - static_cast<double>(resident)) /
                    1e6);
}

BENCHMARK(bareSocketPair)
    ->UseRealTime()
    ->Repetitions(9)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(emptyMessage)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMicrosecond);
BENCHMARK(emptyMessageInRequest)
    ->UseRealTime()
    ->Repetitions(9)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(fileByDescriptor)
    ->UseRealTime()
    ->Repetitions(9)
    ->ReportAggregatesOnly()
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(firstAnswerConfined)->UseRealTime()->Iterations(50)->Repetitions(3)->Unit(benchmark::kMillisecond);
BENCHMARK(firstAnswerUnconfined)
    ->UseRealTime()
    ->Iterations(50)
    ->Repetitions(3)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\n");
    comparison.printTimeRatio("empty message against a byte and back", "emptyMessage", "bareSocketPair");
    comparison.printTimeRatio("the same as part of a request", "emptyMessageInRequest", "bareSocketPair");
    std::printf("200 MB by descriptor: %.3f ms more than an empty message\n",
                (comparison.seconds("fileByDescriptor") - comparison.seconds("emptyMessage")) * 1e3);
    std::printf("confinement: %.2f ms of an engine's start\n",
                (comparison.seconds("firstAnswerConfined") - comparison.seconds("firstAnswerUnconfined")) *
                    1e3);
    printThousandCrashes();
    std::filesystem::remove(std::filesystem::temp_directory_path() / "plumwick-bench-engine");
}
