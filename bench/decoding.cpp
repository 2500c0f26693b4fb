// Pages of markup as bytes beside ICU's converter, which is told the right encoding and does not look into the page, and
// gets memory that nobody has cleared, as ours does.

#include "Comparison.h"
#include "Samples.h"

#include "markup/MarkupDecoding.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <unicode/ucnv.h>

#include <memory>
#include <string>

namespace {

using namespace kelvo;

/// Where label, declaration and default (Latin 1) agree, or there is no declaration, a page is decoded once.
struct Row {
    const char* name;
    const char* sample;
    const char16_t* declared;
    const char16_t* label;
    CFStringEncoding encoding;
    const char* nameForICU;
};
constexpr Row rows[] = {
    {"UTF-8, labelled, English", "English", u"utf-8", u"UTF-8", kCFStringEncodingUTF8, "UTF-8"},
    {"UTF-8, labelled, German", "German", u"utf-8", u"UTF-8", kCFStringEncodingUTF8, "UTF-8"},
    {"UTF-8, labelled, Russian", "Russian", u"utf-8", u"UTF-8", kCFStringEncodingUTF8, "UTF-8"},
    {"UTF-8, labelled, Hindi", "Hindi", u"utf-8", u"UTF-8", kCFStringEncodingUTF8, "UTF-8"},
    {"Latin 1, undeclared, German", "German", nullptr, nullptr, kCFStringEncodingISOLatin1, "ISO-8859-1"},
    {"UTF-8, declared, English", "English", u"utf-8", nullptr, kCFStringEncodingUTF8, "UTF-8"},
    {"UTF-8, declared, Russian", "Russian", u"utf-8", nullptr, kCFStringEncodingUTF8, "UTF-8"},
    {"windows-1251, declared, Russian", "Russian", u"windows-1251", nullptr, kCFStringEncodingWindowsCyrillic,
     "windows-1251"},
    {"Shift_JIS, declared, Japanese", "Japanese", u"Shift_JIS", nullptr, kCFStringEncodingDOSJapanese,
     "windows-932"},
};
constexpr std::int64_t lengths[] = {4000, 200000, 4000000};

NSData pageOf(const Row& row, std::size_t length) {
    std::u16string text = u"<html><head><title>A page</title>"
                          u"<meta name=\"viewport\" content=\"width=device-width\">"
                          u"<link rel=stylesheet href=\"/styles/main.css\">";
    if (row.declared)
        text += std::u16string(u"<meta charset=\"") + row.declared + u"\">";
    text += u"</head><body>";
    const std::u16string words = textOfSample(bench::sampleNamed(row.sample), length);
    // A tag for about every eight words.
    for (std::size_t at = 0, part = 40; at < words.size(); at += part) {
        part = 20 + (at * 7919) % 50;
        text += u"<p>" + words.substr(at, part) + u"</p>\n";
    }
    std::string bytes;
    encodeLossily(*makeTextCodec(row.encoding), text, bytes, true);
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

void decode(benchmark::State& state, const Row& row) {
    const NSData page = pageOf(row, static_cast<std::size_t>(state.range(0)));
    const NSString label(row.label);
    for (auto _ : state)
        benchmark::DoNotOptimize(XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
            page, label, NSISOLatin1StringEncoding, {}));
    state.SetBytesProcessed(static_cast<std::int64_t>(page.length()) * state.iterations());
}

void convert(benchmark::State& state, const Row& row) {
    const NSData page = pageOf(row, static_cast<std::size_t>(state.range(0)));
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(row.nameForICU, &status);
    for (auto _ : state) {
        const auto units = std::make_unique_for_overwrite<char16_t[]>(page.length());
        ucnv_toUChars(converter, units.get(), static_cast<std::int32_t>(page.length()),
                      page.characters().data(), static_cast<std::int32_t>(page.length()), &status);
        benchmark::DoNotOptimize(units.get());
    }
    if (U_FAILURE(status))
        state.SkipWithError(u_errorName(status));
    ucnv_close(converter);
    state.SetBytesProcessed(static_cast<std::int64_t>(page.length()) * state.iterations());
}

} // namespace

int main(int count, char** arguments) {
    bench::initialize(count, arguments);
    for (const Row& row : rows)
        for (const std::int64_t length : lengths) {
            benchmark::RegisterBenchmark((std::string("decode:") + row.name).c_str(), decode, row)
                ->Arg(length);
            benchmark::RegisterBenchmark((std::string("ICU:") + row.name).c_str(), convert, row)->Arg(length);
        }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as fast as ICU's converter\n");
    for (const Row& row : rows)
        for (const std::int64_t length : lengths) {
            const std::string suffix = row.name + ("/" + std::to_string(length));
            comparison.printSpeedRatio(
                (std::string(row.name) + ", " + std::to_string(length) + " units").c_str(),
                "decode:" + suffix, "ICU:" + suffix);
        }
}
