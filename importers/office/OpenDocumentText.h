#pragma once

#include "importers/office/TextBuilder.h"
#include "importers/office/TrackedDeletions.h"
#include "importers/office/XMLReader.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {

/// The text in the parts of an OpenDocument, or in a flat one: the body, and when all is read what stands beside it. Names
/// of sheets stand before them, and of slides the notes after them. Deleted and hidden text is left out, and so is what
/// a merged cell covers.
class OpenDocumentHandler final : public XMLHandler {
public:
    static std::span<const XMLElement> elements();

    bool startElement(int element, const XMLAttributes& attributes) override;
    void endElement(int element) override;
    void characters(std::string_view piece) override;
    bool wantsMore() const override;

    /// All of it, with headers, footers, notes and comments at the end.
    TextBuilder takeText();
    std::size_t numberOfSheets() const { return sheets_; }
    std::size_t numberOfSlides() const { return slides_; }

private:
    enum class Body : std::uint8_t { none, text, spreadsheet, slides };
    /// Where text goes.
    enum class Target : std::uint8_t { body, frames, running, aside, nowhere };
    /// What has paragraphs of its own.
    struct Place {
        Target target = Target::body;
        int paragraphs = 0;
        /// Further white space does not count.
        bool isAfterSpace = true;
        /// Nothing of the row, or the cell, has come yet.
        bool isRowNew = false;
        bool isCellNew = false;
    };

    TextBuilder& text(Target target);
    /// What is deleted breaks no lines either.
    TextBuilder& current() { return deletions_.isAnyOpen() ? nowhere_ : text(places_.back().target); }
    /// Whether text counts where the reader is.
    bool takesText() const {
        const Place& place = places_.back();
        return place.paragraphs > 0 && place.target != Target::nowhere && !deletions_.isAnyOpen();
    }
    bool startChange(int element, const XMLAttributes& attributes);
    void startBody(Body body) { body_ = body; }
    bool startShape(const XMLAttributes& attributes);
    void startSheet(const XMLAttributes& attributes);
    void startRow();
    void startCell();
    void startParagraph();
    void endParagraph();
    void beginLine();
    void enter(Target target);
    void leave();
    void append(std::string_view piece);
    void appendSpaces(std::string_view count);

    Body body_ = Body::none;
    TextBuilder text_;
    /// Of the paragraph.
    TextBuilder frames_;
    /// Headers and footers.
    TextBuilder running_;
    /// Notes and comments.
    TextBuilder aside_;
    TextBuilder nowhere_;
    std::vector<Place> places_{Place{}};
    std::size_t sheets_ = 0;
    std::size_t slides_ = 0;
    bool isInNotes_ = false;
    bool isInChanges_ = false;
    /// Of the change that is being listed.
    std::string changeId_;
    TrackedDeletions deletions_;
};

} // namespace kelvo::importers
