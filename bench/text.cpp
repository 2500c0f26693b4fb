// The scans, searches and compares of text beside what bounds them: reading the same memory with the same vectors, one
// table load a unit, the standard library and ICU. With KELVO_BENCH_AVX2 in the environment all vectors are those of AVX2,
// on a machine that has wider ones.

#include "Comparison.h"
#include "MemoryReading.h"

#include "platform/foundation/units/UnitScan.h"
#include "text/CharacterSearch.h"
#include "text/CharacterSetReps.h"
#include "text/FoldingTables.h"
#include "text/StringMatching.h"
#include "text/UnicharCompare.h"

#include <hwy/targets.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <random>
#include <string>

namespace {

using namespace kelvo;
using benchmark::DoNotOptimize;
using benchmark::State;

enum Sample : std::int64_t { English, Cyrillic, Chinese, Scattered, SampleCount };
constexpr const char* sampleNames[SampleCount] = {"ASCII", "Cyrillic", "Chinese", "scattered"};

// In the cache: what a document's paragraph or a page would be, so that the loops and not the memory are
// measured.
constexpr std::size_t unitCount = 8192;

/// Letters only, so that a search for a non-letter and a test for letters alone run to the end.
const std::u16string& textOf(std::int64_t sample) {
    static const auto texts = [] {
        std::array<std::u16string, SampleCount> made;
        std::mt19937 random(1);
        std::u16string letters;
        for (unsigned unit = 0; unit <= 0xFFFF; ++unit)
            if (unitIsInBitmap(alphaCharacterSetRep(), static_cast<char16_t>(unit)))
                letters += static_cast<char16_t>(unit);
        for (std::size_t index = 0; index < unitCount; ++index) {
            made[English] += static_cast<char16_t>(u'a' + random() % 26);
            made[Cyrillic] += static_cast<char16_t>(0x0430 + random() % 32);
            made[Chinese] += static_cast<char16_t>(0x4E00 + random() % 20000);
            made[Scattered] += letters[random() % letters.size()];
        }
        return made;
    }();
    return texts[static_cast<std::size_t>(sample)];
}

void unitsPerIteration(State& state, std::size_t count) {
    state.SetItemsProcessed(static_cast<std::int64_t>(count) * state.iterations());
}

/// `work` gets the text through a pointer that the compiler knows nothing about.
template <class Work>
void overText(State& state, Work work) {
    const std::u16string& text = textOf(state.range(0));
    for (auto _ : state) {
        const char16_t* units = text.data();
        DoNotOptimize(units);
        DoNotOptimize(work(std::u16string_view(units, text.size())));
    }
    unitsPerIteration(state, text.size());
}

// Peers: reading the memory, and one table load a unit.

void readMemory(State& state) {
    overText(state, kelvo::bench::readUnits);
}
void loadTable(State& state) {
    const char16_t* table = initUpperCharsTable();
    overText(state, [table](std::u16string_view text) {
        std::uint64_t sum = 0;
        for (const char16_t unit : text)
            sum += table[unit];
        return sum;
    });
}

// Subjects.

void wholeStringInRep(State& state) {
    overText(state, [](std::u16string_view text) {
        return charactersPartOfSet(text, alphaCharacterSetRep(), false);
    });
}
void anyUnitInRep(State& state) {
    overText(state, [](std::u16string_view text) { return containsWhiteCharacter(text); });
}
void findUnit(State& state) {
    overText(state, [](std::u16string_view text) { return findCharacter(text, u'1', 0, false); });
}
void findLetter(State& state) {
    overText(state, [](std::u16string_view text) { return findCharacter(text, 0x0100, 0, true); });
}
void countUnit(State& state) {
    overText(state, [](std::u16string_view text) { return countCharacter(text, u'e'); });
}
void countLetter(State& state) {
    overText(state, [](std::u16string_view text) { return countCharacter(text, u'e', 0, true); });
}
void findOneOfTwo(State& state) {
    overText(state, [](std::u16string_view text) { return findOneOf(text, u"<&"); });
}
void findOneOfFour(State& state) {
    overText(state, [](std::u16string_view text) { return findOneOf(text, u"<&>\""); });
}
void findOneOfMany(State& state) {
    overText(state, [](std::u16string_view text) { return findOneOf(text, u"0123456789"); });
}
void asciiPrefix(State& state) {
    overText(state, [](std::u16string_view text) { return firstNonAsciiUnit(text.data(), text.size()); });
}

void everySample(benchmark::internal::Benchmark* benchmark) {
    benchmark->DenseRange(0, SampleCount - 1);
}
BENCHMARK(readMemory)->Apply(everySample);
BENCHMARK(loadTable)->Apply(everySample);
BENCHMARK(wholeStringInRep)->Apply(everySample);
BENCHMARK(anyUnitInRep)->Apply(everySample);
BENCHMARK(findOneOfMany)->Apply(everySample);
BENCHMARK(findUnit)->Arg(English);
BENCHMARK(findLetter)->Arg(English);
BENCHMARK(countUnit)->Arg(English);
BENCHMARK(countLetter)->Arg(English);
BENCHMARK(findOneOfTwo)->Arg(English);
BENCHMARK(findOneOfFour)->Arg(English);
BENCHMARK(asciiPrefix)->Arg(English);

// Compares, by length. `Twin` differs in its last unit only, `Cased` in the case of every fourth letter.

enum class Twin { LastUnit, EveryFourthCase };

template <class Compare>
void compareTexts(State& state, Twin twin, Compare compare) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const std::u16string left = textOf(English).substr(0, count);
    std::u16string right = left;
    if (twin == Twin::LastUnit)
        right.back() = u'~';
    else
        for (std::size_t index = 0; index < count; index += 4)
            right[index] = static_cast<char16_t>(right[index] - 32);
    for (auto _ : state) {
        const char16_t *first = left.data(), *second = right.data();
        DoNotOptimize(first);
        DoNotOptimize(second);
        DoNotOptimize(compare(std::u16string_view(first, count), std::u16string_view(second, count)));
    }
    unitsPerIteration(state, count);
}

int compareByICU(std::u16string_view a, std::u16string_view b) {
    UErrorCode status = U_ZERO_ERROR;
    return u_strCaseCompare(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                            U_FOLD_CASE_DEFAULT, &status);
}
constexpr auto compareUnichars = [](std::u16string_view a, std::u16string_view b) {
    return fastCompareUnichars(a.data(), a.size(), b.data(), b.size());
};
constexpr auto compareUnicharsNoCase = [](std::u16string_view a, std::u16string_view b) {
    return fastCaseInsensitiveCompareUnichars(a.data(), a.size(), b.data(), b.size());
};

void compare(State& state) {
    compareTexts(state, Twin::LastUnit, compareUnichars);
}
void compareByView(State& state) {
    compareTexts(state, Twin::LastUnit,
                 [](std::u16string_view a, std::u16string_view b) { return a.compare(b); });
}
void compareNoCase(State& state) {
    compareTexts(state, Twin::EveryFourthCase, compareUnicharsNoCase);
}
void compareNoCaseByICU(State& state) {
    compareTexts(state, Twin::EveryFourthCase, compareByICU);
}
void compareNoCaseSame(State& state) {
    compareTexts(state, Twin::LastUnit, compareUnicharsNoCase);
}
void compareNoCaseSameByICU(State& state) {
    compareTexts(state, Twin::LastUnit, compareByICU);
}

constexpr std::int64_t lengths[] = {1, 4, 9, 16, 40, 300, 8192};
void everyLength(benchmark::internal::Benchmark* benchmark) {
    for (const std::int64_t length : lengths)
        benchmark->Arg(length);
}
BENCHMARK(compare)->Apply(everyLength);
BENCHMARK(compareByView)->Apply(everyLength);
BENCHMARK(compareNoCase)->Apply(everyLength);
BENCHMARK(compareNoCaseByICU)->Apply(everyLength);
BENCHMARK(compareNoCaseSame)->Apply(everyLength);
BENCHMARK(compareNoCaseSameByICU)->Apply(everyLength);

/// Only the first call of a process makes anything, so this runs before all else and once.
double millisecondsToBuildAll() {
    const auto begin = std::chrono::steady_clock::now();
    DoNotOptimize(initUpperUmlautsCharsTable());
    DoNotOptimize(initLowerUmlautsCharsTable());
    for (const auto rep :
         {emptyCharacterSetRep, whiteCharacterSetRep, spaceCharacterSetRep, upperCharacterSetRep,
          lowerCharacterSetRep, digitCharacterSetRep, alphaNumCharacterSetRep, alphaCharacterSetRep})
        DoNotOptimize(rep());
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

} // namespace

int main(int argc, char** argv) {
    if (std::getenv("KELVO_BENCH_AVX2"))
        hwy::GetChosenTarget().Update(HWY_AVX2);
    const double buildMilliseconds = millisecondsToBuildAll();
    kelvo::bench::initialize(argc, argv);
    kelvo::bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);

    std::printf("\n%-60s %8.2f ms\n", "all five tables and eight reps, first use", buildMilliseconds);
    const std::string ascii = "/" + std::to_string(English);
    for (const char* scan : {"findUnit", "findLetter", "countUnit", "countLetter", "findOneOfTwo",
                             "findOneOfFour", "asciiPrefix"})
        comparison.printSpeedRatio((std::string(scan) + " : reading the memory").c_str(), scan + ascii,
                                   "readMemory" + ascii);
    for (std::int64_t sample = 0; sample < SampleCount; ++sample)
        for (const char* scan : {"wholeStringInRep", "anyUnitInRep", "findOneOfMany"}) {
            const std::string suffix = "/" + std::to_string(sample);
            comparison.printSpeedRatio(
                (std::string(scan) + ", " + sampleNames[sample] + " : one table load a unit").c_str(),
                scan + suffix, "loadTable" + suffix);
        }
    for (const std::int64_t length : lengths) {
        const std::string suffix = "/" + std::to_string(length);
        const auto label = [&](const char* text) {
            return text + (", " + std::to_string(length) + " units");
        };
        comparison.printSpeedRatio(label("fastCompareUnichars : u16string_view").c_str(), "compare" + suffix,
                                   "compareByView" + suffix);
        comparison.printSpeedRatio(label("fastCaseInsensitiveCompareUnichars, cases : ICU").c_str(),
                                   "compareNoCase" + suffix, "compareNoCaseByICU" + suffix);
        comparison.printSpeedRatio(label("fastCaseInsensitiveCompareUnichars, same : ICU").c_str(),
                                   "compareNoCaseSame" + suffix, "compareNoCaseSameByICU" + suffix);
    }
}
