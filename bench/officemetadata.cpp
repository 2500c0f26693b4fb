// The metadata of office documents with their text: small ones through the running service, beside soffice, which is
// started for each, and large ones by the importer alone, by the length of their XML.

#include "BuiltService.h"
#include "Comparison.h"
#include "importers/office/OfficeImport.h"
#include "support/Importing.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <plumwick/Client.h>

#include <benchmark/benchmark.h>
#include <gsf/gsf.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
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

void throughService(benchmark::State& state, const std::vector<std::string>& files) {
    Client client(optionsOfBuiltService());
    for (auto _ : state) {
        for (const std::string& file : files)
            benchmark::DoNotOptimize(client.metaDataForFile(pathOf(file)));
    }
    endService(client);
}

struct Office {
    std::string name;
    std::string type;
    std::string mainPart;
    std::string XML;
    std::string file;
};

/// Compressed, as office suites write it.
std::string zipWith(const std::string& part, const std::string& contents) {
    gsf_init();
    GsfOutput* const memory = gsf_output_memory_new();
    GsfOutfile* const zip = gsf_outfile_zip_new(memory, nullptr);
    std::vector<GsfOutput*> open{GSF_OUTPUT(zip)};
    for (std::size_t start = 0; start < part.size();) {
        const std::size_t end = std::min(part.find('/', start), part.size());
        open.push_back(gsf_outfile_new_child(GSF_OUTFILE(open.back()),
                                             part.substr(start, end - start).c_str(), end < part.size()));
        start = end + 1;
    }
    gsf_output_write(open.back(), contents.size(), reinterpret_cast<const guint8*>(contents.data()));
    for (auto each = open.rbegin(); each != open.rend(); ++each) {
        gsf_output_close(*each);
        g_object_unref(*each);
    }
    const std::string bytes(
        reinterpret_cast<const char*>(gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory))),
        static_cast<std::size_t>(gsf_output_size(memory)));
    g_object_unref(memory);
    return bytes;
}

std::string repeated(const std::string& piece, std::size_t length) {
    std::string all;
    while (all.size() < length)
        all += piece;
    return all;
}

constexpr const char* words =
    "Plain words make up the most of it, line by line, and some are f\xC3\xBCr andere. ";

/// As word processors write it: formats on each run, and marks of who wrote it when.
Office wordDocument(std::size_t length) {
    const std::string run =
        "<w:r w:rsidRPr=\"00B41F3C\"><w:rPr><w:rFonts w:ascii=\"Calibri\" w:hAnsi=\"Calibri\"/>"
        "<w:sz w:val=\"22\"/></w:rPr><w:t xml:space=\"preserve\">" +
        std::string(words) + "</w:t></w:r>";
    const std::string XML =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><w:document xmlns:w=\"http://"
        "schemas.openxmlformats.org/wordprocessingml/2006/main\"><w:body>" +
        repeated("<w:p w:rsidR=\"00A77B3E\" w:rsidRDefault=\"00A77B3E\"><w:pPr><w:pStyle w:val=\"BodyText\"/>"
                 "<w:spacing w:after=\"120\"/></w:pPr>" +
                     run + run + run + "</w:p>",
                 length) +
        "</w:body></w:document>";
    return {"docx", "org.openxmlformats.wordprocessingml.document", "word/document.xml", XML, {}};
}

Office openDocument(std::size_t length) {
    const std::string XML =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><office:document-content "
        "xmlns:office=\"urn:oasis:names:tc:"
        "opendocument:xmlns:office:1.0\" xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\" "
        "office:version=\"1.2\"><office:body><office:text>" +
        repeated("<text:p text:style-name=\"Text_20_body\"><text:span text:style-name=\"T1\">" +
                     std::string(words) + "</text:span>" + words + "</text:p>",
                 length) +
        "</office:text></office:body></office:document-content>";
    return {"odt", "org.oasis-open.opendocument.text", "content.xml", XML, {}};
}

void officeImporterAlone(benchmark::State& state, const Office& office) {
    const NSData data = NSData::dataWithBytes(zipWith(office.mainPart, office.XML));
    for (auto _ : state)
        benchmark::DoNotOptimize(attributesByImporter(importers::importOffice, data, office.type));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * office.XML.size()));
}

void runSoffice(benchmark::State& state, const Office& office) {
    const std::string folder = office.file.substr(0, office.file.rfind('/'));
    const std::string command = "soffice --headless -env:UserInstallation=file://" + folder +
                                "/profile --convert-to txt --outdir " + folder + " " + office.file +
                                " >/dev/null 2>&1";
    for (auto _ : state) {
        if (std::system(command.c_str()) != 0)
            return state.SkipWithError("no soffice");
    }
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const tests::TemporaryFolder folder;
    setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
    const auto add = [](const std::string& name, auto function, auto argument) {
        return benchmark::RegisterBenchmark(name.c_str(), function, argument)
            ->Repetitions(9)
            ->ReportAggregatesOnly()
            ->Unit(benchmark::kMicrosecond);
    };
    constexpr std::size_t large = 20'000'000;
    for (const Office& office : {wordDocument(large), openDocument(large)})
        add("importer/" + office.name, officeImporterAlone, office)->UseRealTime();
    std::vector<Office> small{{"docx", {}, {}, {}, {}}, {"odt", {}, {}, {}, {}}};
    for (Office& office : small) {
        // As the office suite needs it: one with its list of parts.
        office.file = folder.write(
            "small." + office.name,
            office.name == "docx" ? tests::officeOpenXML(repeated(words, 10'000), "T")
                                  : tests::openDocument("<text:p>" + repeated(words, 10'000) + "</text:p>"));
        add("service/" + office.name, throughService, std::vector{office.file})->UseRealTime();
        add("soffice/" + office.name, runSoffice, office)->UseRealTime()->Iterations(1);
    }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    const auto seconds = [&](const std::string& name) {
        for (const char* end : {"/real_time", "/iterations:1/real_time", "/iterations:1/manual_time"}) {
            if (const double found = comparison.seconds(name + end); found > 0)
                return found;
        }
        return comparison.seconds(name);
    };
    for (const Office& office : small)
        std::printf("%s, soffice times as long %26.0f\n", office.name.c_str(),
                    seconds("soffice/" + office.name) / seconds("service/" + office.name));
    for (const char* name : {"docx", "odt"})
        std::printf("%s of 20 MB of XML, its importer %16.0f MB/s\n", name,
                    large / 1e6 / seconds(std::string("importer/") + name));
    return 0;
}
