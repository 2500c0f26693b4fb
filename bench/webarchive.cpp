// From the file of a saved page to its text, its source and its address, for pages of many files: against
// reading the same property list with libplist, which is the least that any reader has to do.

#include "Comparison.h"
#include "markup/WebArchiveSearchableText.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <plist/plist.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::size_t archiveSize = 200'000'000;
constexpr std::size_t resourceCount = 500;

std::string folder;

std::string fileOf(const char* form) {
    return folder + "/page." + form;
}

/// Words, entities, accents and markup, in about the mixture of news pages.
std::string page(std::size_t size, std::minstd_rand& random) {
    static const std::vector<std::string> pieces{
        "the ",
        "ferry ",
        "leaves ",
        "at ten past ",
        "every hour ",
        "&amp; ",
        "m\xC3\xB4le ",
        "</p>\n<p>",
        "<b>again</b> ",
        "&eacute;t&#233; ",
        "<br>\n",
        "<a href=\"http://harbour.example/ferry/timetable.html\" class=\"link\">timetable</a> ",
        "<div class=\"column\"><span>stone steps</span></div>\n",
        "bicycles, ",
        "harbour. "};
    std::string html = "<!DOCTYPE html><html><head><meta charset=utf-8><title>Ferry</title></head><body><p>";
    while (html.size() < size)
        html += pieces[random() % pieces.size()];
    return html + "</body></html>";
}

Value resource(std::string contents, const char16_t* type, std::size_t number) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSData::dataWithBytesNoCopy(std::move(contents)), u"WebResourceData"},
         {type, u"WebResourceMIMEType"},
         {NSString::stringWithUTF8String("http://harbour.example/" + std::to_string(number)),
          u"WebResourceURL"},
         {u"UTF-8", u"WebResourceTextEncodingName"}});
}

std::string noise(std::size_t size, std::minstd_rand& random) {
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

/// A page of 2 MB with twenty frames of 100 kB, and images: 200 MB in all.
void writeArchives() {
    std::minstd_rand random(1);
    std::vector<Value> resources, frames;
    constexpr std::size_t documentSize = 2'000'000, frameSize = 100'000, frameCount = 20;
    const std::size_t imageSize = (archiveSize - documentSize - frameSize * frameCount) / resourceCount;
    for (std::size_t number = 0; number < resourceCount; ++number)
        resources.push_back(resource(noise(imageSize, random), u"image/jpeg", number));
    for (std::size_t number = 0; number < frameCount; ++number)
        frames.push_back(NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{resource(page(frameSize, random), u"text/html", 1000 + number), u"WebMainResource"}}));
    const Value archive = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{resource(page(documentSize, random), u"text/html", 2000), u"WebMainResource"},
         {NSArray::arrayWithValues(resources), u"WebSubresources"},
         {NSArray::arrayWithValues(frames), u"WebSubframeArchives"}});
    const auto write = [&archive](const char* form, NSPropertyListFormat format) {
        NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(archive, format, nullptr)
            .writeToFile_atomically(NSString::stringWithUTF8String(fileOf(form)), false);
    };
    write("binary", NSPropertyListBinaryFormat_v1_0);
    write("xml", NSPropertyListXMLFormat_v1_0);
}

/// The same page as MIME HTML, its images in base64 and its documents quoted-printable.
void writeMIMEHTML() {
    std::minstd_rand random(1);
    std::ofstream file(fileOf("mhtml"), std::ios::binary);
    file << "MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=\"----b\"\r\n\r\n";
    const auto writePart = [&file](const char* header, std::size_t number, const std::string& line,
                                   std::size_t lineCount) {
        file << "------b\r\n"
             << header << "\r\nContent-Location: http://harbour.example/" << number << "\r\n\r\n";
        for (std::size_t count = 0; count < lineCount; ++count)
            file << line;
    };
    const char* const html =
        "Content-Type: text/html; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable";
    const std::string words =
        "<p class=3D\"x\">the ferry leaves from the m=C3=B4le at ten past every hour, =\r\n";
    writePart(html, 2000, words, 2'000'000 / words.size());
    for (std::size_t number = 0; number < 20; ++number)
        writePart(html, 1000 + number, words, 100'000 / words.size());
    std::string line(76, '\0');
    for (char& letter : line)
        letter = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"[random() % 64];
    line += "\r\n";
    for (std::size_t number = 0; number < resourceCount; ++number)
        writePart("Content-Type: image/jpeg\r\nContent-Transfer-Encoding: base64", number, line,
                  (archiveSize - 4'000'000) / resourceCount / line.size());
    file << "------b--\r\n";
}

/// The whole of the service's operation but for the way there and back.
void searchableText(benchmark::State& state, const char* form) {
    const std::string file = fileOf(form);
    const NSString path = NSString::stringWithUTF8String(file);
    std::size_t length = 0;
    for (auto _ : state) {
        NSURL url;
        NSString source;
        const NSString text = SearchableText::searchableTextOfFile_baseURL_source(path, &url, &source);
        length = text.length();
        benchmark::DoNotOptimize(source);
    }
    if (length == 0)
        state.SkipWithError("no text");
    state.counters["text MB"] = static_cast<double>(length) / 1e6;
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * std::filesystem::file_size(file)));
}

void withLibplist(benchmark::State& state, const char* form) {
    const std::string file = fileOf(form);
    for (auto _ : state) {
        std::string bytes(std::filesystem::file_size(file), '\0');
        std::ifstream(file, std::ios::binary).read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        plist_t root = nullptr;
        plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
        if (!root)
            return state.SkipWithError("not read");
        plist_free(root);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * std::filesystem::file_size(file)));
}

BENCHMARK_CAPTURE(searchableText, binary, "binary")->Repetitions(5)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(withLibplist, binary, "binary")->Repetitions(5)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(searchableText, xml, "xml")->Repetitions(5)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(withLibplist, xml, "xml")->Repetitions(5)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(searchableText, mhtml, "mhtml")->Repetitions(5)->Unit(benchmark::kMillisecond);

/// In a process of its own, because memory that was once there counts for ever.
void printPeakMemory(const char* form) {
    const pid_t child = fork();
    if (child == 0) {
        rusage before{}, after{};
        getrusage(RUSAGE_SELF, &before);
        NSURL url;
        NSString source;
        const NSString text = SearchableText::searchableTextOfFile_baseURL_source(
            NSString::stringWithUTF8String(fileOf(form)), &url, &source);
        getrusage(RUSAGE_SELF, &after);
        const double file = static_cast<double>(std::filesystem::file_size(fileOf(form)));
        const double used = static_cast<double>(after.ru_maxrss - before.ru_maxrss) * 1024;
        std::printf("%-7s file %6.1f MB, text %5.1f MB, peak memory %6.1f MB: %.2f times the file\n", form,
                    file / 1e6, static_cast<double>(text.length()) * 2e-6, used / 1e6, used / file);
        std::fflush(stdout);
        _exit(0);
    }
    waitpid(child, nullptr, 0);
}

} // namespace

int main(int count, char** arguments) {
    folder = (std::filesystem::temp_directory_path() / "kelvo-bench-XXXXXX").string();
    if (!mkdtemp(folder.data()))
        return EXIT_FAILURE;
    // The child's peak would begin with what the parent had needed to make the files.
    const pid_t writer = fork();
    if (writer == 0) {
        writeArchives();
        writeMIMEHTML();
        _exit(0);
    }
    waitpid(writer, nullptr, 0);
    for (const char* form : {"binary", "xml", "mhtml"})
        printPeakMemory(form);
    benchmark::Initialize(&count, arguments);
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\n");
    comparison.printTimeRatio("binary to text, time against libplist reading alone", "searchableText/binary",
                              "withLibplist/binary");
    comparison.printTimeRatio("XML to text, time against libplist reading alone", "searchableText/xml",
                              "withLibplist/xml");
    std::filesystem::remove_all(folder);
}
