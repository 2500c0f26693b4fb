#include "importers/compound/CompoundImport.h"

#include "importers/compound/CompoundDocument.h"
#include "importers/office/FlatOpenDocument.h"
#include "importers/office/OfficeImport.h"

#include <chrono>
#include <string_view>

namespace kelvo::importers {

void importCompound(Attributes& attributes) {
    // Many programs call them so whatever they write.
    if (attributes.file().starts_with("PK")) {
        importOffice(attributes);
        return;
    }
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(mostSecondsOfImport));
    OfficeFacts facts;
    bool hasProperties = false;
    {
        const CompoundDocument document(attributes.file());
        hasProperties = document.isOpen();
        facts = document.facts();
        facts.setAttributes(attributes);
        if (document.isEncrypted()) {
            attributes.set("kMDItemSecurityMethod", NSString(u"Password Encrypted"));
            attributes.note(MDNoteLocked, "the document is encrypted");
            return;
        }
    }
    const std::string_view text = attributes.officeDocument();
    if (text.empty()) {
        attributes.note(MDNoteBroken, "the office suite does not read it");
        return;
    }
    OfficeFacts converted;
    readFactsOfFlat(text, deadline, converted);
    // Which is the office suite.
    converted.application.clear();
    // The oldest files have none.
    if (!hasProperties)
        facts = converted;
    if (facts.pages.empty())
        facts.pages = converted.pages;
    if (facts.words.empty())
        facts.words = converted.words;
    importFlatText(attributes, text, deadline, facts);
}

} // namespace kelvo::importers
