// Posters of movies through a service that runs already. The peer, ffmpegthumbnailer, is started for each file; it takes a
// key frame near a tenth of the movie and makes 128 pixels of it, where ours is the frame of the very second, as large as the
// movie. Movies named on the command line are measured beside those made here, which are an hour of 1080p each, with a key
// frame every 2 and every 10 seconds.
//
// Beside the times the CPU time of both, the memory of service and engine, and how much of the file is read.

#include "BuiltService.h"
#include "Comparison.h"
#include "platform/foundation/Value.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace kelvo;

Client& client() {
    // Never destroyed, because the run loop that it stands on goes first.
    static Client* const client = new Client(bench::optionsOfBuiltService());
    return *client;
}

void askService(benchmark::State& state, const std::vector<std::string>& paths) {
    double seconds = 0;
    for (auto _ : state) {
        for (const std::string& path : paths) {
            const NSDictionary answer =
                client().posterImageForMovieWithFile(NSString::stringWithUTF8String(path));
            if (answer.count() < 2) {
                state.SkipWithError("not read");
                return;
            }
            state.PauseTiming();
            if (const auto record = client().outcomeOfLastRequest())
                seconds += (record->cpuMilliseconds + record->engineCPUMilliseconds) / 1e3;
            state.ResumeTiming();
        }
    }
    state.counters["CPU ms"] = seconds * 1e3 / static_cast<double>(state.iterations());
}

/// Its CPU time in seconds; it fails on files without video.
double runPeer(const std::string& path) {
    static const tests::TemporaryFolder folder;
    const std::string output = folder.path("poster.png");
    const pid_t child = ::fork();
    if (child == 0) {
        if (!std::freopen("/dev/null", "w", stderr))
            ::_exit(127);
        ::execlp("ffmpegthumbnailer", "ffmpegthumbnailer", "-i", path.c_str(), "-o", output.c_str(), nullptr);
        ::_exit(127);
    }
    int status = 0;
    rusage used{};
    if (child < 0 || ::wait4(child, &status, 0, &used) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) == 127)
        return -1;
    const auto secondsOf = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return secondsOf(used.ru_utime) + secondsOf(used.ru_stime);
}

void startPeer(benchmark::State& state, const std::vector<std::string>& paths) {
    double seconds = 0;
    for (auto _ : state) {
        for (const std::string& path : paths) {
            const double used = runPeer(path);
            if (used < 0)
                state.SkipWithError("ffmpegthumbnailer cannot be started");
            seconds += used;
        }
    }
    state.counters["CPU ms"] = seconds * 1e3 / static_cast<double>(state.iterations());
}

/// An hour, as one piece of 10 seconds again and again; the index stands at its end.
bool makeHour(const std::string& folder, const std::string& name, int framesOfGroup) {
    const std::string command = "cd '" + folder +
                                "' && ffmpeg -nostdin -v error -y -f lavfi -i "
                                "mandelbrot=s=1920x1080:r=25:end_scale=0.01 -f lavfi -i sine -t 10 -c:v "
                                "libx264 -preset veryfast -b:v 2200k -g " +
                                std::to_string(framesOfGroup) + " -keyint_min " +
                                std::to_string(framesOfGroup) +
                                " -pix_fmt yuv420p -c:a aac piece.mp4 && ffmpeg -nostdin -v error -y "
                                "-stream_loop 359 -i piece.mp4 -c copy " +
                                name;
    return std::system(command.c_str()) == 0;
}

/// What the process has read by system calls, and in memory of its own; 0 when it is not known.
std::uint64_t numberIn(pid_t process, const char* file, const std::string& key) {
    std::ifstream lines("/proc/" + std::to_string(process) + "/" + file);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(key))
            return std::strtoull(line.c_str() + key.size(), nullptr, 10);
    }
    return 0;
}

pid_t engine() {
    for (const EngineFacts& facts : client().status().engines) {
        if (facts.name == u"plumwick-movie-engine")
            return facts.processIdentifier;
    }
    return 0;
}

/// Of a poster, by an engine that has just been started for a small file.
void printMemoryAndReading(const std::string& small, const std::string& path) {
    bench::endService(client());
    client().posterImageForMovieWithFile(NSString::stringWithUTF8String(small));
    const pid_t service = client().status().processIdentifier;
    constexpr double kibibyte = 1024;
    const auto residentOf = [](pid_t process) {
        return static_cast<double>(numberIn(process, "status", "VmRSS:")) * kibibyte / 1e6;
    };
    const double idle = residentOf(service) + residentOf(engine());
    const std::uint64_t before = numberIn(engine(), "io", "rchar:");
    client().posterImageForMovieWithFile(NSString::stringWithUTF8String(path));
    const std::uint64_t after = numberIn(engine(), "io", "rchar:");
    if (const auto record = client().outcomeOfLastRequest())
        std::printf("%-60s %8.0f\n", "peak of service and engine, MB above idle",
                    static_cast<double>(record->peakBytes + record->enginePeakBytes) / 1e6 - idle);
    std::printf("%-60s %8.1f\n", "read of the file, MB", static_cast<double>(after - before) / 1e6);
    std::printf("%-60s %8.0f\n", "the file, MB", static_cast<double>(std::filesystem::file_size(path)) / 1e6);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const std::vector<std::string> given(argv + 1, argv + argc);
    const tests::TemporaryFolder folder;
    constexpr int framesOfSecond = 25;
    if (!makeHour(folder.path(), "2.mp4", 2 * framesOfSecond) ||
        !makeHour(folder.path(), "10.mp4", 10 * framesOfSecond)) {
        std::fprintf(stderr, "The movies cannot be made: ffmpeg is needed.\n");
        return 1;
    }
    const auto add = [](const std::string& name, const std::vector<std::string>& paths) {
        for (const bool isOurs : {true, false})
            benchmark::RegisterBenchmark(((isOurs ? "ours/" : "ffmpegthumbnailer/") + name).c_str(),
                                         isOurs ? askService : startPeer, paths)
                ->UseRealTime()
                ->MinTime(3)
                ->Unit(benchmark::kMillisecond);
    };
    add("2", {folder.path("2.mp4")});
    add("10", {folder.path("10.mp4")});
    if (!given.empty())
        add("given", given);
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as long as ffmpegthumbnailer takes\n");
    comparison.printTimeRatio("an hour of 1080p, a key frame every 2 s", "ours/2", "ffmpegthumbnailer/2");
    comparison.printTimeRatio("an hour of 1080p, a key frame every 10 s", "ours/10", "ffmpegthumbnailer/10");
    comparison.printTimeRatio("those given", "ours/given", "ffmpegthumbnailer/given");
    printMemoryAndReading(folder.path("piece.mp4"), folder.path("2.mp4"));
    bench::endService(client());
    return 0;
}
