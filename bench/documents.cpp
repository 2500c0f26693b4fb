// From the file of a document to its rich text, with an engine that runs already. The peer is soffice, which
// makes RTF of the same file and is started for it; beside it, what one start costs that converts ten files.

#include "Comparison.h"
#include "platform/appkit/documents/DocumentReading.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace kelvo;

constexpr int filesOfOneStart = 10;

const tests::TemporaryFolder& folder() {
    static const tests::TemporaryFolder made;
    return made;
}

std::string paragraphs(int count) {
    std::string body;
    for (int index = 0; index < count; ++index)
        body += "<text:p>Plain words make up the most of it, line by line, and number " +
                std::to_string(index) + " is as long as the others.</text:p>";
    return body;
}

void readDocument(benchmark::State& state, const std::string& name) {
    const NSString path = NSString::stringWithUTF8String(folder().path(name));
    NSDictionary attributes;
    for (auto _ : state) {
        if (NSAttributedStringKitAdditions::initWithPath_documentAttributes(path, &attributes).isNil())
            state.SkipWithError("not read");
    }
}

void runOffice(benchmark::State& state, const std::string& files) {
    const std::string command = "soffice -env:UserInstallation=file://" + folder().path("profile") +
                                " --headless --convert-to rtf --outdir '" + folder().path("out") + "' " +
                                files + " >/dev/null 2>&1";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0)
            state.SkipWithError("the command failed");
    }
}

std::string quoted(const std::string& name) {
    return "'" + folder().path(name) + "'";
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const struct {
        const char* name;
        const char* label;
        std::string contents;
    } documents[] = {
        {"first.fodt", "the first document, the start of the engine included",
         tests::flatOpenDocument(paragraphs(1))},
        {"picture.docx", "a line and a picture, docx", tests::officeOpenXML("A line of words", "A title")},
        {"page.odt", "a page, odt", tests::openDocument(paragraphs(30))},
        {"book.odt", "100 pages, odt", tests::openDocument(paragraphs(3000))},
        {"letter.xml", "a line, WordML", tests::wordML("A line of words")},
        {"notes.txt", "1 MB of plain text", std::string(1'000'000, 'a')},
    };
    for (const auto& document : documents) {
        folder().write(document.name, document.contents);
        auto* const ours = benchmark::RegisterBenchmark((std::string("read/") + document.name).c_str(),
                                                        readDocument, document.name);
        ours->UseRealTime()->Unit(benchmark::kMillisecond);
        if (document.name == std::string("first.fodt"))
            ours->Iterations(1);
    }
    const bool hasOffice = std::system("command -v soffice >/dev/null 2>&1") == 0;
    std::string all;
    for (int copy = 0; copy < filesOfOneStart; ++copy) {
        const std::string name = "copy" + std::to_string(copy) + ".odt";
        folder().write(name, documents[2].contents);
        all += quoted(name) + " ";
    }
    if (hasOffice) {
        const auto addOffice = [](const std::string& name, const std::string& files) {
            benchmark::RegisterBenchmark(("office/" + name).c_str(), runOffice, files)
                ->UseRealTime()
                ->Iterations(2)
                ->Unit(benchmark::kMillisecond);
        };
        // The first run makes its profile.
        benchmark::RegisterBenchmark("officeMakesItsProfile", runOffice, quoted("first.fodt"))->Iterations(1);
        for (const auto& document : documents)
            addOffice(document.name, quoted(document.name));
        addOffice("ten", all);
    }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    const auto seconds = [&](const std::string& name) {
        for (const char* end : {"/real_time", "/iterations:1/real_time", "/iterations:2/real_time"}) {
            if (const double found = comparison.seconds(name + end); found > 0)
                return found;
        }
        return comparison.seconds(name);
    };
    std::printf("\ntimes as fast as soffice\n");
    const auto print = [](const char* label, double peer, double ours) {
        if (peer > 0 && ours > 0)
            std::printf("%-60s %8.2f\n", label, peer / ours);
    };
    for (const auto& document : documents)
        print(document.label, seconds(std::string("office/") + document.name),
              seconds(std::string("read/") + document.name));
    print("a page, odt, when soffice converts ten at one start", seconds("office/ten") / filesOfOneStart,
          seconds("read/page.odt"));
    return 0;
}
