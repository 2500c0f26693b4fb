// The members of the string family beside what bounds them: copying the same memory, and, where
// they remove or replace, many hits beside few.

#include "Comparison.h"
#include "Samples.h"

#include "text/NSMutableStringKelvoExtensions.h"
#include "text/NSStringKelvoExtensions.h"
#include "text/NSStringTextFinding.h"

#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <utility>

namespace {

using namespace kelvo;
using benchmark::DoNotOptimize;
using benchmark::State;

constexpr std::int64_t sampleCount = static_cast<std::int64_t>(std::size(bench::textSamples));
constexpr std::int64_t pageLength = 8192, bookLength = 4 << 20;

/// Of each sample a page, which stays in the cache, and a book, which does not.
const NSString& sample(std::int64_t number, std::int64_t length) {
    static std::map<std::pair<std::int64_t, std::int64_t>, NSString> texts;
    NSString& text = texts[{number, length}];
    if (text.isNil())
        text = NSString(
            std::u16string_view(textOfSample(bench::textSamples[number], static_cast<std::size_t>(length))));
    return text;
}

void samples(benchmark::internal::Benchmark* benchmark) {
    for (const std::int64_t length : {pageLength, bookLength})
        for (std::int64_t number = 0; number < sampleCount; ++number)
            benchmark->Args({number, length});
}

template <class Work>
void overSample(State& state, Work work) {
    const NSString& text = sample(state.range(0), state.range(1));
    for (auto _ : state)
        DoNotOptimize(work(text));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.length()) * 2);
}

void fixAndNormalize(State& state) {
    overSample(state, [](const NSString& text) { return fixedAndNormalizedString(text); });
}
BENCHMARK(fixAndNormalize)->Apply(samples);

/// What a copying form would do at least.
void copyString(State& state) {
    overSample(state, [](const NSString& text) { return NSString(text.characters()); });
}
BENCHMARK(copyString)->Apply(samples);

void copyMemory(State& state) {
    std::u16string copy(4 << 20, u'\0');
    overSample(state, [&](const NSString& text) {
        std::memcpy(copy.data(), text.characters().data(), text.length() * sizeof(char16_t));
        benchmark::ClobberMemory();
        return copy.data();
    });
}
BENCHMARK(copyMemory)->Apply(samples);

/// 10 MB in which every other unit is a hit, or a single one in the middle.
template <class Change>
void overHits(State& state, Change change) {
    constexpr std::size_t length = 5 << 20;
    std::u16string units(length, u'b');
    for (std::size_t index = state.range(0) ? 0 : length / 2; index < length;
         index += state.range(0) ? 2 : length)
        units[index] = u'a';
    const NSString text = NSString(std::u16string_view(units));
    for (auto _ : state) {
        NSMutableString copy(text);
        change(copy);
        DoNotOptimize(copy.length());
    }
}
void deleteHits(State& state) {
    overHits(state, [](NSMutableString& text) { deleteString(text, u"a"); });
}
void replaceHits(State& state) {
    overHits(state, [](NSMutableString& text) { replaceString_withString(text, u"a", u"xyz"); });
}
void removeHits(State& state) {
    overHits(state, [](NSMutableString& text) { removeCharactersOfString(text, u"a"); });
}
BENCHMARK(deleteHits)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(replaceHits)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(removeHits)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// Ten units, of which few or many kinds are unwanted; the peer looks through the list for each of them.
void removeFromTen(State& state) {
    const auto unwanted =
        std::u16string_view(u"+-./ ()[]:;,_#*").substr(0, static_cast<std::size_t>(state.range(0)));
    const NSString text = u"+49 30/123";
    for (auto _ : state)
        DoNotOptimize(stringByRemovingCharactersOfString(text, unwanted));
}
void eraseFromTen(State& state) {
    const auto unwanted =
        std::u16string_view(u"+-./ ()[]:;,_#*").substr(0, static_cast<std::size_t>(state.range(0)));
    const NSString text = u"+49 30/123";
    for (auto _ : state) {
        std::u16string copy(text.characters());
        std::erase_if(copy, [&](char16_t unit) { return unwanted.find(unit) != unwanted.npos; });
        DoNotOptimize(NSString(std::u16string_view(copy)));
    }
}
BENCHMARK(removeFromTen)->Arg(3)->Arg(15);
BENCHMARK(eraseFromTen)->Arg(3)->Arg(15);

} // namespace

int main(int count, char** arguments) {
    bench::initialize(count, arguments);
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\n");
    for (std::int64_t number = 0; number < sampleCount; ++number)
        for (const std::int64_t length : {pageLength, bookLength}) {
            const std::string suffix = "/" + std::to_string(number) + "/" + std::to_string(length);
            const std::string label = std::string("fixedAndNormalizedString, ") +
                                      bench::textSamples[number].name +
                                      (length == pageLength ? " page" : ", 8 MB") + " : ";
            for (const char* peer : {"copyString", "copyMemory"})
                comparison.printSpeedRatio((label + peer).c_str(), "fixAndNormalize" + suffix, peer + suffix);
        }
    for (const char* hits : {"deleteHits", "replaceHits", "removeHits"})
        comparison.printTimeRatio((std::string(hits) + ", time of 2.6 million hits : one").c_str(),
                                  std::string(hits) + "/1", std::string(hits) + "/0");
    for (const char* kinds : {"/3", "/15"})
        comparison.printTimeRatio(
            (std::string("remove ") + (kinds + 1) + " kinds from ten units : erase_if, with its copies")
                .c_str(),
            std::string("removeFromTen") + kinds, std::string("eraseFromTen") + kinds);
}
