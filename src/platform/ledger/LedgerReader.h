#pragma once

#include "platform/foundation/FileIO.h"
#include "platform/ledger/EngineFacts.h"
#include "platform/ledger/RequestRecord.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

/// Reads a service's ledger from outside, while the service goes on writing to it. A record is given as it stood at some
/// moment, never half of it.
class LedgerReader {
public:
    /// Absent when there is none of this layout and this user.
    static std::optional<LedgerReader> open(const std::string& path);

    /// The latest of that token. Absent when there is none, or it was so long ago that its place was given away.
    std::optional<RequestRecord> recordOfToken(std::uint64_t token) const;
    /// The latest, at most so many, in the order in which they began.
    std::vector<RequestRecord> latestRecords(std::size_t most) const;
    /// Those that the service has noted and that have not ended.
    std::vector<EngineFacts> engines() const;

private:
    explicit LedgerReader(FileDescriptor file) : file_(std::move(file)) {}

    /// From the latest to the oldest, until `visit` gives false.
    template <typename Visit>
    void visitLatest(Visit visit) const;

    FileDescriptor file_;
};

} // namespace kelvo
