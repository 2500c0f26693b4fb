#pragma once

#include "platform/ledger/EngineFacts.h"
#include "platform/ledger/LedgerLayout.h"
#include "platform/ledger/RequestRecord.h"

#include <string>

namespace kelvo::ledger {

/// The file at the path, mapped for reading and writing, with mode 0600 and all its blocks there; whoever calls unmaps
/// it. One that is no ledger of this layout and user, and a link, are replaced, in one step, by an empty one. Throws
/// std::system_error that names the path.
File* mappedFile(const std::string& path);

/// Whether it is a header of this layout.
bool isOwn(const Header& header);

// For callers. They take anything: lengths and numbers out of range are brought into it.
RequestRecord requestRecord(const Record& record);
EngineFacts engineFacts(const EngineSlot& slot);

} // namespace kelvo::ledger
