#include "Comparison.h"
#include "platform/appkit/html/HTMLReading.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"
#include "platform/foundation/Value.h"
#include "platform/webkit/WebEngine.h"

#include <benchmark/benchmark.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

// A page of 100 KB as RTFD: an article with a style sheet, headings, paragraphs with emphasis and links,
// lists, tables and a few pictures that stand in the page itself, and nothing to fetch. A peer is a command
// that makes RTF of the same file, its start included; the first page of the web engine includes its start
// too. Given files, it measures those instead.

namespace {

using namespace kelvo;

constexpr std::size_t pageBytes = 100'000;
constexpr int pagesInARow = 500;
constexpr int pagesToWarmUp = 50;

std::string article() {
    std::string page =
        "<!DOCTYPE html><html><head><meta charset=utf-8><title>An article</title><style>"
        "body{font-family:Georgia,serif}h2{color:#234}.lead{font-size:120%}.note{background:#ffc}"
        "td,th{border:1px solid #999;padding:4px}</style></head><body><h1>An article</h1>";
    for (int section = 0; page.size() < pageBytes; ++section) {
        page += "<section><h2>Section " + std::to_string(section) +
                "</h2><p class=lead>What it is about, in short.</p>";
        for (int paragraph = 0; paragraph < 5; ++paragraph)
            page +=
                "<p>Plain words make up the most of it, line by line. <em>Some are emphasised</em>, <b>some "
                "are "
                "strong</b>, d\xC3\xA9j\xC3\xA0 vu &mdash; &ldquo;quoted&rdquo; &amp; <a "
                "href='http://harbour.example/ferry?at=10'>linked</a>, <span class=note>noted</span>.</p>";
        page += "<ul><li>one item<li>another "
                "<code>item</code><ol><li>within<li>it</ol></ul><table><tr><th>From<th>To"
                "<th>At</tr>";
        for (int row = 0; row < 4; ++row)
            page += "<tr><td>Harbour<td>Island<td>1" + std::to_string(row) + ":10</tr>";
        page += "</table><img width=20 height=20 alt=dot src='data:image/gif;base64,"
                "R0lGODlhAQABAIAAAAAAAP///yH5BAEAAAAALAAAAAABAAEAAAIBRAA7'></section>";
    }
    return page;
}

NSData rtfdOfPage(const NSData& page) {
    const auto options = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithDouble(15), NSTimeoutDocumentOption}});
    const NSAttributedString text =
        NSAttributedStringKitAdditions::initWithHTML_options_documentAttributes(page, options, nullptr);
    return text.isNil() ? NSData() : RTFDFromRange_documentAttributes(text, {0, text.length()}, nullptr);
}

void rendered(benchmark::State& state, const NSData& page) {
    rtfdOfPage(page);
    for (auto _ : state) {
        if (rtfdOfPage(page).isNil())
            state.SkipWithError("no answer");
    }
}

void firstPage(benchmark::State& state, const NSData& page) {
    for (auto _ : state) {
        state.PauseTiming();
        if (const pid_t engine = WebEngine::sharedEngine().processIdentifier(); engine > 0) {
            kill(-engine, SIGKILL);
            usleep(500'000);
        }
        state.ResumeTiming();
        if (rtfdOfPage(page).isNil())
            state.SkipWithError("no answer");
    }
}

bool isInstalled(const std::string& command) {
    return std::system(("command -v " + command + " >/dev/null 2>&1").c_str()) == 0;
}

void runCommand(benchmark::State& state, const std::string& command) {
    for (auto _ : state) {
        if (std::system((command + " >/dev/null 2>&1").c_str()) != 0)
            state.SkipWithError("the command failed");
    }
}

/// Of all processes of the engine's group, in bytes.
std::size_t residentBytes() {
    const pid_t group = WebEngine::sharedEngine().processIdentifier();
    std::size_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        std::ifstream file(entry.path() / "statm");
        std::size_t total = 0;
        std::size_t resident = 0;
        if (name.find_first_not_of("0123456789") == std::string::npos && getpgid(std::stoi(name)) == group &&
            file >> total >> resident)
            bytes += resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    }
    return bytes;
}

void printMemory(const NSData& page) {
    std::size_t most[2] = {0, 0};
    for (int count = 0; count < pagesInARow; ++count) {
        rtfdOfPage(page);
        std::size_t& phase = most[count < pagesToWarmUp ? 0 : 1];
        phase = std::max(phase, residentBytes());
    }
    std::printf("\nmemory of all processes of the engine: at most %zu MB in the first %d pages, %zu MB in "
                "the %d after\n",
                most[0] >> 20, pagesToWarmUp, most[1] >> 20, pagesInARow - pagesToWarmUp);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const auto folder =
        std::filesystem::temp_directory_path() / ("kelvo-bench-pages-" + std::to_string(getpid()));
    std::filesystem::create_directory(folder);
    std::vector<std::string> files(argv + 1, argv + argc);
    if (files.empty()) {
        files.push_back(folder / "article.html");
        std::ofstream(files.front()) << article();
    }
    kelvo::bench::Comparison comparison;
    const std::string office = "soffice -env:UserInstallation=file://" + (folder / "office").string() +
                               " --headless --convert-to rtf:'Rich Text Format' --outdir '" +
                               folder.string() + "' ";
    for (const std::string& file : files) {
        const std::string name = std::filesystem::path(file).filename();
        const NSData page = NSData::dataWithContentsOfFile(NSString::stringWithUTF8String(file));
        benchmark::RegisterBenchmark(("first:" + name).c_str(), firstPage, page)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(3)
            ->UseRealTime();
        benchmark::RegisterBenchmark(("warm:" + name).c_str(), rendered, page)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->Repetitions(31)
            ->ReportAggregatesOnly()
            ->UseRealTime();
        if (isInstalled("pandoc"))
            benchmark::RegisterBenchmark(("pandoc:" + name).c_str(), runCommand,
                                         "pandoc -f html -t rtf -s '" + file + "' -o /dev/null")
                ->Unit(benchmark::kMillisecond)
                ->Iterations(3)
                ->UseRealTime();
        if (isInstalled("soffice"))
            benchmark::RegisterBenchmark(("office:" + name).c_str(), runCommand, office + "'" + file + "'")
                ->Unit(benchmark::kMillisecond)
                ->Iterations(2)
                ->UseRealTime();
    }
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as fast as the peer\n");
    for (const std::string& file : files) {
        const std::string name = std::filesystem::path(file).filename();
        for (const char* peer : {"pandoc:", "office:"}) {
            comparison.printSpeedRatio((name + ", warm, and " + peer).c_str(), "warm:" + name, peer + name);
            comparison.printSpeedRatio((name + ", first, and " + peer).c_str(), "first:" + name, peer + name);
        }
    }
    printMemory(NSData::dataWithContentsOfFile(NSString::stringWithUTF8String(files.front())));
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return 0;
}
