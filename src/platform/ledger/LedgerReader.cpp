#include "platform/ledger/LedgerReader.h"

#include "platform/ledger/LedgerFile.h"

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>

namespace kelvo {
namespace {

template <typename Thing>
bool readAt(int descriptor, std::size_t place, Thing& target) {
    return pread(descriptor, &target, sizeof target, static_cast<off_t>(place)) == sizeof target;
}

/// Reads what begins with its version. False when it does not come to rest: whoever wrote it was killed.
template <typename Versioned>
bool readAtRest(int descriptor, std::size_t place, Versioned& target) {
    // A change takes less than a microsecond, unless whoever makes it has to wait for a processor.
    constexpr int patientTurns = 10;
    for (int turn = 0; turn < 60; ++turn) {
        std::uint32_t before = 0;
        std::uint32_t after = 0;
        if (!readAt(descriptor, place, before))
            return false;
        std::atomic_thread_fence(std::memory_order_acquire);
        if (before % 2 == 0) {
            if (!readAt(descriptor, place, target))
                return false;
            std::atomic_thread_fence(std::memory_order_acquire);
            if (readAt(descriptor, place, after) && after == before)
                return true;
        }
        if (turn >= patientTurns)
            sched_yield();
    }
    return false;
}

} // namespace

std::optional<LedgerReader> LedgerReader::open(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    struct stat facts;
    ledger::Header header;
    if (!file || fstat(file.get(), &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_uid != geteuid() ||
        !readAt(file.get(), 0, header) || !ledger::isOwn(header))
        return std::nullopt;
    return LedgerReader(std::move(file));
}

template <typename Visit>
void LedgerReader::visitLatest(Visit visit) const {
    std::uint64_t last = 0;
    if (!readAt(file_.get(), offsetof(ledger::Header, lastSequence), last))
        return;
    for (std::uint64_t age = 0; age < std::min<std::uint64_t>(last, ledger::recordCount); ++age) {
        const std::uint64_t sequence = last - age;
        ledger::Record record;
        const std::size_t place =
            offsetof(ledger::File, records) + sequence % ledger::recordCount * sizeof(ledger::Record);
        // A place that has been given away meanwhile holds a later one.
        if (readAtRest(file_.get(), place, record) && record.sequence == sequence &&
            (record.state == ledger::RecordState::begun || record.state == ledger::RecordState::completed) &&
            !visit(record))
            return;
    }
}

std::optional<RequestRecord> LedgerReader::recordOfToken(std::uint64_t token) const {
    std::optional<RequestRecord> found;
    visitLatest([&](const ledger::Record& record) {
        if (record.token == token)
            found = ledger::requestRecord(record);
        return !found;
    });
    return found;
}

std::vector<RequestRecord> LedgerReader::latestRecords(std::size_t most) const {
    std::vector<RequestRecord> found;
    if (most > 0)
        visitLatest([&](const ledger::Record& record) {
            found.push_back(ledger::requestRecord(record));
            return found.size() < most;
        });
    std::ranges::reverse(found);
    return found;
}

std::vector<EngineFacts> LedgerReader::engines() const {
    std::vector<EngineFacts> found;
    for (std::size_t index = 0; index < ledger::engineCount; ++index) {
        ledger::EngineSlot slot;
        if (!readAtRest(file_.get(), offsetof(ledger::File, engines) + index * sizeof slot, slot) ||
            slot.process <= 0 || (kill(slot.process, 0) != 0 && errno == ESRCH))
            continue;
        found.push_back(ledger::engineFacts(slot));
    }
    return found;
}

} // namespace kelvo
