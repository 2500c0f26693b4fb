#include "importers/office/WordText.h"

#include "importers/office/DrawingText.h"
#include "importers/office/TextLimits.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace kelvo::importers {
namespace {

enum Element : int {
    paragraph = 1,
    run,
    characterProperties,
    hidden,
    characters,
    tab,
    lineBreak,
    hyphen,
    softHyphen,
    row,
    cell,
    frame,
    left,
    /// Not in the text, with all that is in it.
    passedOver
};

constexpr std::array elements{
    XMLElement{XMLSpace::word, "p", paragraph},
    XMLElement{XMLSpace::word, "r", run},
    XMLElement{XMLSpace::word, "rPr", characterProperties},
    XMLElement{XMLSpace::word, "vanish", hidden},
    XMLElement{XMLSpace::word, "t", characters},
    XMLElement{XMLSpace::math, "t", characters},
    XMLElement{XMLSpace::word, "tab", tab},
    XMLElement{XMLSpace::word, "ptab", tab},
    XMLElement{XMLSpace::word, "br", lineBreak},
    XMLElement{XMLSpace::word, "cr", lineBreak},
    XMLElement{XMLSpace::word, "noBreakHyphen", hyphen},
    XMLElement{XMLSpace::word, "softHyphen", softHyphen},
    XMLElement{XMLSpace::word, "tr", row},
    XMLElement{XMLSpace::word, "tc", cell},
    XMLElement{XMLSpace::word, "txbxContent", frame},
    XMLElement{XMLSpace::word, "del", passedOver},
    XMLElement{XMLSpace::word, "moveFrom", passedOver},
    XMLElement{XMLSpace::word, "pPr", passedOver},
    XMLElement{XMLSpace::word, "rPrChange", passedOver},
    XMLElement{XMLSpace::word, "sectPr", passedOver},
    XMLElement{XMLSpace::word, "sdtPr", passedOver},
    XMLElement{XMLSpace::word, "tblPr", passedOver},
    XMLElement{XMLSpace::word, "trPr", passedOver},
    XMLElement{XMLSpace::word, "tcPr", passedOver},
    // How the words below are pronounced.
    XMLElement{XMLSpace::word, "rt", passedOver},
};

/// As all word processors name them; by other names they are only read more slowly.
constexpr std::array formats{std::string_view("w:rPr"), std::string_view("w:pPr"),
                             std::string_view("w:tcPr")};

class WordHandler final : public XMLHandler {
public:
    explicit WordHandler(TextBuilder& text) : text_(text) {}

    bool startElement(int element, const XMLAttributes& attributes) override {
        switch (element) {
        case paragraph:
            startParagraph();
            break;
        case run:
            place_.isHidden = false;
            break;
        case hidden:
            place_.isHidden = !isFalse(attributes.value(XMLSpace::word, "val"));
            break;
        case Element::characters:
            takesCharacters_ = !place_.isHidden;
            break;
        case tab:
            append("\t");
            break;
        case lineBreak:
            text().raise(TextBuilder::Break::line);
            break;
        case hyphen:
            append("\u2011");
            break;
        case softHyphen:
            append("\u00AD");
            break;
        case row:
            text().raise(TextBuilder::Break::line);
            place_.isRowNew = true;
            break;
        case cell:
            if (!place_.isRowNew)
                text().raise(TextBuilder::Break::cell);
            place_.isRowNew = false;
            place_.isCellNew = true;
            break;
        case frame:
            outside_.push_back(place_);
            place_ = {};
            break;
        case passedOver:
            return false;
        default:
            break;
        }
        return true;
    }

    void endElement(int element) override {
        if (element == Element::characters)
            takesCharacters_ = false;
        else if (element == row)
            // Without a cell nothing else ends it.
            place_.isCellNew = false;
        else if (element == frame)
            endFrame();
        else if (element == paragraph && outside_.empty() && frames_.size() > 0)
            text_.take(frames_, TextBuilder::Break::line);
    }

    void characters(std::string_view piece) override {
        if (takesCharacters_)
            text().append(piece);
    }

    bool wantsMore() const override { return text_.size() + frames_.size() <= mostBytesOfText; }

private:
    struct Place {
        bool isHidden = false;
        /// Nothing of the row, or the cell, has come yet.
        bool isRowNew = false;
        bool isCellNew = false;
    };

    static bool isFalse(std::string_view value) { return value == "0" || value == "false" || value == "off"; }

    TextBuilder& text() { return outside_.empty() ? text_ : frames_; }

    void append(std::string_view piece) {
        if (!place_.isHidden)
            text().append(piece);
    }

    void startParagraph() {
        if (!place_.isCellNew)
            text().raise(TextBuilder::Break::line);
        place_.isCellNew = false;
    }

    void endFrame() {
        frames_.raise(TextBuilder::Break::line);
        place_ = outside_.back();
        outside_.pop_back();
    }

    TextBuilder& text_;
    /// Of the paragraph.
    TextBuilder frames_;
    Place place_;
    /// Where each frame that is open stands.
    std::vector<Place> outside_;
    bool takesCharacters_ = false;
};

void appendPart(TextBuilder& text, Package& package, std::string_view part) {
    TextBuilder story;
    WordHandler handler(story);
    XMLReader reader(elements, handler);
    MarkupSkimmer skimmer(formats, "vanish");
    package.read(part, reader, &skimmer);
    text.take(story, TextBuilder::Break::section);
}

} // namespace

void appendWordText(TextBuilder& text, Package& package, std::string_view part) {
    appendPart(text, package, part);
    const auto relationships = relationshipsOf(package, part);
    for (const std::string_view type :
         {"diagramData", "chart", "header", "footer", "footnotes", "endnotes", "comments"}) {
        for (const Relationship& each : relationships) {
            if (package.isSpent() || text.size() > mostBytesOfText)
                return;
            if (each.type != type)
                continue;
            if (type == "diagramData" || type == "chart")
                appendDrawingText(text, package, each.target);
            else
                appendPart(text, package, each.target);
        }
    }
}

} // namespace kelvo::importers
