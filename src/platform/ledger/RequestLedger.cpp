#include "platform/ledger/RequestLedger.h"

#include "platform/foundation/NSLog.h"
#include "platform/ledger/ByteHash.h"
#include "platform/ledger/EngineRegistry.h"
#include "platform/ledger/LedgerFile.h"
#include "platform/ledger/RecordText.h"

#include <signal.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <exception>

namespace kelvo {

using ledger::RecordState;

namespace {

/// While it stands, readers of the record wait.
class Change {
public:
    /// Also when whoever wrote last did not come to its end.
    explicit Change(std::uint32_t& version) : version_(version) {
        version_.store((version_.load(std::memory_order_relaxed) + 1) | 1, std::memory_order_relaxed);
        std::atomic_thread_fence(std::memory_order_release);
    }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;
    ~Change() { version_.store(version_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }

private:
    std::atomic_ref<std::uint32_t> version_;
};

/// In this order with what is written before and after it, whenever the process is killed.
void setState(ledger::Record& record, RecordState state) {
    std::atomic_thread_fence(std::memory_order_release);
    std::atomic_ref(record.state).store(state, std::memory_order_release);
    std::atomic_thread_fence(std::memory_order_seq_cst);
}

template <typename Length, std::size_t capacity>
void put(const std::string& text, Length& length, char (&target)[capacity]) {
    length = static_cast<Length>(std::min(text.size(), capacity));
    std::memcpy(target, text.data(), length);
}

} // namespace

RequestLedger::RequestLedger(Measures measures)
    : usage_(measures == Measures::timeAndMemory ? std::make_unique<ProcessUsage>() : nullptr) {}

RequestLedger::~RequestLedger() {
    if (!file_)
        return;
    setEngineRegistry(nullptr);
    munmap(file_, sizeof(ledger::File));
}

std::vector<RequestRecord> RequestLedger::open(const std::string& path) {
    try {
        file_ = ledger::mappedFile(path);
    } catch (const std::exception& exception) {
        NSLog(u"Requests are not written down: %@", NSString::stringByRepairingUTF8String(exception.what()));
        return {};
    }
    for (ledger::EngineSlot& slot : file_->engines) {
        const Change change(slot.version);
        slot.process = 0;
    }
    setEngineRegistry(this);
    return completeLostRecords();
}

std::vector<RequestRecord> RequestLedger::completeLostRecords() {
    std::vector<RequestRecord> lost;
    for (ledger::Record& record : file_->records) {
        if (record.state > RecordState::completed || record.sequence == 0) {
            const Change change(record.version);
            setState(record, RecordState::empty);
        }
        if (record.state == RecordState::begun) {
            const Change change(record.version);
            record.outcome = static_cast<std::uint8_t>(Outcome::crashed);
            put(NSString(sentenceOfEndedService).UTF8String(), record.sentenceLength, record.sentence);
            record.engineLength = 0;
            record.refusedLength = 0;
            record.refusedLoadCount = 0;
            record.milliseconds = record.cpuMilliseconds = record.engineCPUMilliseconds = 0;
            record.peakBytes = record.enginePeakBytes = 0;
            setState(record, RecordState::completed);
            lost.push_back(ledger::requestRecord(record));
        } else if (record.version % 2 != 0) {
            const Change change(record.version);
        }
        if (record.state != RecordState::empty)
            file_->header.lastSequence = std::max(file_->header.lastSequence, record.sequence);
    }
    std::ranges::sort(lost, {}, &RequestRecord::sequence);
    return lost;
}

ledger::Record& RequestLedger::recordOfSequence(std::uint64_t sequence) {
    return file_->records[sequence % ledger::recordCount];
}

RequestLedger::Entry RequestLedger::begin(std::uint64_t token, std::uint8_t operation, const NSString& path,
                                          const NSData& bytes) {
    if (!file_)
        return {};
    Entry entry;
    entry.sequence = file_->header.lastSequence + 1;
    ledger::Record& record = recordOfSequence(entry.sequence);
    const std::string pathBytes = ledger::bytesOfPath(path, sizeof record.path);
    const std::uint64_t hash = bytes.isNil() ? 0 : hashOfBytes(bytes.bytes());
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    {
        const Change change(record.version);
        setState(record, RecordState::empty);
        record.sequence = entry.sequence;
        record.token = token;
        record.begunNanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
        record.operation = operation;
        record.hasBytes = !bytes.isNil();
        record.byteCount = bytes.length();
        record.byteHash = hash;
        put(pathBytes, record.pathLength, record.path);
        setState(record, RecordState::begun);
    }
    std::atomic_ref(file_->header.lastSequence).store(entry.sequence, std::memory_order_release);
    if (usage_)
        usage_->restartPeak();
    entry.beginMilliseconds = nowInMilliseconds();
    entry.beginCPUMilliseconds = cpuMillisecondsOfThisProcess();
    return entry;
}

void RequestLedger::complete(const Entry& entry, Outcome outcome, const NSString& sentence,
                             const RequestNotes& notes) {
    if (!file_ || entry.sequence == 0)
        return;
    ledger::Record& record = recordOfSequence(entry.sequence);
    // Its place may have been given away by requests that were performed meanwhile.
    if (record.sequence != entry.sequence)
        return;
    std::string engines;
    double engineCPUMilliseconds = 0;
    std::uint64_t enginePeakBytes = 0;
    for (const RequestNotes::EngineUse& use : notes.engines()) {
        engines += (engines.empty() ? "" : ", ") + use.name;
        engineCPUMilliseconds += use.cpuMilliseconds;
        enginePeakBytes = std::max(enginePeakBytes, use.peakBytes);
    }
    const std::string sentenceBytes = ledger::bytesOfText(sentence, sizeof record.sentence);
    const std::string refused = ledger::packedTexts(notes.refusedAddresses(), sizeof record.refused);
    const std::uint64_t peakBytes = usage_ ? usage_->peakBytes() : 0;

    const Change change(record.version);
    record.outcome = static_cast<std::uint8_t>(outcome);
    put(sentenceBytes, record.sentenceLength, record.sentence);
    put(ledger::cutToFit(engines, sizeof record.engine, ledger::KeptEnd::beginning), record.engineLength,
        record.engine);
    put(refused, record.refusedLength, record.refused);
    record.refusedLoadCount = notes.refusedLoadCount();
    record.peakBytes = peakBytes;
    record.enginePeakBytes = enginePeakBytes;
    record.engineCPUMilliseconds = engineCPUMilliseconds;
    record.milliseconds = nowInMilliseconds() - entry.beginMilliseconds;
    record.cpuMilliseconds = cpuMillisecondsOfThisProcess() - entry.beginCPUMilliseconds;
    setState(record, RecordState::completed);
}

void RequestLedger::addEngine(std::string_view name, pid_t process, std::string_view layers) {
    if (!file_ || process <= 0)
        return;
    const auto isFree = [process](const ledger::EngineSlot& slot) {
        // One that ended and was not noted gives its place away.
        return slot.process <= 0 || slot.process == process || (kill(slot.process, 0) != 0 && errno == ESRCH);
    };
    const auto slot = std::ranges::find_if(file_->engines, isFree);
    if (slot == std::end(file_->engines))
        return;
    const Change change(slot->version);
    slot->process = process;
    put(ledger::cutToFit(name, sizeof slot->name, ledger::KeptEnd::beginning), slot->nameLength, slot->name);
    put(ledger::cutToFit(layers, sizeof slot->layers, ledger::KeptEnd::beginning), slot->layersLength,
        slot->layers);
}

void RequestLedger::removeEngine(pid_t process) {
    if (!file_)
        return;
    for (ledger::EngineSlot& slot : file_->engines) {
        if (slot.process == process) {
            const Change change(slot.version);
            slot.process = 0;
        }
    }
}

} // namespace kelvo
