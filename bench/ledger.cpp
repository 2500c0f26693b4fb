// What writing down a request costs: beginning and completing a record in a file in memory (/dev/shm) and in one on the
// disk, and what comes on top of it: the reading of the memory that the request took, and the hash of its bytes.

#include "platform/ledger/ByteHash.h"
#include "platform/ledger/LedgerReader.h"
#include "platform/ledger/RequestLedger.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace kelvo;

/// In a folder of its own below this one.
void record(benchmark::State& state, const char* below, RequestLedger::Measures measures) {
    std::string folder = std::string(below) + "/kelvo-bench-XXXXXX";
    if (!mkdtemp(folder.data()))
        return state.SkipWithError("no folder");
    RequestLedger ledger(measures);
    ledger.open(folder + "/ledger");
    const NSString file = u"/home/ada/letters/2026/to the harbour office, about the mooring.odt";
    const NSString sentence = u"the document is encrypted";
    std::uint64_t token = 0;
    for (auto _ : state) {
        const RequestNotes notes;
        const auto entry = ledger.begin(++token, 4, file, nullptr);
        ledger.complete(entry, Outcome::locked, sentence, notes);
    }
    if (LedgerReader::open(folder + "/ledger")->latestRecords(1).front().token != token)
        state.SkipWithError("nothing was written");
    std::filesystem::remove_all(folder);
}

/// What a request with large bytes pays beside its record.
void hash(benchmark::State& state) {
    const std::vector<std::uint8_t> bytes(std::size_t{64} << 20, 'x');
    for (auto _ : state)
        benchmark::DoNotOptimize(hashOfBytes(bytes));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}
BENCHMARK(hash)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly()->Unit(benchmark::kMillisecond);

void everySetting(const char* name, RequestLedger::Measures measures) {
    for (const char* below : {"/dev/shm", "/var/tmp"})
        benchmark::RegisterBenchmark((std::string(name) + " in " + below).c_str(), record, below, measures)
            ->UseRealTime()
            ->Repetitions(9)
            ->ReportAggregatesOnly();
}

} // namespace

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    everySetting("record", RequestLedger::Measures::time);
    everySetting("record with memory", RequestLedger::Measures::timeAndMemory);
    benchmark::RunSpecifiedBenchmarks();
}
