// The text of PDFs, plain (with the repairs and the normal form that make it the service's) and rich, through a service that
// runs already, and by its engine alone. The peer is pdftotext, which is started for each file. Files named on the command line are measured
// beside those made here.

#include "BuiltService.h"
#include "Comparison.h"
#include "pdf/PDFDocumentConversion.h"
#include "platform/foundation/Value.h"
#include "platform/pdfkit/PDFEngine.h"
#include "support/PDFDocuments.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

PDFDocument documentOfFile(const std::string& path) {
    return PDFDocument::initWithData(
        NSData::dataWithContentsOfFileWhenNeeded(NSString::stringWithUTF8String(path)));
}

Client& client() {
    // Never destroyed, because the run loop that it stands on goes first.
    static Client* const client = new Client([] {
        ClientOptions options = bench::optionsOfBuiltService();
        options.timeoutSeconds = 75;
        return options;
    }());
    return *client;
}

/// The bytes of the file are sent as well.
void askService(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        const NSData data = NSData::dataWithContentsOfFile(NSString::stringWithUTF8String(path));
        if (client().attributed_stringWithPDF(false, data).isNil())
            state.SkipWithError("not read");
    }
}

void readPlain(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        if (fixedAndNormalizedStringUsingTimeout(documentOfFile(path), 60).isNil())
            state.SkipWithError("not read");
    }
}

void readRich(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        NSAttributedString text =
            documentOfFile(path).selectionForEntireDocument().attributedStringUsingTimeout(60);
        benchmark::DoNotOptimize(text);
    }
}

pid_t startPeer(const std::string& path) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execlp("pdftotext", "pdftotext", "-q", path.c_str(), "/dev/null", nullptr);
        ::_exit(127);
    }
    return child;
}

bool succeeds(pid_t peer) {
    int status = 0;
    return peer > 0 && ::waitpid(peer, &status, 0) == peer && status == 0;
}

/// The most that was resident of it so far, in KiB; 0 when it is no process of that name, or has ended.
long residentKibibytes(pid_t process, const std::string& name) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string line;
    if (!std::getline(status, line) || !line.ends_with("\t" + name))
        return 0;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:"))
            return std::atol(line.c_str() + 6);
    }
    return 0;
}

/// Looked at until its end, because what its end tells counts what this process had resident when it was forked.
long residentOfPeer(const std::string& path) {
    const pid_t peer = startPeer(path);
    long most = 0;
    for (siginfo_t end{}; end.si_pid == 0; ::usleep(500)) {
        most = std::max(most, residentKibibytes(peer, "pdftotext"));
        if (::waitid(P_PID, static_cast<id_t>(peer), &end, WEXITED | WNOHANG | WNOWAIT) != 0)
            break;
    }
    return succeeds(peer) ? most : 0;
}

void readPeer(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        if (!succeeds(startPeer(path)))
            state.SkipWithError("pdftotext failed");
    }
}

/// Of an engine that has read this file alone.
long residentOfEngine(const std::string& path) {
    PDFEngine& engine = PDFEngine::sharedEngine();
    engine.stop();
    fixedAndNormalizedStringUsingTimeout(documentOfFile(path), 60);
    // The kernel keeps the first 15 letters of a name.
    return residentKibibytes(engine.processIdentifier(), "plumwick-pdf-en");
}

std::string page(int number) {
    std::string contents;
    for (int line = 0; line < 50; ++line)
        contents += tests::pdfText("Line " + std::to_string(line) + " of page " + std::to_string(number) +
                                       " with a few words in it, as pages go, so that it is full.",
                                   line % 10 == 0 ? "T 11" : "F 10", 760 - 14 * line);
    return contents;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const tests::TemporaryFolder folder;
    ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    std::vector<std::string> files;
    for (const int count : {1, 1000}) {
        std::vector<std::string> pages;
        for (int number = 0; number < count; ++number)
            pages.push_back(page(number));
        files.push_back(
            folder.write(std::to_string(count) + " pages.pdf", tests::pdfDocument(std::move(pages))));
    }
    files.insert(files.end(), argv + 1, argv + argc);
    const auto add = [](const std::string& name, auto* function, const std::string& file) {
        benchmark::RegisterBenchmark((name + file).c_str(), function, file)
            ->UseRealTime()
            ->Repetitions(5)
            ->ReportAggregatesOnly()
            ->Unit(benchmark::kMillisecond);
    };
    for (const std::string& file : files) {
        add("service", askService, file);
        add("plain", readPlain, file);
        add("rich", readRich, file);
        add("pdftotext", readPeer, file);
    }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as long as pdftotext: plain text through the service, by the engine, rich text\n");
    for (const std::string& file : files) {
        const double peer = comparison.seconds("pdftotext" + file);
        if (peer > 0)
            std::printf("%-60s %8.2f %8.2f %8.2f\n", file.substr(file.rfind('/') + 1).c_str(),
                        comparison.seconds("service" + file) / peer,
                        comparison.seconds("plain" + file) / peer, comparison.seconds("rich" + file) / peer);
    }
    if (const long peer = residentOfPeer(files[1]); peer > 0)
        std::printf("times as much resident, the engine after 1000 pages of plain text: %.2f\n",
                    static_cast<double>(residentOfEngine(files[1])) / static_cast<double>(peer));
    bench::endService(client());
    return 0;
}
