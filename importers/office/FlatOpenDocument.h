#pragma once

#include "importers/office/OfficeFacts.h"
#include "importers/office/OpenDocumentText.h"
#include "importers/office/TextBuilder.h"
#include "importers/support/Importer.h"

#include <chrono>
#include <string_view>

namespace kelvo::importers {

/// The text, and the fault if there is one (may be null): something is missing, or the document is broken when it is all.
void setTextOfOffice(Attributes& attributes, const TextBuilder& text, const char* fault);

/// The text of a document that has been read, and the facts with what was counted in it.
void setTextOfOpenDocument(Attributes& attributes, OpenDocumentHandler& handler, OfficeFacts& facts,
                           const char* fault);

/// What a document that is one file of XML says of itself.
void readFactsOfFlat(std::string_view file, std::chrono::steady_clock::time_point deadline,
                     OfficeFacts& facts);
/// Its text, as setTextOfOpenDocument does.
void importFlatText(Attributes& attributes, std::string_view file,
                    std::chrono::steady_clock::time_point deadline, OfficeFacts& facts);

} // namespace kelvo::importers
