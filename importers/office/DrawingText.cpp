#include "importers/office/DrawingText.h"

#include "importers/office/TextLimits.h"

#include <algorithm>
#include <array>

namespace kelvo::importers {
namespace {

enum Element : int { paragraph = 1, characters, lineBreak, row, cell, shape, placeholder, body, passedOver };

constexpr std::array elements{
    XMLElement{XMLSpace::drawing, "p", paragraph},
    XMLElement{XMLSpace::drawing, "t", characters},
    XMLElement{XMLSpace::math, "t", characters},
    XMLElement{XMLSpace::drawing, "br", lineBreak},
    XMLElement{XMLSpace::drawing, "tr", row},
    XMLElement{XMLSpace::drawing, "tc", cell},
    XMLElement{XMLSpace::slides, "sp", shape},
    XMLElement{XMLSpace::slides, "ph", placeholder},
    XMLElement{XMLSpace::slides, "txBody", body},
    // Of a comment.
    XMLElement{XMLSpace::slides, "cm", paragraph},
    XMLElement{XMLSpace::slides, "text", characters},
    XMLElement{XMLSpace::drawing, "pPr", passedOver},
    XMLElement{XMLSpace::drawing, "rPr", passedOver},
};

constexpr std::array notOfBody{std::string_view("hdr"), std::string_view("ftr"), std::string_view("dt")};

class DrawingHandler final : public XMLHandler {
public:
    DrawingHandler(TextBuilder& text, Placeholders placeholders) : text_(text), placeholders_(placeholders) {}

    bool startElement(int element, const XMLAttributes& attributes) override {
        switch (element) {
        case paragraph:
            if (!isCellNew_)
                text_.raise(TextBuilder::Break::line);
            isCellNew_ = false;
            break;
        case Element::characters:
            takesCharacters_ = true;
            break;
        case lineBreak:
            text_.raise(TextBuilder::Break::line);
            break;
        case row:
            text_.raise(TextBuilder::Break::line);
            isRowNew_ = true;
            break;
        case cell:
            if (!isRowNew_)
                text_.raise(TextBuilder::Break::cell);
            isRowNew_ = false;
            isCellNew_ = true;
            break;
        case shape:
            isShown_ = true;
            break;
        case placeholder:
            isShown_ = shows(attributes.value(XMLSpace::none, "type"));
            break;
        case body:
            return isShown_;
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
            isCellNew_ = false;
    }

    void characters(std::string_view piece) override {
        if (takesCharacters_)
            text_.append(piece);
    }

    bool wantsMore() const override { return text_.size() <= mostBytesOfText; }

private:
    bool shows(std::string_view type) const {
        return type != "sldNum" && (placeholders_ == Placeholders::shown ||
                                    std::ranges::find(notOfBody, type) == notOfBody.end());
    }

    TextBuilder& text_;
    Placeholders placeholders_;
    bool takesCharacters_ = false;
    bool isShown_ = true;
    /// Nothing of the row, or the cell, has come yet.
    bool isRowNew_ = false;
    bool isCellNew_ = false;
};

} // namespace

void appendDrawingText(TextBuilder& text, Package& package, std::string_view part,
                       Placeholders placeholders) {
    TextBuilder drawing;
    DrawingHandler handler(drawing, placeholders);
    XMLReader reader(elements, handler);
    package.read(part, reader);
    text.take(drawing, TextBuilder::Break::section);
}

} // namespace kelvo::importers
