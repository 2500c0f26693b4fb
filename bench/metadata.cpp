// The metadata of a file through the running service, text included. PDFs are the program's arguments; their peers are
// pdftotext, which is started for each, and Poppler in this process, which is given the bytes and asked for the text
// alone. Of a text file the importer's own work is shown beside all of it.

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
#include <vector>

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

void runTool(benchmark::State& state, const std::vector<std::string>& files) {
    for (auto _ : state) {
        for (const std::string& file : files) {
            const char* arguments[] = {"pdftotext", "-q", file.c_str(), "/dev/null", nullptr};
            pid_t child = 0;
            if (posix_spawnp(&child, arguments[0], nullptr, nullptr, const_cast<char**>(arguments),
                             environ) != 0)
                return state.SkipWithError("no pdftotext");
            waitpid(child, nullptr, 0);
        }
    }
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
    const std::vector<std::string> files(argv + 1, argv + argc);

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
        add("pdftotext/" + nameOf(row), runTool, row)->UseRealTime();
        add("poppler/" + nameOf(row), popplerInProcess, row)->UseRealTime();
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
    return 0;
}
