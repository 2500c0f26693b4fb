#pragma once

#include "platform/foundation/NSString.h"
#include "platform/ledger/Outcome.h"

#include <string_view>

namespace kelvo::documentengine {

struct DocumentTrouble {
    Outcome outcome = Outcome::broken;
    /// As RequestNotes has it.
    NSString sentence;
};

/// Why the office suite, which does not say, cannot read a document: whether it is encrypted, else what of it is damaged,
/// as far as that shows.
DocumentTrouble troubleWithDocument(std::string_view document, std::string_view extension);

/// What was lost of a document that the office suite could read, because it makes the best of damaged ones; nil when that
/// is nothing.
NSString lossOfDocument(std::string_view document, std::string_view extension);

} // namespace kelvo::documentengine
