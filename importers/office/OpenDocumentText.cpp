#include "importers/office/OpenDocumentText.h"

#include "importers/office/TextLimits.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace kelvo::importers {
namespace {

constexpr int mostSpaces = 1000;

enum Element : int {
    textBody = 1,
    spreadsheetBody,
    slidesBody,
    paragraph,
    spaces,
    tab,
    lineBreak,
    section,
    pageNumber,
    shape,
    note,
    running,
    masterPage,
    page,
    notesOfPage,
    sheet,
    row,
    cell,
    trackedChanges,
    changedRegion,
    deletion,
    changeStart,
    changeEnd,
    /// Not in the text, with all that is in it.
    passedOver
};

constexpr std::array elementsOfText{
    XMLElement{XMLSpace::office, "text", textBody},
    XMLElement{XMLSpace::office, "spreadsheet", spreadsheetBody},
    XMLElement{XMLSpace::office, "presentation", slidesBody},
    XMLElement{XMLSpace::office, "drawing", slidesBody},
    XMLElement{XMLSpace::text, "p", paragraph},
    XMLElement{XMLSpace::text, "h", paragraph},
    XMLElement{XMLSpace::text, "s", spaces},
    XMLElement{XMLSpace::text, "tab", tab},
    XMLElement{XMLSpace::text, "tab-stop", tab},
    XMLElement{XMLSpace::text, "line-break", lineBreak},
    XMLElement{XMLSpace::text, "section", section},
    XMLElement{XMLSpace::text, "page-number", pageNumber},
    XMLElement{XMLSpace::draw, "frame", shape},
    XMLElement{XMLSpace::draw, "text-box", shape},
    XMLElement{XMLSpace::draw, "custom-shape", shape},
    XMLElement{XMLSpace::draw, "rect", shape},
    XMLElement{XMLSpace::draw, "ellipse", shape},
    XMLElement{XMLSpace::draw, "circle", shape},
    XMLElement{XMLSpace::draw, "line", shape},
    XMLElement{XMLSpace::draw, "polyline", shape},
    XMLElement{XMLSpace::draw, "polygon", shape},
    XMLElement{XMLSpace::draw, "regular-polygon", shape},
    XMLElement{XMLSpace::draw, "path", shape},
    XMLElement{XMLSpace::draw, "connector", shape},
    XMLElement{XMLSpace::draw, "caption", shape},
    XMLElement{XMLSpace::draw, "measure", shape},
    XMLElement{XMLSpace::text, "note-body", note},
    XMLElement{XMLSpace::text, "footnote-body", note},
    XMLElement{XMLSpace::text, "endnote-body", note},
    XMLElement{XMLSpace::office, "annotation", note},
    XMLElement{XMLSpace::style, "header", running},
    XMLElement{XMLSpace::style, "header-left", running},
    XMLElement{XMLSpace::style, "header-first", running},
    XMLElement{XMLSpace::style, "footer", running},
    XMLElement{XMLSpace::style, "footer-left", running},
    XMLElement{XMLSpace::style, "footer-first", running},
    XMLElement{XMLSpace::style, "master-page", masterPage},
    XMLElement{XMLSpace::draw, "page", page},
    XMLElement{XMLSpace::presentation, "notes", notesOfPage},
    XMLElement{XMLSpace::table, "table", sheet},
    XMLElement{XMLSpace::table, "table-row", row},
    XMLElement{XMLSpace::table, "table-cell", cell},
    XMLElement{XMLSpace::table, "covered-table-cell", passedOver},
    XMLElement{XMLSpace::table, "tracked-changes", passedOver},
    XMLElement{XMLSpace::table, "content-validations", passedOver},
    XMLElement{XMLSpace::text, "tracked-changes", trackedChanges},
    XMLElement{XMLSpace::text, "changed-region", changedRegion},
    XMLElement{XMLSpace::text, "deletion", deletion},
    XMLElement{XMLSpace::text, "change-start", changeStart},
    XMLElement{XMLSpace::text, "change-end", changeEnd},
    XMLElement{XMLSpace::text, "note-citation", passedOver},
    XMLElement{XMLSpace::text, "footnote-citation", passedOver},
    XMLElement{XMLSpace::text, "endnote-citation", passedOver},
    XMLElement{XMLSpace::text, "ruby-text", passedOver},
    XMLElement{XMLSpace::text, "hidden-text", passedOver},
    XMLElement{XMLSpace::text, "number", passedOver},
    XMLElement{XMLSpace::text, "script", passedOver},
    XMLElement{XMLSpace::office, "styles", passedOver},
    XMLElement{XMLSpace::office, "automatic-styles", passedOver},
    XMLElement{XMLSpace::office, "font-face-decls", passedOver},
    XMLElement{XMLSpace::office, "settings", passedOver},
    XMLElement{XMLSpace::office, "scripts", passedOver},
    XMLElement{XMLSpace::office, "forms", passedOver},
    XMLElement{XMLSpace::office, "binary-data", passedOver},
    XMLElement{XMLSpace::draw, "object", passedOver},
    XMLElement{XMLSpace::draw, "object-ole", passedOver},
    // What is said of a picture to those who do not see it.
    XMLElement{XMLSpace::svg, "title", passedOver},
    XMLElement{XMLSpace::svg, "desc", passedOver},
};

bool isSpace(char byte) {
    return byte == ' ' || byte == '\n' || byte == '\t' || byte == '\r';
}

/// Whether all space in it is single blanks, as in most text. Without a way out of the loop it becomes one of vectors.
bool isWellSpaced(std::string_view piece) {
    unsigned char found = 0;
    for (std::size_t index = 1; index < piece.size(); ++index)
        found |= static_cast<unsigned char>(
            static_cast<unsigned char>(static_cast<unsigned char>(piece[index - 1]) < ' ') |
            static_cast<unsigned char>(static_cast<unsigned char>(piece[index - 1] == ' ') &
                                       static_cast<unsigned char>(piece[index] == ' ')));
    return found == 0 && (piece.empty() || static_cast<unsigned char>(piece.back()) >= ' ');
}

} // namespace

std::span<const XMLElement> OpenDocumentHandler::elements() {
    return elementsOfText;
}

TextBuilder& OpenDocumentHandler::text(Target target) {
    switch (target) {
    case Target::frames:
        return frames_;
    case Target::running:
        return running_;
    case Target::aside:
        return aside_;
    case Target::nowhere:
        return nowhere_;
    default:
        return text_;
    }
}

bool OpenDocumentHandler::startElement(int element, const XMLAttributes& attributes) {
    if (isInChanges_)
        return startChange(element, attributes);
    switch (element) {
    case textBody:
    case spreadsheetBody:
    case slidesBody:
        startBody(element == textBody          ? Body::text
                  : element == spreadsheetBody ? Body::spreadsheet
                                               : Body::slides);
        break;
    case paragraph:
        startParagraph();
        break;
    case spaces:
        appendSpaces(attributes.value(XMLSpace::text, "c"));
        break;
    case tab:
        append("\t");
        break;
    case lineBreak:
        current().raise(TextBuilder::Break::line);
        beginLine();
        break;
    case section:
        return attributes.value(XMLSpace::text, "display") != "none";
    case pageNumber:
        // Of slides it was not counted when they were saved.
        return body_ != Body::slides;
    case shape:
        return startShape(attributes);
    case note:
        enter(places_.back().target == Target::nowhere ? Target::nowhere : Target::aside);
        break;
    case running:
        if (attributes.value(XMLSpace::style, "display") == "false")
            return false;
        enter(Target::running);
        break;
    case masterPage:
        enter(Target::nowhere);
        break;
    case page:
        ++slides_;
        current().raise(TextBuilder::Break::section);
        break;
    case notesOfPage:
        isInNotes_ = true;
        current().raise(TextBuilder::Break::section);
        break;
    case sheet:
        startSheet(attributes);
        break;
    case row:
        startRow();
        break;
    case cell:
        startCell();
        break;
    case trackedChanges:
        isInChanges_ = true;
        break;
    case changeStart:
        deletions_.start(attributes.value(XMLSpace::text, "change-id"));
        break;
    case changeEnd:
        deletions_.end(attributes.value(XMLSpace::text, "change-id"));
        break;
    case passedOver:
        return false;
    default:
        break;
    }
    return true;
}

void OpenDocumentHandler::endElement(int element) {
    switch (element) {
    case paragraph:
        endParagraph();
        break;
    case row:
        places_.back().isCellNew = false;
        break;
    case notesOfPage:
        isInNotes_ = false;
        break;
    case trackedChanges:
        isInChanges_ = false;
        break;
    case shape:
    case note:
    case running:
    case masterPage:
        leave();
        break;
    default:
        break;
    }
}

/// White space is one space, and none at the beginning of a paragraph.
void OpenDocumentHandler::characters(std::string_view piece) {
    if (!takesText())
        return;
    Place& place = places_.back();
    TextBuilder& target = current();
    if (isWellSpaced(piece) && !(place.isAfterSpace && piece.starts_with(' '))) {
        target.append(piece);
        place.isAfterSpace = piece.ends_with(' ');
        return;
    }
    std::size_t start = 0;
    for (std::size_t index = 0; index < piece.size(); ++index) {
        if (!isSpace(piece[index])) {
            place.isAfterSpace = false;
            continue;
        }
        if (piece[index] != ' ' || place.isAfterSpace) {
            target.append(piece.substr(start, index - start));
            if (!place.isAfterSpace)
                target.append(" ");
            start = index + 1;
        }
        place.isAfterSpace = true;
    }
    target.append(piece.substr(start));
}

bool OpenDocumentHandler::wantsMore() const {
    return text_.size() + frames_.size() + running_.size() + aside_.size() <= mostBytesOfText;
}

TextBuilder OpenDocumentHandler::takeText() {
    text_.take(frames_, TextBuilder::Break::line);
    // Those of sheets and slides are numbers of pages, mostly.
    if (body_ == Body::text)
        text_.take(running_, TextBuilder::Break::section);
    text_.take(aside_, TextBuilder::Break::section);
    return std::move(text_);
}

/// In the list of changes. What else is there is not in the text.
bool OpenDocumentHandler::startChange(int element, const XMLAttributes& attributes) {
    if (element == changedRegion) {
        changeId_ = attributes.value(XMLSpace::text, "id");
        // xml:id, whose prefix needs no declaration.
        if (changeId_.empty())
            changeId_ = attributes.value(XMLSpace::none, "id");
        return true;
    }
    if (element == deletion)
        deletions_.add(changeId_);
    return false;
}

bool OpenDocumentHandler::startShape(const XMLAttributes& attributes) {
    const std::string_view kind = attributes.value(XMLSpace::presentation, "class");
    if (kind == "page-number" || (isInNotes_ && !kind.empty() && kind != "notes"))
        return false;
    const Place& place = places_.back();
    enter(place.target == Target::body && place.paragraphs > 0 ? Target::frames : place.target);
    return true;
}

void OpenDocumentHandler::startSheet(const XMLAttributes& attributes) {
    current().raise(TextBuilder::Break::line);
    if (body_ != Body::spreadsheet)
        return;
    ++sheets_;
    current().raise(TextBuilder::Break::section);
    current().append(attributes.value(XMLSpace::table, "name"));
}

void OpenDocumentHandler::startRow() {
    current().raise(TextBuilder::Break::line);
    places_.back().isRowNew = true;
}

void OpenDocumentHandler::startCell() {
    Place& place = places_.back();
    if (!place.isRowNew)
        current().raise(TextBuilder::Break::cell);
    place.isRowNew = false;
    place.isCellNew = true;
}

void OpenDocumentHandler::startParagraph() {
    Place& place = places_.back();
    if (!place.isCellNew)
        current().raise(TextBuilder::Break::line);
    place.isCellNew = false;
    ++place.paragraphs;
    beginLine();
}

/// Behind a break that is deleted the text goes on with what stands before that.
void OpenDocumentHandler::beginLine() {
    if (!deletions_.isAnyOpen())
        places_.back().isAfterSpace = true;
}

void OpenDocumentHandler::endParagraph() {
    Place& place = places_.back();
    --place.paragraphs;
    if (place.target == Target::body && place.paragraphs == 0 && frames_.size() > 0)
        text_.take(frames_, TextBuilder::Break::line);
}

void OpenDocumentHandler::enter(Target target) {
    Place place;
    place.target = target;
    places_.push_back(place);
    current().raise(TextBuilder::Break::line);
}

void OpenDocumentHandler::leave() {
    current().raise(TextBuilder::Break::line);
    places_.pop_back();
}

void OpenDocumentHandler::append(std::string_view piece) {
    if (!takesText())
        return;
    current().append(piece);
    places_.back().isAfterSpace = false;
}

void OpenDocumentHandler::appendSpaces(std::string_view count) {
    int number = 1;
    std::from_chars(count.data(), count.data() + count.size(), number);
    append(std::string(static_cast<std::size_t>(std::clamp(number, 1, mostSpaces)), ' '));
}

} // namespace kelvo::importers
