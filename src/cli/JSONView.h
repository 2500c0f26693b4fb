#pragma once

#include "platform/foundation/Value.h"

#include <string>

namespace kelvo::cli {

/// The bytes of a result that went into a file.
struct WrittenBytes {
    NSData data;
    std::string fileName; ///< in file-system bytes; nothing was written when it is empty
};

/// The tree in kinds that JSON has: data as {"bytes": n, "base64": "…"} (or "file" in place of "base64" for
/// the bytes that were written), dates as "2026-11-21T09:30:00Z", URLs as absolute strings, sizes as size
/// strings, colours by component, keys and whatever else as their description.
Value valueForJSON(const Value& value, const WrittenBytes& written = {});

/// The same as one line of JSON in UTF-8 with a line end. Throws CommandError (file) when JSON cannot hold
/// it.
std::string lineOfJSON(const Value& value, const WrittenBytes& written = {});

/// The entries behind "file", the name as it was given, for subcommands that take several files. An entry of that name
/// would hide which line is whose, and is left out.
NSDictionary withFile(const std::string& file, const NSDictionary& entries);

} // namespace kelvo::cli
