// The metadata of a file through the running service, text included. Files are the program's arguments. The peers of PDFs
// are pdftotext, which is started for each, and Poppler in this process, which is given the bytes and asked for the text
// alone; that of images is exiftool, started once for all of them, and that of sound and films ffprobe, started for each.
// Of a text file the importer's own work is shown beside all of it.

#include "BuiltService.h"
#include "Comparison.h"
#include "importers/text/TextImport.h"
#include "support/Importing.h"
#include "support/TemporaryFolder.h"

#include <plumwick/Client.h>

#include <benchmark/benchmark.h>
#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

extern char** environ;

namespace {

using namespace kelvo;
using bench::endService;
using bench::optionsOfBuiltService;

NSString pathOf(const std::string& file) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(file);
}

void firstCall(benchmark::State& state, const std::string& file) {
    for (auto _ : state) {
        Client client(optionsOfBuiltService());
        client.posterImageForMovieWithFile(u"/nonexistent");
        const auto begin = std::chrono::steady_clock::now();
        if (client.metaDataForFile(pathOf(file)).count() == 0)
            state.SkipWithError("no metadata");
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        endService(client);
    }
}

void throughService(benchmark::State& state, const std::vector<std::string>& files) {
    Client client(optionsOfBuiltService());
    for (auto _ : state) {
        for (const std::string& file : files)
            benchmark::DoNotOptimize(client.metaDataForFile(pathOf(file)));
    }
    endService(client);
}

void importerAlone(benchmark::State& state, const std::string& file) {
    for (auto _ : state) {
        const NSData data = NSData::dataWithContentsOfFileWhenNeeded(pathOf(file));
        benchmark::DoNotOptimize(attributesByImporter(importers::importText, data, "public.plain-text"));
    }
}

using Command = std::vector<std::string>;

void runTools(benchmark::State& state, const std::vector<Command>& commands) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    for (auto _ : state) {
        for (const Command& command : commands) {
            std::vector<char*> arguments;
            for (const std::string& argument : command)
                arguments.push_back(const_cast<char*>(argument.c_str()));
            arguments.push_back(nullptr);
            pid_t child = 0;
            if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
                return state.SkipWithError("the tool is missing");
            waitpid(child, nullptr, 0);
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

/// One command for each file, which is its last argument.
std::vector<Command> eachBy(const Command& tool, const std::vector<std::string>& files) {
    std::vector<Command> commands;
    for (const std::string& file : files) {
        commands.push_back(tool);
        commands.back().push_back(file);
    }
    return commands;
}

std::vector<Command> allBy(Command tool, const std::vector<std::string>& files) {
    tool.insert(tool.end(), files.begin(), files.end());
    return {tool};
}

/// Of the times that the files take one by one, each the median of some, the median and the longest.
std::pair<double, double> secondsOfFiles(const std::vector<std::string>& files) {
    constexpr std::size_t rounds = 9;
    Client client(optionsOfBuiltService());
    std::vector<double> medians;
    for (const std::string& file : files) {
        std::vector<double> times;
        for (std::size_t round = 0; round < rounds; ++round) {
            const auto begin = std::chrono::steady_clock::now();
            benchmark::DoNotOptimize(client.metaDataForFile(pathOf(file)));
            times.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        }
        std::ranges::sort(times);
        medians.push_back(times[rounds / 2]);
    }
    endService(client);
    std::ranges::sort(medians);
    return {medians[medians.size() / 2], medians.back()};
}

/// Files of a kind, by what their names end with.
struct Group {
    const char* name;
    std::vector<std::string> endings;
    std::vector<std::string> files;
};

bool isOf(const Group& group, const std::string& file) {
    std::string ending = std::filesystem::path(file).extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char byte) { return std::tolower(byte); });
    return std::ranges::find(group.endings, ending) != group.endings.end();
}

void popplerInProcess(benchmark::State& state, const std::vector<std::string>& files) {
    poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
    for (auto _ : state) {
        for (const std::string& file : files) {
            const std::unique_ptr<poppler::document> document(poppler::document::load_from_file(file));
            for (int page = 0; document && !document->is_locked() && page < document->pages(); ++page) {
                const std::unique_ptr<poppler::page> shown(document->create_page(page));
                if (shown)
                    benchmark::DoNotOptimize(shown->text());
            }
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const tests::TemporaryFolder folder;
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    std::string prose;
    while (prose.size() < 10'000)
        prose += "Plain words make up the most of it, line by line, and some are f\xC3\xBCr andere.\n";
    const std::string text = folder.write("prose.txt", prose);
    const std::string page = folder.write("page.html", "<html><head><title>Words</title></head><body><p>" +
                                                           prose + "</p></body></html>");
    Group images{"images",
                 {".jpg", ".jpeg", ".png", ".gif",  ".tif",  ".tiff", ".webp", ".heic", ".avif",
                  ".jxl", ".jp2",  ".bmp", ".psd",  ".tga",  ".pcx",  ".sgi",  ".exr",  ".hdr",
                  ".ppm", ".dng",  ".ico", ".icns", ".pict", ".pct",  ".mpo"},
                 {}};
    Group sounds{"sound", {".mp3", ".m4a", ".flac", ".wav", ".ogg", ".opus", ".aiff"}, {}};
    Group films{"films", {".mp4", ".mov", ".mkv", ".webm", ".avi", ".mpg", ".ogv", ".3gp", ".ts"}, {}};
    std::vector<std::string> files;
    for (const std::string& file : std::vector<std::string>(argv + 1, argv + argc)) {
        auto& of = isOf(images, file)   ? images.files
                   : isOf(sounds, file) ? sounds.files
                   : isOf(films, file)  ? films.files
                                        : files;
        of.push_back(file);
    }

    const auto add = [](const std::string& name, auto function, auto argument) {
        return benchmark::RegisterBenchmark(name.c_str(), function, argument)
            ->Repetitions(9)
            ->ReportAggregatesOnly()
            ->Unit(benchmark::kMicrosecond);
    };
    add("first call, text", firstCall, text)->UseManualTime()->Iterations(1);
    if (!files.empty())
        add("first call, PDF", firstCall, files[0])->UseManualTime()->Iterations(1);
    add("service/text", throughService, std::vector{text})->UseRealTime();
    add("importer/text", importerAlone, text)->UseRealTime();
    add("service/page", throughService, std::vector{page})->UseRealTime();
    std::vector<std::vector<std::string>> rows;
    for (const std::string& file : files)
        rows.push_back({file});
    if (files.size() > 1)
        rows.push_back(files);
    const auto nameOf = [](const std::vector<std::string>& row) {
        return row.size() == 1 ? std::filesystem::path(row[0]).filename().string() : std::string("all");
    };
    for (const auto& row : rows) {
        add("service/" + nameOf(row), throughService, row)->UseRealTime();
        std::vector<Command> commands = eachBy({"pdftotext", "-q"}, row);
        for (Command& command : commands)
            command.emplace_back("/dev/null");
        add("pdftotext/" + nameOf(row), runTools, commands)->UseRealTime();
        add("poppler/" + nameOf(row), popplerInProcess, row)->UseRealTime();
    }
    for (Group* const group : {&images, &sounds, &films}) {
        if (group->files.empty())
            continue;
        const std::string name = group->name;
        const Command ffprobe{"ffprobe", "-v", "quiet", "-of", "json", "-show_format", "-show_streams"};
        add("first call, " + name, firstCall, group->files[0])->UseManualTime()->Iterations(1);
        add("service/" + name, throughService, group->files)->UseRealTime();
        add("tool/" + name, runTools,
            group == &images ? allBy({"exiftool", "-q", "-json"}, group->files)
                             : eachBy(ffprobe, group->files))
            ->UseRealTime();
    }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    const auto seconds = [&](const std::string& name) {
        for (const char* end : {"/real_time", "/iterations:1/manual_time"}) {
            if (const double found = comparison.seconds(name + end); found > 0)
                return found;
        }
        return comparison.seconds(name);
    };
    std::printf("\nfirst call, text %36.1f ms\nfirst call, PDF %37.1f ms\n",
                seconds("first call, text") * 1e3, seconds("first call, PDF") * 1e3);
    std::printf("text of 10 KB, all %34.0f us\ntext of 10 KB, its importer %25.0f us\n",
                seconds("service/text") * 1e6, seconds("importer/text") * 1e6);
    std::printf("\nmetadata with text through the service, times as long as\n%-44s %10s %10s\n", "",
                "pdftotext", "Poppler");
    for (const auto& row : rows)
        std::printf("%-44s %10.2f %10.2f\n", nameOf(row).c_str(),
                    seconds("service/" + nameOf(row)) / seconds("pdftotext/" + nameOf(row)),
                    seconds("service/" + nameOf(row)) / seconds("poppler/" + nameOf(row)));
    std::printf("\n%-10s %12s %14s %12s %12s\n", "", "first call", "times as fast", "median", "longest");
    for (const Group* const group : {&images, &sounds, &films}) {
        if (seconds("service/" + std::string(group->name)) <= 0)
            continue;
        const auto [median, longest] = secondsOfFiles(group->files);
        std::printf("%-10s %9.1f ms %14.1f %9.2f ms %9.2f ms\n", group->name,
                    seconds("first call, " + std::string(group->name)) * 1e3,
                    seconds("tool/" + std::string(group->name)) /
                        seconds("service/" + std::string(group->name)),
                    median * 1e3, longest * 1e3);
    }
    return 0;
}
