#include "Comparison.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <string>

// Rich text of 1, 5 and 50 MB, with a run for each 500 bytes, in the styles of a long document: headings,
// paragraphs with emphasis, links and colours, lists, tables, and some text that is not Latin. Speeds are in
// bytes of RTF. A peer is a command that does the same to the file, its start included.

namespace {

using namespace kelvo;
using Style = std::shared_ptr<const NSParagraphStyle>;

constexpr std::size_t unitsPerRun = 490;

class Document {
public:
    explicit Document(std::size_t megabytes) {
        for (std::size_t section = 0; units_ < megabytes * 1'000'000; ++section) {
            appendHeading();
            for (int paragraph = 0; paragraph < 12; ++paragraph)
                appendParagraph();
            appendList();
            if (section % 4 == 0)
                appendTable();
        }
    }
    NSAttributedString text() { return std::move(text_).copy(); }

private:
    template <typename Change>
    void add(std::u16string_view sample, const Style& style, Change change) {
        NSTextAttributes attributes;
        attributes.paragraphStyle = style;
        change(attributes);
        std::u16string units;
        while (units.size() < unitsPerRun)
            units += sample;
        units_ += units.size();
        text_.append(units, std::make_shared<const NSTextAttributes>(attributes));
    }
    void end(const Style& style) {
        NSTextAttributes attributes;
        attributes.paragraphStyle = style;
        text_.append(u"\n", std::make_shared<const NSTextAttributes>(attributes));
    }

    void appendHeading() {
        NSParagraphStyle style;
        style.headerLevel = 1;
        style.alignment = NSTextAlignment::center;
        const auto shared = std::make_shared<const NSParagraphStyle>(style);
        add(u"A heading of its section ", shared, [](NSTextAttributes& run) {
            run.font.pointSize = 18;
            run.font.isBold = true;
        });
        end(shared);
    }

    void appendParagraph() {
        NSParagraphStyle style;
        style.firstLineHeadIndent = 18;
        style.paragraphSpacing = 6;
        const auto shared = std::make_shared<const NSParagraphStyle>(style);
        add(u"Plain words make up the most of it, line by line. ", shared, [](NSTextAttributes&) {});
        add(u"Some are emphasised, ", shared, [](NSTextAttributes& run) { run.font.isItalic = true; });
        add(u"d\u00E9j\u00E0 vu \u2014 \u201Cquoted\u201D and coloured; ", shared, [](NSTextAttributes& run) {
            run.foregroundColor = NSColor{0.2F, 0.4F, 0.6F, 1};
            run.underlineStyle = NSUnderlineStyleSingle;
        });
        if (++paragraphs_ % 8 == 0)
            add(u"\u65E5\u672C\u8A9E\u306E\u6587\u7AE0 ", shared, [](NSTextAttributes&) {});
        if (paragraphs_ % 5 == 0)
            add(u"a link to elsewhere ", shared,
                [](NSTextAttributes& run) { run.link = u"http://harbour.example/ferry?at=10"; });
        end(shared);
    }

    void appendList() {
        NSParagraphStyle style;
        style.textLists = {std::make_shared<const NSTextList>()};
        style.headIndent = 36;
        const auto shared = std::make_shared<const NSParagraphStyle>(style);
        for (int item = 0; item < 3; ++item) {
            NSTextAttributes marker;
            marker.paragraphStyle = shared;
            text_.append(u"\t\u2022\t", std::make_shared<const NSTextAttributes>(marker));
            add(u"one item among others, ", shared, [](NSTextAttributes&) {});
            end(shared);
        }
    }

    void appendTable() {
        auto table = std::make_shared<NSTextTable>();
        table->numberOfColumns = 3;
        for (int cell = 0; cell < 9; ++cell) {
            auto block = std::make_shared<NSTextTableBlock>();
            block->table = table;
            block->startingRow = cell / 3;
            block->startingColumn = cell % 3;
            block->borders.fill({1, NSColor{0, 0, 0, 1}});
            NSParagraphStyle style;
            style.textBlocks = {block};
            const auto shared = std::make_shared<const NSParagraphStyle>(style);
            add(u"words of a cell ", shared, [](NSTextAttributes&) {});
            end(shared);
        }
    }

    NSMutableAttributedString text_;
    std::size_t units_ = 0;
    std::size_t paragraphs_ = 0;
};

struct Sample {
    NSAttributedString text;
    NSData rtf;
    std::string path;
};

std::map<std::size_t, Sample> samples;

const Sample& sampleOf(std::size_t megabytes) {
    const auto [found, isNew] = samples.try_emplace(megabytes);
    Sample& sample = found->second;
    if (isNew) {
        sample.text = Document(megabytes).text();
        sample.rtf = RTFFromRange_documentAttributes(sample.text, {0, sample.text.length()}, nullptr);
        sample.path =
            (std::filesystem::temp_directory_path() / ("kelvo-bench-" + std::to_string(megabytes) + ".rtf"))
                .string();
        sample.rtf.writeToFile_atomically(NSString::stringWithUTF8String(sample.path), false);
        std::printf("%zu MB: %zu bytes of RTF, %zu runs\n", megabytes, sample.rtf.length(),
                    sample.text.runs().size());
    }
    return sample;
}

template <typename Work>
void measure(benchmark::State& state, Work work) {
    const Sample& sample = sampleOf(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state)
        work(sample);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sample.rtf.length()));
}

void writeRTF(benchmark::State& state) {
    measure(state, [](const Sample& sample) {
        benchmark::DoNotOptimize(
            RTFFromRange_documentAttributes(sample.text, {0, sample.text.length()}, nullptr));
    });
}
BENCHMARK(writeRTF)->Arg(1)->Arg(5)->Arg(50)->Unit(benchmark::kMillisecond);

void readRTF(benchmark::State& state) {
    measure(state, [](const Sample& sample) {
        benchmark::DoNotOptimize(
            NSAttributedStringKitAdditions::initWithRTF_documentAttributes(sample.rtf, nullptr));
    });
}
BENCHMARK(readRTF)->Arg(1)->Arg(5)->Arg(50)->Unit(benchmark::kMillisecond);

bool isInstalled(const std::string& command) {
    return std::system(("command -v " + command + " >/dev/null 2>&1").c_str()) == 0;
}

void runCommand(benchmark::State& state, const std::string& before, const std::string& after) {
    measure(state, [&](const Sample& sample) {
        if (std::system((before + " '" + sample.path + "' " + after + " >/dev/null 2>&1").c_str()) != 0)
            state.SkipWithError("the command failed");
    });
}

} // namespace

int main(int argc, char** argv) {
    kelvo::bench::initialize(argc, argv);
    const std::string folder = (std::filesystem::temp_directory_path() / "kelvo-bench-office").string();
    if (isInstalled("unrtf"))
        benchmark::RegisterBenchmark("unrtfToHTML", runCommand, "unrtf --html", "")
            ->Arg(5)
            ->UseRealTime()
            ->Iterations(1)
            ->Repetitions(1)
            ->Unit(benchmark::kMillisecond);
    if (isInstalled("soffice"))
        benchmark::RegisterBenchmark("officeToRTF", runCommand,
                                     "soffice -env:UserInstallation=file://" + folder +
                                         " --headless --convert-to rtf --outdir '" + folder + "'",
                                     "")
            ->Arg(1)
            ->UseRealTime()
            ->Iterations(1)
            ->Repetitions(1)
            ->Unit(benchmark::kMillisecond);
    kelvo::bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as fast as the peer\n");
    comparison.printSpeedRatio("reading 5 MB: unrtf, which makes HTML of it", "readRTF/5", "unrtfToHTML/5");
    const double both = comparison.seconds("readRTF/1") + comparison.seconds("writeRTF/1");
    if (both > 0 && comparison.seconds("officeToRTF/1") > 0)
        std::printf("%-60s %8.2f\n", "reading and writing 1 MB: LibreOffice",
                    comparison.seconds("officeToRTF/1") / both);
    std::printf("\ntime for 50 MB in times of that for 5 MB\n");
    comparison.printTimeRatio("writing", "writeRTF/50", "writeRTF/5");
    comparison.printTimeRatio("reading", "readRTF/50", "readRTF/5");
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    for (const auto& [megabytes, sample] : samples)
        std::filesystem::remove(sample.path, ignored);
    return 0;
}
