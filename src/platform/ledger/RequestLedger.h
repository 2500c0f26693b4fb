#pragma once

#include "platform/foundation/NSData.h"
#include "platform/ledger/ProcessUsage.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/ledger/RequestRecord.h"

#include <sys/types.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

namespace ledger {
struct EngineSlot;
struct File;
struct Record;
} // namespace ledger

/// What a service writes down of its requests: a ring of records of fixed size in a file that is mapped into memory, so
/// that what was written outlives whatever ends the process. Of a file's contents nothing is written but what the notes
/// say of it.
///
/// Used on one thread. As made, and when the file cannot be used, it writes nothing.
class RequestLedger {
public:
    enum class Measures : bool { time, timeAndMemory };

    explicit RequestLedger(Measures measures = Measures::timeAndMemory);
    RequestLedger(const RequestLedger&) = delete;
    RequestLedger& operator=(const RequestLedger&) = delete;
    ~RequestLedger();

    /// To be called by whoever holds the service's name, because two must not write to one file. What the last one left
    /// begun is completed as crashed, and given. A file that is none of this layout and this user, and a link, are
    /// replaced. When that fails, one line in the log says so.
    ///
    /// Engines that this thread notes (EngineRegistry.h) go into this ledger from now on.
    std::vector<RequestRecord> open(const std::string& path);
    bool isOpen() const { return file_ != nullptr; }

    /// A request under way.
    struct Entry {
        std::uint64_t sequence = 0;
        double beginMilliseconds = 0;
        double beginCPUMilliseconds = 0;
    };
    /// Before the work. Nil path and nil bytes are not given.
    Entry begin(std::uint64_t token, std::uint8_t operation, const NSString& path, const NSData& bytes);
    /// After the work. The notes tell of engines and refused loads. May be called again, when it turns out otherwise.
    void complete(const Entry& entry, Outcome outcome, const NSString& sentence, const RequestNotes& notes);

    void addEngine(std::string_view name, pid_t process, std::string_view layers);
    void removeEngine(pid_t process);

private:
    std::vector<RequestRecord> completeLostRecords();
    ledger::Record& recordOfSequence(std::uint64_t sequence);

    std::unique_ptr<ProcessUsage> usage_;
    ledger::File* file_ = nullptr;
};

} // namespace kelvo
