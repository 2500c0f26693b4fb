#pragma once

#include "platform/foundation/Value.h"

#include <string>
#include <vector>

namespace kelvo::cli {

/// One row of a file's metadata as people get to see it.
struct MetadataRow {
    std::string label;
    /// Printable, with "\n" between its lines.
    std::string text;
};

/// What the attributes ("kMDItem…") say, in the words and units of people: those that are known in a fixed order, the
/// text of the file behind them, and last, by their own names, all others. Texts and arrays that are too long for that
/// are cut, and say how long they are.
std::vector<MetadataRow> rowsOfMetadata(const NSDictionary& attributes);

/// The same of what a PDF says of itself, in an answer of stringWithPDF. Its text has no row.
std::vector<MetadataRow> rowsOfPDF(const NSDictionary& answer);

} // namespace kelvo::cli
