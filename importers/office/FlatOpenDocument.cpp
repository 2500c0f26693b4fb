#include "importers/office/FlatOpenDocument.h"

#include <algorithm>
#include <cstddef>

namespace kelvo::importers {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t bytesAtOnce = std::size_t{64} << 10;

/// Answers why it was not read to its end; null when it was.
template <typename Handler>
const char* readFlat(std::string_view file, Clock::time_point deadline, Handler& handler) {
    XMLReader reader(Handler::elements(), handler);
    bool goesOn = true;
    for (; !file.empty() && goesOn; file.remove_prefix(std::min(file.size(), bytesAtOnce))) {
        if (Clock::now() > deadline)
            return "there was no time for all of the document";
        goesOn = reader.read(file.substr(0, bytesAtOnce));
    }
    if (goesOn)
        reader.finish();
    return reader.fault();
}

} // namespace

void setTextOfOffice(Attributes& attributes, const TextBuilder& text, const char* fault) {
    // That there is no text is not known of a document that has not been read.
    if (fault && text.size() == 0)
        attributes.note(MDNoteBroken, fault);
    else
        attributes.setTextOfUTF8(text.text());
    if (fault)
        attributes.note(MDNoteIncomplete, fault);
}

void setTextOfOpenDocument(Attributes& attributes, OpenDocumentHandler& handler, OfficeFacts& facts,
                           const char* fault) {
    facts.setSheets(handler.numberOfSheets());
    facts.setSlides(handler.numberOfSlides());
    facts.setAttributes(attributes);
    setTextOfOffice(attributes, handler.takeText(), fault);
}

void readFactsOfFlat(std::string_view file, Clock::time_point deadline, OfficeFacts& facts) {
    FactsHandler handler(facts);
    readFlat(file, deadline, handler);
}

void importFlatText(Attributes& attributes, std::string_view file, Clock::time_point deadline,
                    OfficeFacts& facts) {
    OpenDocumentHandler handler;
    const char* const fault = readFlat(file, deadline, handler);
    setTextOfOpenDocument(attributes, handler, facts, fault);
}

} // namespace kelvo::importers
