#pragma once

#include "importers/office/Package.h"
#include "importers/support/Importer.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace kelvo::importers {

// The platform has no names for them.
inline constexpr const char* wordCountName = "plumwick_wordCount";
inline constexpr const char* sheetCountName = "plumwick_sheetCount";

/// What a document says of itself.
struct OfficeFacts {
    std::string title;
    /// With semicolons between them.
    std::string authors;
    std::string lastAuthor;
    /// With commas or semicolons between them.
    std::string keywords;
    std::string comment;
    std::string subject;
    std::string created;
    std::string modified;
    std::string language;
    std::string application;
    std::string company;
    std::string version;
    std::string identifier;
    std::string pages;
    std::string slides;
    std::string words;
    std::string sheets;

    /// How many there are, which is nothing to say of none.
    void setSheets(std::size_t count);
    void setSlides(std::size_t count);
    void setAttributes(Attributes& attributes) const;
};

/// Reads them from the parts that are there for them: the core and extended properties of Office Open XML, and meta.xml of
/// OpenDocument, or the same in a flat one.
class FactsHandler final : public XMLHandler {
public:
    static std::span<const XMLElement> elements();

    explicit FactsHandler(OfficeFacts& facts) : facts_(facts) {}

    bool startElement(int element, const XMLAttributes& attributes) override;
    void endElement(int element) override;
    void characters(std::string_view piece) override;
    bool wantsMore() const override { return !isDone_; }

private:
    void take(std::string OfficeFacts::*fact);

    OfficeFacts& facts_;
    std::string text_;
    /// Elements of the same names stand elsewhere, in comments.
    bool isInside_ = false;
    bool isOpenDocument_ = false;
    bool isDone_ = false;
};

} // namespace kelvo::importers
