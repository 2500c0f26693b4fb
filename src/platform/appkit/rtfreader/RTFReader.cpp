#include "platform/appkit/rtfreader/RTFReader.h"

#include "platform/appkit/rtfreader/RTFCharacters.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/NSCharacterSet.h"
#include "platform/ledger/RequestNotes.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

/// Groups whose formats are restored at their ends; deeper ones are counted.
constexpr std::size_t maximumStates = 1024;
constexpr std::size_t maximumAttachments = 1 << 18;
constexpr char16_t paragraphSeparator = 0x2029;

/// Whether each byte is a printable ASCII character.
bool isPlain(std::string_view bytes) {
    unsigned odd = 0;
    for (const char byte : bytes)
        odd |= static_cast<unsigned char>(static_cast<unsigned char>(byte) - 0x20) > 0x5E;
    return odd == 0;
}

/// Whether the unit does more in the body than add a character.
bool isControl(char16_t unit) {
    return unit < 0x20 || unit == NSAttachmentCharacter || unit == paragraphSeparator;
}

/// Whose words they are.
enum WordTable : std::uint8_t {
    charactersTable,
    paragraphsTable,
    rowsTable,
    bordersTable,
    signsTable,
    bodyTable,
    readerTable,
    groupsTable,
    documentTable
};

} // namespace

RTFReader::RTFReader(std::string_view source, const NSFileWrapper* package)
    : scanner_(source),
      package_(package),
      body_(definitions_.cells, definitions_.colors),
      notes_(definitions_.cells, definitions_.colors) {
    State first;
    first.story = &body_;
    states_.push_back(std::move(first));
    // Hardly any word makes more text than its own length. Memory that stays untouched never becomes
    // resident.
    body_.reserve(source.size());
}

NSAttributedString RTFReader::read() {
    RTFToken token = scanner_.next();
    for (; token.kind != RTFToken::Kind::end; token = scanner_.next()) {
        if (token.kind == RTFToken::Kind::groupClose && depth_ <= 1)
            break;
        switch (token.kind) {
        case RTFToken::Kind::groupOpen:
            openGroup();
            break;
        case RTFToken::Kind::groupClose:
            closeGroup();
            break;
        case RTFToken::Kind::word:
            readWord(token);
            break;
        case RTFToken::Kind::symbol:
            readSymbol(token);
            break;
        case RTFToken::Kind::hexByte: {
            isAtGroupStart_ = false;
            const char byte = static_cast<char>(token.parameter);
            if (state().destination != Destination::picture)
                readBytes({&byte, 1});
            break;
        }
        case RTFToken::Kind::text:
            isAtGroupStart_ = isAtGroupStart_ && token.bytes.find_first_not_of(' ') == std::string_view::npos;
            readBytes(token.bytes);
            break;
        case RTFToken::Kind::binary:
            flushBytes();
            if (unicodeSkip_ > 0)
                --unicodeSkip_;
            else if (state().destination == Destination::picture)
                picture_.appendBytes(token.bytes);
            break;
        case RTFToken::Kind::end:
            break;
        }
    }
    if (token.kind == RTFToken::Kind::end)
        noteOutcome(Outcome::answered, u"the rich text has no end; the last of it may be missing");
    while (states_.size() > 2 || depth_ >= states_.size())
        closeGroup();
    flushBytes();
    const bool isLast = notes_.isEmpty() && !body_.hasFrames();
    if (body_.hasOpenParagraph())
        endParagraph(isLast ? u'\0' : u'\n', state().paragraph.tableLevel());
    body_.finish();
    body_.appendStory(std::move(notes_), -1);
    return RTFAssembler(definitions_).textOf(body_);
}

void RTFReader::openGroup() {
    flushBytes();
    unicodeSkip_ = 0;
    isAtGroupStart_ = true;
    isStarred_ = false;
    ++depth_;
    if (states_.size() < maximumStates && depth_ == states_.size())
        states_.push_back(states_.back());
    if (std::exchange(skipsNextGroup_, false))
        scanner_.skipGroup();
}

void RTFReader::closeGroup() {
    flushBytes();
    unicodeSkip_ = 0;
    isAtGroupStart_ = isStarred_ = skipsNextGroup_ = false;
    if (depth_-- != states_.size() - 1)
        return;
    // What a note or a frame says of its last paragraph ends with its group, often before the paragraph does.
    if (states_.size() > 1 && state().story != states_[states_.size() - 2].story &&
        state().story->hasOpenParagraph())
        endParagraph(u'\n', 0);
    const State ended = std::move(states_.back());
    states_.pop_back();
    const bool isOwnGroup = ended.destination != state().destination || ended.group != state().group;
    if (isOwnGroup && ended.group && ended.group->end)
        ended.group->end(*this, ended);
    if (ended.story != state().story)
        endStory(ended.group && ended.group->name == "footnote");
}

// Words.

const RTFWordIndex& RTFReader::wordIndex() {
    static const RTFWordIndex index = [] {
        RTFWordIndex all;
        all.add(charactersTable, RTFCharacterState::words());
        all.add(paragraphsTable, RTFParagraphFormat::words());
        all.add(rowsTable, RTFRowDefinition::words());
        all.add(bordersTable, RTFBorder::words());
        all.add(signsTable, rtfCharacterWords());
        all.add(bodyTable, bodyWords());
        all.add(readerTable, words());
        all.add(groupsTable, groupWords());
        all.add(documentTable, RTFDocumentInfo::words());
        return all;
    }();
    return index;
}

void RTFReader::readWord(const RTFToken& token) {
    flushBytes();
    const bool isStarred = std::exchange(isStarred_, false);
    const bool isAtGroupStart = std::exchange(isAtGroupStart_, false);
    const RTFWordIndex::Entry* const entry = wordIndex().find(token.bytes);
    if (entry && entry->table == signsTable) {
        if (state().destination == Destination::packageName)
            packageMark_.apply(token);
        if (unicodeSkip_ > 0)
            --unicodeSkip_;
        else
            appendUnit(rtfCharacterWords()[entry->row].unit);
        return;
    }
    unicodeSkip_ = 0;
    const Destination destination = state().destination;
    if (destination == Destination::packageName)
        packageMark_.apply(token);
    if (!entry) {
        if (isStarred)
            scanner_.skipGroup();
        else
            readDestinationWord(token);
        return;
    }
    switch (entry->table) {
    case charactersTable:
        if (destination == Destination::fontTable)
            return readDestinationWord(token);
        RTFCharacterState::words()[entry->row].apply(state().characters, token);
        state().format = -1;
        state().isCodePageKnown = false;
        if (destination == Destination::styleSheet)
            styles_.addCharacterWord(entry->row, token);
        break;
    case paragraphsTable:
        if (destination == Destination::styleSheet)
            styles_.addParagraphWord(entry->row, token);
        if (destination != Destination::body)
            return readDestinationWord(token);
        RTFParagraphFormat::words()[entry->row].apply(state().paragraph, token);
        state().paragraphFormat = -1;
        if (info_.leavesOutInherited() && token.bytes == "s")
            setStyle(token.parameter);
        break;
    case rowsTable:
        // Word takes the padding at the left of cells for that at the top, and every writer that states its
        // unit follows Word, except the platform.
        if (info_.isOfPlatform() && token.bytes.starts_with("clpadf"))
            break;
        if (destination != Destination::body)
            break;
        state().paragraph.openBorders = 0;
        RTFRowDefinition::words()[entry->row].apply(state().story->rowDefinition(state().paragraph.nesting),
                                                    token);
        break;
    case bordersTable:
        if (destination == Destination::body)
            readBorderWord(RTFBorder::words()[entry->row], token);
        break;
    case bodyTable:
        if (destination == Destination::body)
            bodyWords()[entry->row].apply(*this, token);
        else
            readDestinationWord(token);
        break;
    case readerTable:
        words()[entry->row].apply(*this, token);
        break;
    case groupsTable:
        readGroupWord(groupWords()[entry->row], isStarred || isAtGroupStart);
        break;
    case documentTable:
        RTFDocumentInfo::words()[entry->row].apply(info_, token);
        break;
    }
}

void RTFReader::readBorderWord(const RTFWord<RTFBorder>& word, const RTFToken& token) {
    RTFParagraphFormat& paragraph = state().paragraph;
    if (paragraph.openBorders != 0) {
        paragraph.applyToBorders(word, token);
        state().paragraphFormat = -1;
    } else if (RTFBorder* const border = state().story->rowDefinition(paragraph.nesting).border()) {
        word.apply(*border, token);
    }
}

/// Words that have a meaning of their own where the group is not text of the document.
void RTFReader::readDestinationWord(const RTFToken& token) {
    switch (state().destination) {
    case Destination::fontTable:
        return definitions_.fonts.apply(token);
    case Destination::colorTable:
        return definitions_.colors.apply(RTFColorTable::Part::plain, token);
    case Destination::expandedColorTable:
        return definitions_.colors.apply(RTFColorTable::Part::expanded, token);
    case Destination::styleSheet:
        return styles_.apply(token);
    case Destination::listTable:
        return definitions_.lists.apply(token);
    case Destination::time:
        return time_.apply(token);
    case Destination::oldList:
        return oldList_.apply(token);
    case Destination::picture:
        return picture_.apply(token);
    default:
        return;
    }
}

template <RTFCodePage page>
void RTFReader::setDocumentCodePage(RTFReader& reader, const RTFToken&) {
    reader.documentCodePage_ = page;
    reader.state().isCodePageKnown = false;
}

template <std::size_t edge>
void RTFReader::setShapeEdge(RTFReader& reader, const RTFToken& token) {
    reader.state().shape[edge] = token.parameter;
}

std::span<const RTFWord<RTFReader>> RTFReader::words() {
    using Reader = RTFReader;
    static constexpr RTFWord<Reader> words[] = {
        {"ansi", setDocumentCodePage<1252>},
        {"mac", setDocumentCodePage<10000>},
        {"pc", setDocumentCodePage<437>},
        {"pca", setDocumentCodePage<850>},
        {"ansicpg",
         [](Reader& reader, const RTFToken& token) {
             if (token.parameter > 0)
                 reader.documentCodePage_ = token.parameter;
             reader.state().isCodePageKnown = false;
         }},
        {"deff",
         [](Reader& reader, const RTFToken& token) {
             reader.defaultFont_ = std::max(token.parameter, 0);
             reader.setPlain();
         }},
        {"plain", [](Reader& reader, const RTFToken&) { reader.setPlain(); }},
        {"uc",
         [](Reader& reader, const RTFToken& token) {
             reader.state().unicodeSkip = std::clamp(token.parameter, 0, 1000);
         }},
        {"u", [](Reader& reader, const RTFToken& token) { reader.readUnicode(token.parameter); }},
        {"shpleft", setShapeEdge<0>},
        {"shptop", setShapeEdge<1>},
        {"shpright", setShapeEdge<2>},
        {"shpbottom", setShapeEdge<3>},
    };
    return words;
}

std::span<const RTFWord<RTFReader>> RTFReader::bodyWords() {
    using Reader = RTFReader;
    static constexpr RTFWord<Reader> words[] = {
        {"par",
         [](Reader& reader, const RTFToken&) {
             // The end of a paragraph that does not show leaves no empty one.
             if (!reader.state().characters.isInvisible() || reader.state().story->hasOpenParagraph())
                 reader.endParagraph(u'\n', reader.state().paragraph.tableLevel());
         }},
        {"sect",
         [](Reader& reader, const RTFToken&) {
             if (reader.state().story->hasOpenParagraph())
                 reader.endParagraph(u'\n', reader.state().paragraph.tableLevel());
         }},
        {"cell", [](Reader& reader, const RTFToken&) { reader.endCell(1); }},
        {"nestcell",
         [](Reader& reader, const RTFToken&) {
             reader.endCell(std::max(reader.state().paragraph.tableLevel(), 2));
         }},
        {"row", [](Reader& reader, const RTFToken&) { reader.endRow(1); }},
        {"nestrow",
         [](Reader& reader, const RTFToken&) {
             reader.endRow(std::max(reader.state().paragraph.tableLevel(), 2));
         }},
        {"cs",
         [](Reader& reader, const RTFToken& token) {
             if (!reader.info_.leavesOutInherited())
                 return;
             reader.styles_.applyCharacterStyle(token.parameter, reader.state().characters);
             reader.state().format = -1;
             reader.state().isCodePageKnown = false;
         }},
        {"chftn",
         [](Reader& reader, const RTFToken&) {
             if (reader.state().storyDepth == 0)
                 ++reader.noteNumber_;
             const std::string digits = std::to_string(reader.noteNumber_);
             reader.appendUnits(std::u16string(digits.begin(), digits.end()));
         }},
    };
    return words;
}

void RTFReader::setPlain() {
    // Such a writer calls every marker plain and means that it looks like its paragraph.
    if (info_.leavesOutInherited() && state().group && state().group->name == "listtext")
        return;
    state().characters = RTFCharacterState(defaultFont_);
    state().format = -1;
    state().isCodePageKnown = false;
}

void RTFReader::setStyle(std::int32_t number) {
    const RTFStyleSheet::Formats* const formats = styles_.formatsOf(number, defaultFont_);
    if (!formats)
        return;
    State& current = state();
    current.characters = formats->characters;
    current.format = -1;
    current.isCodePageKnown = false;
    // Where the paragraph stands, the text says.
    RTFParagraphFormat paragraph = formats->paragraph;
    paragraph.style = number;
    paragraph.isInTable = current.paragraph.isInTable;
    paragraph.nesting = current.paragraph.nesting;
    paragraph.list = current.paragraph.list;
    paragraph.listLevel = current.paragraph.listLevel;
    paragraph.oldList = current.paragraph.oldList;
    current.paragraph = std::move(paragraph);
}

void RTFReader::readSymbol(const RTFToken& token) {
    const char symbol = static_cast<char>(token.parameter);
    if (symbol == '*') {
        isStarred_ = isAtGroupStart_;
        return;
    }
    isAtGroupStart_ = false;
    switch (symbol) {
    case '\\':
    case '{':
    case '}':
        // As a byte, because it may be the second half of a two-byte character.
        return readBytes({&symbol, 1});
    case '\n':
        flushBytes();
        unicodeSkip_ = 0;
        if (state().destination == Destination::body)
            endParagraph(u'\n', state().paragraph.tableLevel());
        return;
    default:
        break;
    }
    flushBytes();
    const char16_t unit = rtfCharacterOfSymbol(symbol);
    if (unit == 0)
        return;
    if (unicodeSkip_ > 0)
        --unicodeSkip_;
    else
        appendUnit(unit);
}

void RTFReader::readUnicode(std::int32_t number) {
    unicodeSkip_ = state().unicodeSkip;
    if (number > 0xFFFF && number <= 0x10FFFF) {
        const std::int32_t offset = number - 0x10000;
        const char16_t units[] = {static_cast<char16_t>(0xD800 + (offset >> 10)),
                                  static_cast<char16_t>(0xDC00 + (offset & 0x3FF))};
        return appendUnits({units, 2});
    }
    const auto unit = static_cast<char16_t>(number);
    // In the documents of others a line end that is stated like that means nothing: the end of a form's field.
    const bool isLineEnd = unit == u'\n' || unit == u'\r';
    if (unit != 0 && (!isLineEnd || info_.isOfPlatform()))
        appendUnit(charsets_.unitOfSign(unit, codePage()));
}

// Text.

void RTFReader::readBytes(std::string_view bytes) {
    if (unicodeSkip_ > 0) {
        const std::size_t skipped = std::min(bytes.size(), static_cast<std::size_t>(unicodeSkip_));
        unicodeSkip_ -= static_cast<std::int32_t>(skipped);
        bytes.remove_prefix(skipped);
    }
    if (bytes.empty())
        return;
    switch (state().destination) {
    case Destination::picture:
        return picture_.appendHexDigits(bytes);
    case Destination::packageName:
        return packageMark_.appendName(bytes);
    case Destination::body:
        if (bytes_.empty() && !state().isPackageMarkNext && isPlain(bytes) && codePage() >= 0 &&
            state().characters.capitals() == Capitals::asWritten) {
            if (!state().characters.isInvisible())
                state().story->appendASCII(bytes, characterFormat());
            return;
        }
        break;
    case Destination::wordsOnly:
    case Destination::info:
    case Destination::time:
    case Destination::oldList:
    case Destination::listTable:
        return;
    default:
        break;
    }
    if (!charsets_.isSingleByte(codePage())) {
        bytes_ += bytes;
        return;
    }
    units_.clear();
    charsets_.decode(bytes, codePage(), units_);
    appendUnits(units_);
}

void RTFReader::flushBytes() {
    if (bytes_.empty())
        return;
    units_.clear();
    charsets_.decode(bytes_, codePage(), units_);
    // Half a character means that the font states the wrong charset, as fonts of bullets do.
    if (units_.ends_with(u'\uFFFD') && !charsets_.isSingleByte(codePage())) {
        units_.pop_back();
        charsets_.decode(std::string_view(bytes_).substr(bytes_.size() - 1), 1252, units_);
    }
    bytes_.clear();
    appendUnits(units_);
}

void RTFReader::appendUnits(std::u16string_view units) {
    switch (state().destination) {
    case Destination::body:
        return appendToBody(units);
    case Destination::fontTable:
        return definitions_.fonts.append(units);
    case Destination::colorTable:
        return definitions_.colors.append(RTFColorTable::Part::plain, units);
    case Destination::expandedColorTable:
        return definitions_.colors.append(RTFColorTable::Part::expanded, units);
    case Destination::styleSheet:
        return styles_.append(units);
    case Destination::captured:
        captured_ += units;
        return;
    case Destination::packageName:
        return packageMark_.appendName(UTF8StringOfCharacters(units));
    default:
        return;
    }
}

void RTFReader::appendToBody(std::u16string_view units) {
    if (!units.empty() && std::exchange(state().isPackageMarkNext, false) && units.front() >= 0x80)
        units.remove_prefix(1);
    if (state().characters.isInvisible())
        return;
    while (!units.empty()) {
        const auto control = std::ranges::find_if(units, isControl);
        const auto plain = static_cast<std::size_t>(control - units.begin());
        if (plain > 0)
            appendCharacters(units.substr(0, plain));
        units.remove_prefix(plain);
        if (units.empty())
            return;
        const char16_t unit = units.front();
        units.remove_prefix(1);
        // U+FFFC in the source is dropped: without an attachment it would look like one.
        if (unit == u'\n' || unit == u'\r' || unit == paragraphSeparator)
            endParagraph(unit, state().paragraph.tableLevel());
        else if (unit != 0 && unit != NSAttachmentCharacter)
            state().story->append({&unit, 1}, characterFormat());
    }
}

/// Attributed text knows no capitals that are not written as such.
void RTFReader::appendCharacters(std::u16string_view units) {
    const Capitals capitals = state().characters.capitals();
    if (capitals == Capitals::asWritten)
        return state().story->append(units, characterFormat());
    const NSCharacterSet& lowercase = NSCharacterSet::lowercaseLetterCharacterSet();
    while (!units.empty()) {
        const bool isSmall = capitals == Capitals::small && lowercase.characterIsMember(units.front());
        const auto end =
            capitals == Capitals::all ? units.end() : std::ranges::find_if(units, [&](char16_t unit) {
                return lowercase.characterIsMember(unit) != isSmall;
            });
        const std::u16string_view piece(units.begin(), end);
        NSMutableString raised = NSMutableString::stringWithCharacters(piece);
        CFStringUppercase(raised);
        std::uint32_t format = characterFormat();
        if (isSmall) {
            RTFCharacterFormat smaller = definitions_.characterFormats[format];
            smaller.size = smaller.size * 4 / 5;
            format = definitions_.characterFormats.indexOf(smaller);
        }
        state().story->append(raised.characters(), format);
        units.remove_prefix(piece.size());
    }
}

void RTFReader::appendAttachment(std::shared_ptr<const NSTextAttachment> attachment) {
    auto& attachments = definitions_.attachments;
    if (attachments.size() >= maximumAttachments || state().characters.isInvisible())
        return;
    attachments.push_back(std::move(attachment));
    RTFCharacterFormat format = state().characters.effective();
    format.link = state().link;
    format.attachment = static_cast<std::int32_t>(attachments.size() - 1);
    state().story->append({&NSAttachmentCharacter, 1}, definitions_.characterFormats.indexOf(format));
}

// Formats.

RTFCodePage RTFReader::codePage() {
    State& current = state();
    if (current.isCodePageKnown)
        return current.codePage;
    RTFCodePage page = RTFDocumentCodePage;
    switch (current.destination) {
    case Destination::fontTable:
        // Changes from entry to entry.
        page = definitions_.fonts.currentCodePage();
        return page > 0 ? page : documentCodePage_;
    case Destination::body:
        page = definitions_.fonts.codePageOf(current.characters.effectiveFont());
        break;
    case Destination::captured:
        if (current.group && current.group->name == "fldinst")
            page = definitions_.fonts.codePageOf(current.characters.effectiveFont());
        break;
    default:
        break;
    }
    // Writers of UTF-8 have no charset to state for it in the font table, and state 0.
    if (page == RTFDocumentCodePage || (page == 1252 && documentCodePage_ == 65001))
        page = documentCodePage_;
    current.codePage = page;
    current.isCodePageKnown = true;
    return page;
}

std::uint32_t RTFReader::characterFormat() {
    if (state().format < 0) {
        RTFCharacterFormat format = state().characters.effective();
        format.link = state().link;
        state().format = static_cast<std::int32_t>(definitions_.characterFormats.indexOf(format));
    }
    return static_cast<std::uint32_t>(state().format);
}

std::uint32_t RTFReader::paragraphFormat() {
    if (state().paragraphFormat >= 0)
        return static_cast<std::uint32_t>(state().paragraphFormat);
    RTFParagraphFormat format = state().paragraph;
    const int level = format.outlineLevel >= 0 ? headerLevelOfOutlineLevel(format.outlineLevel)
                                               : styles_.headerLevelOf(format.style);
    format.headerLevel = static_cast<std::int8_t>(level);
    // From here on headerLevel and the cell say these.
    format.outlineLevel = -1;
    format.nesting = 0;
    // The style only decides about spaces between neighbours; formats that differ in nothing else are one.
    if (!format.isSpacingContextual)
        format.style = 0;
    format.isInTable = false;
    const std::uint32_t index = definitions_.paragraphFormats.indexOf(format);
    state().paragraphFormat = static_cast<std::int32_t>(index);
    return index;
}

void RTFReader::endParagraph(char16_t unit, std::int32_t level) {
    state().story->endParagraph(unit, characterFormat(), paragraphFormat(), level);
}

void RTFReader::endCell(std::int32_t level) {
    endParagraph(u'\n', level);
    state().story->endCell(level);
}

void RTFReader::endRow(std::int32_t level) {
    if (state().story->hasOpenParagraph())
        endCell(level);
    state().story->endRow(level);
}

} // namespace kelvo
