#include "importers/office/SheetText.h"

#include "importers/office/DrawingText.h"
#include "importers/office/TextLimits.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

namespace kelvo::importers {
namespace {

constexpr std::size_t mostSheets = 1'000'000;
constexpr std::size_t mostSharedStrings = 4'000'000;

enum Element : int { sheet = 1, item, characters, row, cell, comment, value, passedOver };

struct Sheet {
    std::string name;
    std::string identifier;
};

class WorkbookHandler final : public XMLHandler {
public:
    static constexpr std::array elements{XMLElement{XMLSpace::sheet, "sheet", sheet}};

    bool startElement(int element, const XMLAttributes& attributes) override {
        if (element == sheet)
            sheets.push_back({std::string(attributes.value(XMLSpace::none, "name")),
                              std::string(attributes.value(XMLSpace::documentRelationships, "id"))});
        return true;
    }
    void endElement(int) override {}
    void characters(std::string_view) override {}
    bool wantsMore() const override { return sheets.size() < mostSheets; }

    std::vector<Sheet> sheets;
};

/// The strings of cells, each once.
class SharedStrings final : public XMLHandler {
public:
    static constexpr std::array elements{
        XMLElement{XMLSpace::sheet, "si", item}, XMLElement{XMLSpace::sheet, "t", Element::characters},
        // How the words are pronounced.
        XMLElement{XMLSpace::sheet, "rPh", passedOver}, XMLElement{XMLSpace::sheet, "rPr", passedOver}};

    /// Empty when there is none.
    std::string_view at(std::size_t index) const {
        if (index >= starts_.size())
            return {};
        const std::size_t end = index + 1 < starts_.size() ? starts_[index + 1] : all_.size();
        return std::string_view(all_).substr(starts_[index], end - starts_[index]);
    }

    bool startElement(int element, const XMLAttributes&) override {
        if (element == item)
            starts_.push_back(all_.size());
        takesCharacters_ = element == Element::characters;
        return element != passedOver;
    }
    void endElement(int) override { takesCharacters_ = false; }
    void characters(std::string_view piece) override {
        if (takesCharacters_)
            all_ += piece;
    }
    bool wantsMore() const override {
        return all_.size() <= mostBytesOfText && starts_.size() < mostSharedStrings;
    }

private:
    std::string all_;
    std::vector<std::size_t> starts_;
    bool takesCharacters_ = false;
};

/// With the digits that somebody sees who looks at it: 0.1 is stored as 0.10000000000000001.
std::string shownNumber(std::string_view stored) {
    constexpr std::size_t mostDigits = 15;
    double number = 0;
    const auto [end, error] = std::from_chars(stored.data(), stored.data() + stored.size(), number);
    if (stored.size() <= mostDigits || error != std::errc() || end != stored.data() + stored.size())
        return std::string(stored);
    char shown[32];
    std::snprintf(shown, sizeof shown, "%.15g", number);
    return shown;
}

class SheetHandler final : public XMLHandler {
public:
    static constexpr std::array elements{
        XMLElement{XMLSpace::sheet, "row", row},
        XMLElement{XMLSpace::sheet, "c", cell},
        XMLElement{XMLSpace::sheet, "v", value},
        XMLElement{XMLSpace::sheet, "t", value},
        // Of a part with comments.
        XMLElement{XMLSpace::sheet, "comment", row},
        XMLElement{XMLSpace::sheet, "text", comment},
        XMLElement{XMLSpace::sheet, "rPh", passedOver},
        XMLElement{XMLSpace::sheet, "rPr", passedOver},
        XMLElement{XMLSpace::sheet, "headerFooter", passedOver},
    };

    SheetHandler(TextBuilder& text, const SharedStrings& strings) : text_(text), strings_(strings) {}

    bool startElement(int element, const XMLAttributes& attributes) override {
        if (element == row) {
            text_.raise(TextBuilder::Break::line);
        } else if (element == cell || element == comment) {
            type_ = element == cell ? attributes.value(XMLSpace::none, "t") : "str";
            value_.clear();
        }
        takesCharacters_ = element == value;
        return element != passedOver;
    }

    void endElement(int element) override {
        takesCharacters_ = false;
        if (element != cell && element != comment)
            return;
        text_.raise(TextBuilder::Break::cell);
        if (type_ == "s")
            appendShared();
        else if (type_ == "b")
            text_.append(value_ == "0" || value_ == "false" ? "FALSE" : value_.empty() ? "" : "TRUE");
        else if (type_.empty() || type_ == "n")
            text_.append(shownNumber(value_));
        else
            text_.append(value_);
        value_.clear();
    }

    void characters(std::string_view piece) override {
        if (takesCharacters_)
            value_ += piece;
    }

    bool wantsMore() const override { return text_.size() + value_.size() <= mostBytesOfText; }

    /// What there is of a cell that is too long, or does not end.
    void finish() {
        if (!value_.empty())
            endElement(cell);
    }

private:
    void appendShared() {
        std::size_t index = 0;
        const auto [end, error] = std::from_chars(value_.data(), value_.data() + value_.size(), index);
        if (error == std::errc() && end == value_.data() + value_.size())
            text_.append(strings_.at(index));
    }

    TextBuilder& text_;
    const SharedStrings& strings_;
    std::string type_;
    std::string value_;
    bool takesCharacters_ = false;
};

void appendPart(TextBuilder& text, Package& package, std::string_view part, const SharedStrings& strings) {
    SheetHandler handler(text, strings);
    XMLReader reader(SheetHandler::elements, handler);
    package.read(part, reader);
    handler.finish();
}

} // namespace

std::size_t appendSheetText(TextBuilder& text, Package& package, std::string_view part) {
    WorkbookHandler workbook;
    XMLReader reader(WorkbookHandler::elements, workbook);
    package.read(part, reader);
    const auto relationships = relationshipsOf(package, part);
    SharedStrings strings;
    XMLReader readerOfStrings(SharedStrings::elements, strings);
    package.read(targetByType(relationships, "sharedStrings"), readerOfStrings);
    const TargetsByIdentifier targets(relationships);
    for (const Sheet& each : workbook.sheets) {
        if (package.isSpent() || text.size() > mostBytesOfText)
            break;
        text.raise(TextBuilder::Break::section);
        text.append(each.name);
        text.raise(TextBuilder::Break::line);
        const std::string target = targets.at(each.identifier);
        appendPart(text, package, target, strings);
        for (const Relationship& related : relationshipsOf(package, target)) {
            if (related.type == "comments") {
                text.raise(TextBuilder::Break::line);
                appendPart(text, package, related.target, strings);
            } else if (related.type == "drawing") {
                appendDrawingText(text, package, related.target);
            }
        }
    }
    return workbook.sheets.size();
}

} // namespace kelvo::importers
