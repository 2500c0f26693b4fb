#pragma once

#include "importers/structured/StringLines.h"
#include "importers/xml/XMLScan.h"

#include <string>

namespace kelvo::importers {

/// What is written in a document of an unknown kind: its characters, with a line where its source has one or an element
/// ends just before another one.
class XMLStrings final : public XMLEvents {
public:
    /// Outlines keep what is written in attributes.
    explicit XMLStrings(bool isOutline) : isOutline_(isOutline) {}

    void beginElement(const XMLTag& tag) override;
    void endElement(std::string_view name) override;
    void characters(std::string_view text) override;

    bool hasElements() const { return hasElements_; }
    /// What the first element says that is named so and not too deep for the document's own.
    const std::string& title() const { return title_; }
    const std::string& text() const { return text_; }

private:
    void write(char byte);

    bool isOutline_;
    bool hasElements_ = false;
    /// An element has ended, and nothing has come since.
    bool isBehindEnd_ = false;
    bool hasLineEnd_ = false;
    bool hasSpace_ = false;
    std::size_t depth_ = 0;
    /// 0 where no title is open.
    std::size_t titleDepth_ = 0;
    std::string title_;
    std::string text_;
};

} // namespace kelvo::importers
