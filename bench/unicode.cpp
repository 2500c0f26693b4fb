#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/NSCharacterSet.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <benchmark/benchmark.h>
#include <unicode/ustring.h>

#include <chrono>
#include <cstring>
#include <string>

namespace {

using namespace kelvo;

constexpr std::u16string_view english = u"hello <b>world</b>, this is text ";
constexpr std::u16string_view german = u"Die Straße ist für alle da, und ähnlich schön “quoted” ";
constexpr std::u16string_view russian = u"привет, мир ";
constexpr std::u16string_view chinese = u"中文字符。";

std::u16string textOf(std::u16string_view sample) {
    std::u16string text;
    while (text.size() < 1000000)
        text += sample;
    return text;
}

// Runs `work` and then `peer` in each round; the ratio is how many times as long the peer takes.
template <class Work, class Peer>
void compare(benchmark::State& state, std::size_t bytes, Work work, Peer peer) {
    using Clock = std::chrono::steady_clock;
    double ownSeconds = 0;
    double peerSeconds = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        work();
        const auto middle = Clock::now();
        peer();
        const auto end = Clock::now();
        const double seconds = std::chrono::duration<double>(middle - start).count();
        state.SetIterationTime(seconds);
        ownSeconds += seconds;
        peerSeconds += std::chrono::duration<double>(end - middle).count();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    state.counters["ratio"] = peerSeconds / ownSeconds;
}

// The peer is memcpy.
void normalizeComposedText(benchmark::State& state, std::u16string_view sample) {
    const std::u16string text = textOf(sample);
    NSMutableString string = NSMutableString::stringWithCharacters(text);
    std::u16string copy(text.size(), u'\0');
    compare(
        state, text.size() * 2, [&] { CFStringNormalize(string, CFStringNormalizationForm::C); },
        [&] {
            std::memcpy(copy.data(), text.data(), text.size() * 2);
            benchmark::DoNotOptimize(copy.data());
        });
}
BENCHMARK_CAPTURE(normalizeComposedText, english, english)->UseManualTime();
BENCHMARK_CAPTURE(normalizeComposedText, german, german)->UseManualTime();
BENCHMARK_CAPTURE(normalizeComposedText, russian, russian)->UseManualTime();
BENCHMARK_CAPTURE(normalizeComposedText, chinese, chinese)->UseManualTime();

// The peer is ICU's UTF-8 decoder on the same text.
void decode(benchmark::State& state, CFStringEncoding encoding, std::u16string_view sample) {
    const std::u16string text = textOf(sample);
    std::string bytes;
    std::string peerBytes;
    const auto codec = makeTextCodec(encoding);
    encodeLossily(*codec, text, bytes, true);
    encodeLossily(*makeTextCodec(kCFStringEncodingUTF8), text, peerBytes, true);
    std::u16string units(text.size() + 64, u'\0');
    compare(
        state, bytes.size(),
        [&] {
            codec->decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, units.data(),
                          units.size());
            benchmark::DoNotOptimize(units.data());
        },
        [&] {
            std::int32_t length = 0;
            UErrorCode status = U_ZERO_ERROR;
            u_strFromUTF8WithSub(units.data(), static_cast<std::int32_t>(units.size()), &length,
                                 peerBytes.data(), static_cast<std::int32_t>(peerBytes.size()), 0xFFFD,
                                 nullptr, &status);
            benchmark::DoNotOptimize(units.data());
        });
}
BENCHMARK_CAPTURE(decode, utf8_english, kCFStringEncodingUTF8, english)->UseManualTime();
BENCHMARK_CAPTURE(decode, utf8_german, kCFStringEncodingUTF8, german)->UseManualTime();
BENCHMARK_CAPTURE(decode, utf8_russian, kCFStringEncodingUTF8, russian)->UseManualTime();
BENCHMARK_CAPTURE(decode, utf8_chinese, kCFStringEncodingUTF8, chinese)->UseManualTime();
BENCHMARK_CAPTURE(decode, windows1252_english, kCFStringEncodingWindowsLatin1, english)->UseManualTime();
BENCHMARK_CAPTURE(decode, windows1252_german, kCFStringEncodingWindowsLatin1, german)->UseManualTime();
BENCHMARK_CAPTURE(decode, windows1251_russian, kCFStringEncodingWindowsCyrillic, russian)->UseManualTime();
BENCHMARK_CAPTURE(decode, gb18030_chinese, kCFStringEncodingGB18030, chinese)->UseManualTime();

// As the folding table does: every letter alone.
void foldEveryLetter(benchmark::State& state) {
    const NSCharacterSet& letters = NSCharacterSet::letterCharacterSet();
    NSMutableString string = NSMutableString::stringWithCapacity(8);
    for (auto _ : state)
        for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
            const auto letter = static_cast<char16_t>(unit);
            if (!letters.characterIsMember(letter))
                continue;
            string.setString({&letter, 1});
            CFStringFold(string, kCFCompareDiacriticInsensitive);
        }
}
BENCHMARK(foldEveryLetter);

} // namespace

BENCHMARK_MAIN();
