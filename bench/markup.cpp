#include "Comparison.h"
#include "markup/Entities.h"
#include "markup/Html2Text.h"
#include "markup/MarkupDecoding.h"
#include "markup/TagScanner.h"

#include <benchmark/benchmark.h>
#include <gumbo.h>
#include <libxml/HTMLparser.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// bench_markup [folder of HTML pages]
//
// Speeds are in bytes of the pages' files, also for what works on their characters.

namespace {

using namespace kelvo;

struct Page {
    std::string path;
    std::string bytes;
    NSData data;
    NSString text;
};

std::vector<Page> pages;

std::vector<Page> pagesInFolder(const std::filesystem::path& folder) {
    std::vector<Page> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".html")
            continue;
        std::ifstream file(entry.path(), std::ios::binary);
        std::string bytes{std::istreambuf_iterator<char>(file), {}};
        const NSString text = NSString::stringByRepairingUTF8String(bytes);
        const NSData data = NSData::dataWithBytes(bytes);
        found.push_back({entry.path().string(), std::move(bytes), data, text});
    }
    return found;
}

template <typename Work>
void forEachPage(benchmark::State& state, Work work) {
    std::size_t size = 0;
    for (const Page& page : pages)
        size += page.bytes.size();
    for (auto _ : state) {
        for (const Page& page : pages)
            work(page);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * size));
}

// As a web archive has them: with the label of the response, or without and so in Latin 1 first.
void decodePages(benchmark::State& state, const NSString& label) {
    forEachPage(state, [&](const Page& page) {
        benchmark::DoNotOptimize(XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
            page.data, label, NSISOLatin1StringEncoding, {}));
    });
}
void decodeLabelled(benchmark::State& state) {
    decodePages(state, u"utf-8");
}
BENCHMARK(decodeLabelled);
void decodeUnlabelled(benchmark::State& state) {
    decodePages(state, nullptr);
}
BENCHMARK(decodeUnlabelled);

void convertToText(benchmark::State& state) {
    forEachPage(state, [](const Page& page) {
        benchmark::DoNotOptimize(stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(
            page.text, false, true, true, false));
    });
}
BENCHMARK(convertToText);

void convertBytes(benchmark::State& state, const NSString& label) {
    forEachPage(state, [&](const Page& page) {
        const NSString text = XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
            page.data, label, NSISOLatin1StringEncoding, {});
        benchmark::DoNotOptimize(stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(
            text, false, true, true, false));
    });
}
void wholeBytesToTextLabelled(benchmark::State& state) {
    convertBytes(state, u"utf-8");
}
BENCHMARK(wholeBytesToTextLabelled);
void wholeBytesToTextUnlabelled(benchmark::State& state) {
    convertBytes(state, nullptr);
}
BENCHMARK(wholeBytesToTextUnlabelled);

bool sumUp(const NSString&, char16_t*, std::size_t nameLocation, std::size_t nameLength,
           std::size_t tagLocation, std::size_t tagLength, std::size_t textLocation, TagKind, void* context) {
    *static_cast<std::size_t*>(context) += nameLocation ^ nameLength ^ tagLocation ^ tagLength ^ textLocation;
    return false;
}

void scanTags(benchmark::State& state) {
    forEachPage(state, [](const Page& page) {
        std::size_t sum = 0;
        GetTagsOfString(page.text, sumUp, &sum, false);
        benchmark::DoNotOptimize(sum);
    });
}
BENCHMARK(scanTags);

void scanTagsOfCopy(benchmark::State& state) {
    forEachPage(state, [](const Page& page) {
        std::size_t sum = 0;
        GetTagsOfString(page.text, sumUp, &sum, true);
        benchmark::DoNotOptimize(sum);
    });
}
BENCHMARK(scanTagsOfCopy);

void convertEntitiesToBuffer(benchmark::State& state) {
    std::size_t longest = 0;
    for (const Page& page : pages)
        longest = std::max(longest, page.text.length());
    std::vector<char16_t> buffer(longest);
    forEachPage(state, [&](const Page& page) {
        benchmark::DoNotOptimize(convertEntities2Characters(page.text.characters().data(), buffer.data(), 0,
                                                            page.text.length(), true, false, false));
    });
}
BENCHMARK(convertEntitiesToBuffer);

void convertEntities(benchmark::State& state) {
    forEachPage(state, [](const Page& page) {
        benchmark::DoNotOptimize(stringByConvertingEntitiesToCharacters(page.text));
    });
}
BENCHMARK(convertEntities);

void countCharacters(void* context, const xmlChar*, int length) {
    *static_cast<std::size_t*>(context) += static_cast<std::size_t>(length);
}

void libxml2SAX(benchmark::State& state) {
    forEachPage(state, [](const Page& page) {
        std::size_t sum = 0;
        htmlSAXHandler handler{};
        handler.characters = countCharacters;
        htmlParserCtxtPtr parser =
            htmlCreateMemoryParserCtxt(page.bytes.data(), static_cast<int>(page.bytes.size()));
        htmlSAXHandlerPtr own = parser->sax;
        parser->sax = &handler;
        parser->userData = &sum;
        htmlParseDocument(parser);
        benchmark::DoNotOptimize(sum);
        parser->sax = own;
        xmlFreeDoc(parser->myDoc);
        htmlFreeParserCtxt(parser);
    });
}
BENCHMARK(libxml2SAX);

std::size_t lengthOfText(const GumboNode* root) {
    std::size_t sum = 0;
    std::vector<const GumboNode*> waiting{root};
    while (!waiting.empty()) {
        const GumboNode* node = waiting.back();
        waiting.pop_back();
        if (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_WHITESPACE) {
            sum += std::string_view(node->v.text.text).size();
        } else if (node->type == GUMBO_NODE_ELEMENT && node->v.element.tag != GUMBO_TAG_SCRIPT &&
                   node->v.element.tag != GUMBO_TAG_STYLE) {
            for (unsigned index = node->v.element.children.length; index > 0; --index)
                waiting.push_back(static_cast<const GumboNode*>(node->v.element.children.data[index - 1]));
        }
    }
    return sum;
}

void gumboTextWalk(benchmark::State& state) {
    forEachPage(state, [](const Page& page) {
        GumboOutput* output =
            gumbo_parse_with_options(&kGumboDefaultOptions, page.bytes.data(), page.bytes.size());
        benchmark::DoNotOptimize(lengthOfText(output->root));
        gumbo_destroy_output(&kGumboDefaultOptions, output);
    });
}
BENCHMARK(gumboTextWalk);

bool isInstalled(const std::string& command) {
    return std::system(("command -v " + command + " >/dev/null 2>&1").c_str()) == 0;
}

/// A command that people use for the same, once per page, its start included.
void dumpByCommand(benchmark::State& state, const std::string& command) {
    forEachPage(state, [&](const Page& page) {
        if (std::system((command + " '" + page.path + "' >/dev/null 2>&1").c_str()) != 0)
            state.SkipWithError("the command failed");
    });
}

} // namespace

int main(int argc, char** argv) {
    bench::initialize(argc, argv);
    if (isInstalled("lynx"))
        benchmark::RegisterBenchmark("lynxDump", dumpByCommand, "lynx -dump -force_html")->UseRealTime();
    if (isInstalled("w3m"))
        benchmark::RegisterBenchmark("w3mDump", dumpByCommand, "w3m -dump -T text/html")->UseRealTime();
    const char* folder = argc > 1 ? argv[1] : "examples";
    std::error_code failure;
    if (std::filesystem::is_directory(folder, failure))
        pages = pagesInFolder(folder);
    if (pages.empty()) {
        std::fprintf(stderr, "no HTML pages in %s\n", folder);
        return 1;
    }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as fast as the peer\n");
    comparison.printSpeedRatio("decoding with a label: libxml2's SAX parser", "decodeLabelled", "libxml2SAX");
    comparison.printSpeedRatio("decoding without a label: libxml2's SAX parser", "decodeUnlabelled",
                               "libxml2SAX");
    comparison.printSpeedRatio("converting to text: libxml2's SAX parser", "convertToText", "libxml2SAX");
    comparison.printSpeedRatio("whole bytes-to-text with a label: libxml2's SAX parser",
                               "wholeBytesToTextLabelled", "libxml2SAX");
    comparison.printSpeedRatio("whole bytes-to-text without a label: libxml2's SAX parser",
                               "wholeBytesToTextUnlabelled", "libxml2SAX");
    comparison.printSpeedRatio("whole bytes-to-text with a label: Gumbo and a walk over its tree",
                               "wholeBytesToTextLabelled", "gumboTextWalk");
    comparison.printSpeedRatio("scanning tags: libxml2's SAX parser", "scanTags", "libxml2SAX");
    comparison.printSpeedRatio("scanning tags: Gumbo and a walk over its tree", "scanTags", "gumboTextWalk");
    comparison.printSpeedRatio("scanning a copy: libxml2's SAX parser", "scanTagsOfCopy", "libxml2SAX");
    comparison.printSpeedRatio("converting entities to a buffer: libxml2's SAX parser",
                               "convertEntitiesToBuffer", "libxml2SAX");
    comparison.printSpeedRatio("converting entities: libxml2's SAX parser", "convertEntities", "libxml2SAX");
    comparison.printSpeedRatio("whole bytes-to-text with a label: lynx -dump", "wholeBytesToTextLabelled",
                               "lynxDump");
    comparison.printSpeedRatio("whole bytes-to-text with a label: w3m -dump", "wholeBytesToTextLabelled",
                               "w3mDump");
    return 0;
}
