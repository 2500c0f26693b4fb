// Thumbnails of the first page of PDFs, and EPS as PDF, by a service that runs already. The peers, pdftoppm and gs, are
// started for each file. PDFs (".pdf") and EPS may be given as arguments.

#include "BuiltService.h"
#include "Comparison.h"
#include "platform/foundation/Value.h"
#include "support/PDFDocuments.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace kelvo;

const tests::TemporaryFolder& folder() {
    static const tests::TemporaryFolder made;
    return made;
}

NSString nameOf(const std::string& path) {
    return NSString::stringWithUTF8String(path);
}

/// Never destroyed, because the run loop that it stands on goes first.
Client& client() {
    static Client* const client = new Client(bench::optionsOfBuiltService());
    return *client;
}

void drawFirstPage(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        const NSDictionary answer =
            client().imageWithContentsOfFile_stringFromPDF_canUseSpotlight(nameOf(path), false, true);
        if (answer.objectForKey(ResultThumbnailKey).isNil())
            state.SkipWithError("not drawn");
    }
}

void makePDF(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        if (client().PDFImageRepOfFile(nameOf(path)).isNil())
            state.SkipWithError("not interpreted");
    }
}

/// When there are no requests the next engine is started, and gets ready.
void makePDFAfterRest(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        state.PauseTiming();
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        state.ResumeTiming();
        if (client().PDFImageRepOfFile(nameOf(path)).isNil())
            state.SkipWithError("not interpreted");
    }
}

void runPeer(benchmark::State& state, const std::string& command) {
    for (auto _ : state) {
        if (std::system((command + " >/dev/null 2>&1").c_str()) != 0)
            state.SkipWithError("the command failed");
    }
}

std::string madeFile(const std::string& name, const std::string& bytes) {
    const std::string path = folder().path(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

std::string pageOfText() {
    std::string page;
    for (int line = 0; line < 50; ++line)
        page += tests::pdfText("Fifty lines of text, as many as a page of a letter has in it.", "F 11",
                               720 - 13 * line);
    return tests::pdfDocument(std::vector<std::string>(20, page));
}

/// Curves and words.
std::string drawing() {
    std::string file = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 400 400\n%%EndComments\n"
                       "/Helvetica findfont 9 scalefont setfont\n";
    for (int index = 0; index < 2000; ++index) {
        const int x = index * 7 % 400;
        const int y = index * 13 % 400;
        char text[128];
        std::snprintf(text, sizeof text, "%d %d moveto %d %d %d %d %d %d curveto stroke\n", x, y, y, x,
                      400 - x, y, 400 - y, x);
        file += text;
        if (index % 20 == 0)
            file += std::to_string(x) + " " + std::to_string(y) + " moveto (a word) show\n";
    }
    return file + "showpage\n";
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<std::string> files{madeFile("text.pdf", pageOfText()), madeFile("drawing.eps", drawing())};
    files.insert(files.end(), argv + 1, argv + argc);
    const auto add = [](const std::string& name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name.c_str(), function, arguments...)
            ->UseRealTime()
            ->MinTime(2)
            ->Unit(benchmark::kMillisecond);
    };
    for (const std::string& path : files) {
        if (!path.ends_with(".pdf")) {
            add("ready/" + path, makePDFAfterRest, path);
            add("in turn/" + path, makePDF, path);
            add("peer/" + path, runPeer,
                "gs -q -dSAFER -dBATCH -dNOPAUSE -dEPSCrop -dLastPage=1 -sDEVICE=pdfwrite -o '" +
                    folder().path("peer.pdf") + "' '" + path + "'");
        } else {
            add("thumbnail/" + path, drawFirstPage, path);
            add("peer/" + path, runPeer, "pdftoppm -scale-to 256 -f 1 -l 1 '" + path + "'");
        }
    }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as long as pdftoppm or gs, started for each file\n");
    for (const std::string& path : files) {
        for (const char* const kind : {"thumbnail", "ready", "in turn"})
            comparison.printTimeRatio((kind + (": " + path.substr(path.rfind('/') + 1))).c_str(),
                                      kind + ("/" + path), "peer/" + path);
    }
    bench::endService(client());
    return 0;
}
