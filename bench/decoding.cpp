#include "markup/MarkupDecoding.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>

#include <chrono>
#include <string>

namespace {

using namespace kelvo;

constexpr std::u16string_view english = u"<p>hello <b>world</b>, this is text</p>\n";
constexpr std::u16string_view german = u"<p>Die Straße ist für <i>alle</i> da, und ähnlich schön.</p>\n";
constexpr std::u16string_view russian = u"<p>привет, <b>мир</b>, это русский текст</p>\n";
constexpr std::u16string_view japanese = u"<p>日本語の<b>文章</b>です。これはテストです。</p>\n";

NSData pageOf(std::u16string_view sample, const char16_t* declared, CFStringEncoding encoding,
              std::size_t lengthInUnits) {
    std::u16string text = u"<html><head><title>A page</title>"
                          u"<meta name=\"viewport\" content=\"width=device-width\">"
                          u"<link rel=stylesheet href=\"/styles/main.css\">";
    if (declared)
        text += std::u16string(u"<meta charset=\"") + declared + u"\">";
    text += u"</head><body>";
    while (text.size() < lengthInUnits)
        text += sample;
    std::string bytes;
    encodeLossily(*makeTextCodec(encoding), text, bytes, true);
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

// The peer is ICU's converter, which is told the right encoding and does not look into the page; the ratio is
// how many times as long it takes.
void decode(benchmark::State& state, std::u16string_view sample, const char16_t* declared,
            const char16_t* label, CFStringEncoding encoding, const char* peerName) {
    using Clock = std::chrono::steady_clock;
    const NSData page = pageOf(sample, declared, encoding, static_cast<std::size_t>(state.range(0)));
    const NSString name(label);
    UErrorCode status = U_ZERO_ERROR;
    UConverter* peer = ucnv_open(peerName, &status);
    double ownSeconds = 0;
    double peerSeconds = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        benchmark::DoNotOptimize(XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL(
            page, name, NSISOLatin1StringEncoding, {}));
        const auto middle = Clock::now();
        {
            std::u16string units(page.length(), u'\0');
            ucnv_toUChars(peer, units.data(), static_cast<std::int32_t>(units.size()),
                          page.characters().data(), static_cast<std::int32_t>(page.length()), &status);
            benchmark::DoNotOptimize(units.data());
        }
        const auto end = Clock::now();
        const double seconds = std::chrono::duration<double>(middle - start).count();
        state.SetIterationTime(seconds);
        ownSeconds += seconds;
        peerSeconds += std::chrono::duration<double>(end - middle).count();
    }
    ucnv_close(peer);
    state.SetBytesProcessed(static_cast<std::int64_t>(page.length()) * state.iterations());
    state.counters["ratio"] = peerSeconds / ownSeconds;
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(4000)->Arg(200000)->Arg(4000000)->UseManualTime();
}

// Where label, declaration and default agree, or there is no declaration, the page is decoded once.
BENCHMARK_CAPTURE(decode, utf8_labelled_english, english, u"utf-8", u"UTF-8", kCFStringEncodingUTF8, "UTF-8")
    ->Apply(sizes);
BENCHMARK_CAPTURE(decode, utf8_labelled_german, german, u"utf-8", u"UTF-8", kCFStringEncodingUTF8, "UTF-8")
    ->Apply(sizes);
BENCHMARK_CAPTURE(decode, utf8_labelled_russian, russian, u"utf-8", u"UTF-8", kCFStringEncodingUTF8, "UTF-8")
    ->Apply(sizes);
BENCHMARK_CAPTURE(decode, latin1_undeclared_german, german, nullptr, nullptr, kCFStringEncodingISOLatin1,
                  "ISO-8859-1")
    ->Apply(sizes);
// Here the default is Latin 1 and the page says otherwise.
BENCHMARK_CAPTURE(decode, utf8_declared_english, english, u"utf-8", nullptr, kCFStringEncodingUTF8, "UTF-8")
    ->Apply(sizes);
BENCHMARK_CAPTURE(decode, utf8_declared_russian, russian, u"utf-8", nullptr, kCFStringEncodingUTF8, "UTF-8")
    ->Apply(sizes);
BENCHMARK_CAPTURE(decode, windows1251_declared_russian, russian, u"windows-1251", nullptr,
                  kCFStringEncodingWindowsCyrillic, "windows-1251")
    ->Apply(sizes);
BENCHMARK_CAPTURE(decode, shiftJIS_declared_japanese, japanese, u"Shift_JIS", nullptr,
                  kCFStringEncodingDOSJapanese, "windows-932")
    ->Apply(sizes);

} // namespace

BENCHMARK_MAIN();
