// Decoders beside the converters of ICU for the same encoding and the same bytes, and text that is in form C already
// beside a copy of it.

#include "Comparison.h"
#include "Samples.h"

#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/NSCharacterSet.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace kelvo;
using bench::TextSample;
using benchmark::State;

constexpr std::size_t unitCount = 1'000'000;

void normalizeComposed(State& state, const TextSample& sample) {
    NSMutableString string = NSMutableString::stringWithCharacters(textOfSample(sample, unitCount));
    for (auto _ : state)
        CFStringNormalize(string, CFStringNormalizationForm::C);
}
void copyMemory(State& state, const TextSample& sample) {
    const std::u16string text = textOfSample(sample, unitCount);
    std::u16string copy(text.size(), u'\0');
    for (auto _ : state) {
        std::memcpy(copy.data(), text.data(), text.size() * sizeof(char16_t));
        benchmark::DoNotOptimize(copy.data());
    }
}

struct Encoding {
    CFStringEncoding encoding;
    const char* nameForICU;
};
constexpr Encoding utf8{kCFStringEncodingUTF8, "UTF-8"};

std::string bytesOf(const TextSample& sample, const Encoding& encoding) {
    std::string bytes;
    encodeLossily(*makeTextCodec(encoding.encoding), textOfSample(sample, unitCount), bytes, true);
    return bytes;
}

void decode(State& state, const TextSample& sample, const Encoding& encoding) {
    const std::string bytes = bytesOf(sample, encoding);
    const auto codec = makeTextCodec(encoding.encoding);
    std::u16string units(unitCount + 64, u'\0');
    for (auto _ : state) {
        codec->decode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, units.data(),
                      units.size());
        benchmark::DoNotOptimize(units.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}

void decodeByConverter(State& state, const TextSample& sample, const Encoding& encoding) {
    const std::string bytes = bytesOf(sample, encoding);
    std::u16string units(unitCount + 64, u'\0');
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(encoding.nameForICU, &status);
    for (auto _ : state) {
        const char* source = bytes.data();
        UChar* target = units.data();
        ucnv_toUnicode(converter, &target, target + units.size(), &source, source + bytes.size(), nullptr,
                       true, &status);
        benchmark::DoNotOptimize(units.data());
    }
    if (U_FAILURE(status))
        state.SkipWithError(u_errorName(status));
    ucnv_close(converter);
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}

/// What ICU has for UTF-8 alone, faster than its converter.
void decodeByFunction(State& state, const TextSample& sample, const Encoding& encoding) {
    const std::string bytes = bytesOf(sample, encoding);
    std::u16string units(unitCount + 64, u'\0');
    for (auto _ : state) {
        std::int32_t length = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strFromUTF8WithSub(units.data(), static_cast<std::int32_t>(units.size()), &length, bytes.data(),
                             static_cast<std::int32_t>(bytes.size()), 0xFFFD, nullptr, &status);
        benchmark::DoNotOptimize(units.data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes.size()) * state.iterations());
}

// As the folding table does: every letter alone.
void foldEveryLetter(State& state) {
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

int main(int count, char** arguments) {
    bench::initialize(count, arguments);
    struct Row {
        std::string label;
        std::string subject;
        std::string peer;
    };
    std::vector<Row> rows;
    for (const TextSample& sample : bench::textSamples) {
        const std::string name = sample.name;
        benchmark::RegisterBenchmark(("normalize:" + name).c_str(), normalizeComposed, sample);
        benchmark::RegisterBenchmark(("copy:" + name).c_str(), copyMemory, sample);
        rows.push_back({"normalising, " + name + " : copying", "normalize:" + name, "copy:" + name});
    }
    const auto addDecoder = [&](const TextSample& sample, const Encoding& encoding) {
        const std::string name = std::string(encoding.nameForICU) + ":" + sample.name;
        benchmark::RegisterBenchmark(("decode:" + name).c_str(), decode, sample, encoding);
        benchmark::RegisterBenchmark(("converter:" + name).c_str(), decodeByConverter, sample, encoding);
        rows.push_back({name + " : ICU's converter", "decode:" + name, "converter:" + name});
        if (encoding.encoding == kCFStringEncodingUTF8) {
            benchmark::RegisterBenchmark(("function:" + name).c_str(), decodeByFunction, sample, encoding);
            rows.push_back({name + " : ICU's function", "decode:" + name, "function:" + name});
        }
    };
    for (const TextSample& sample : bench::textSamples)
        addDecoder(sample, utf8);
    addDecoder(bench::sampleNamed("English"), {kCFStringEncodingWindowsLatin1, "windows-1252"});
    addDecoder(bench::sampleNamed("German"), {kCFStringEncodingWindowsLatin1, "windows-1252"});
    addDecoder(bench::sampleNamed("Russian"), {kCFStringEncodingWindowsCyrillic, "windows-1251"});
    addDecoder(bench::sampleNamed("Chinese"), {kCFStringEncodingGB18030, "gb18030"});
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\n");
    for (const Row& row : rows)
        comparison.printSpeedRatio(row.label.c_str(), row.subject, row.peer);
}
