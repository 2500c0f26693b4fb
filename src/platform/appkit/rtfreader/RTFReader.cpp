#include "platform/appkit/rtfreader/RTFReader.h"

#include "platform/appkit/rtfreader/RTFCharacters.h"

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

/// Where the next unit of the body stands for more than itself.
bool isControl(char16_t unit) {
    return unit < 0x20 || unit == NSAttachmentCharacter || unit == paragraphSeparator;
}

} // namespace

RTFReader::RTFReader(std::string_view source, const NSFileWrapper* package)
    : scanner_(source),
      package_(package),
      body_(resources_.cells, resources_.colors),
      notes_(resources_.cells, resources_.colors) {
    State first;
    first.story = &body_;
    states_.push_back(std::move(first));
    // Few words make more text than they are long. What is not used never becomes resident.
    body_.reserve(source.size());
}

NSAttributedString RTFReader::read() {
    for (RTFToken token = scanner_.next(); token.kind != RTFToken::Kind::end; token = scanner_.next()) {
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
    while (states_.size() > 2 || depth_ >= states_.size())
        closeGroup();
    flushBytes();
    const bool isLast = notes_.isEmpty() && !body_.hasFrames();
    if (body_.hasOpenParagraph())
        endParagraph(isLast ? u'\0' : u'\n', state().paragraph.tableLevel());
    body_.finish();
    body_.appendStory(std::move(notes_), -1);
    return RTFAssembler(resources_).textOf(body_);
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
    if (ended.destination != state().destination || ended.word != state().word)
        endDestination(ended);
    if (ended.story != state().story)
        endStory(ended.word);
}

// Words.

void RTFReader::readWord(const RTFToken& token) {
    flushBytes();
    const bool isStarred = std::exchange(isStarred_, false);
    const bool isAtGroupStart = std::exchange(isAtGroupStart_, false);
    const auto [word, kind] = rtfWordNamed(token.bytes);
    if (kind != RTFWordKind::text)
        unicodeSkip_ = 0;
    if (state().destination == Destination::packageName)
        isPackageNameEnded_ = true;
    switch (kind) {
    case RTFWordKind::unknown:
        if (isStarred)
            scanner_.skipGroup();
        break;
    case RTFWordKind::skipped:
        if (isStarred || isAtGroupStart)
            readGroupWord(word, true);
        break;
    case RTFWordKind::group:
        readGroupWord(word, isStarred || isAtGroupStart);
        break;
    case RTFWordKind::text:
        readTextWord(word, token);
        break;
    case RTFWordKind::character:
        if (state().destination == Destination::fontTable) {
            resources_.fonts.apply(word, token);
        } else if (state().destination == Destination::styleSheet) {
            styles_.apply(word, token);
        } else {
            state().characters.apply(word, token, defaultFont_);
            state().format = -1;
            state().isCodePageKnown = false;
        }
        break;
    case RTFWordKind::paragraph:
        if (state().destination == Destination::styleSheet)
            styles_.apply(word, token);
        else if (state().destination == Destination::listTable)
            resources_.lists.apply(word, token);
        else if (state().destination == Destination::body) {
            state().paragraph.apply(word, token);
            state().paragraphFormat = -1;
        }
        break;
    case RTFWordKind::row:
        // Word takes the padding at the left of cells for that at the top, and all who state the unit of it
        // follow Word, but for the platform.
        if ((word == RTFWord::clpadfl || word == RTFWord::clpadft) && info_.isOfPlatform())
            break;
        if (state().destination == Destination::body)
            state().story->rowDefinition(state().paragraph.nesting).apply(word, token);
        break;
    case RTFWordKind::document:
        readDocumentWord(word, token);
        break;
    case RTFWordKind::time:
        if (state().destination == Destination::time)
            time_.apply(word, token);
        break;
    case RTFWordKind::font:
        if (state().destination == Destination::fontTable)
            resources_.fonts.apply(word, token);
        break;
    case RTFWordKind::color:
        if (state().destination == Destination::colorTable)
            resources_.colors.apply(RTFColorTable::Part::plain, word, token);
        else if (state().destination == Destination::expandedColorTable)
            resources_.colors.apply(RTFColorTable::Part::expanded, word, token);
        break;
    case RTFWordKind::list:
        if (state().destination == Destination::listTable)
            resources_.lists.apply(word, token);
        break;
    case RTFWordKind::numbering:
        if (state().destination == Destination::oldList)
            oldList_.apply(word, token);
        break;
    case RTFWordKind::picture:
        if (state().destination == Destination::picture)
            picture_.apply(word, token);
        else if (state().destination == Destination::packageName && word == RTFWord::width)
            packageSize_.width = pointsFromTwips(std::max(token.parameter, 0));
        else if (state().destination == Destination::packageName && word == RTFWord::height)
            packageSize_.height = pointsFromTwips(std::max(token.parameter, 0));
        break;
    }
}

void RTFReader::readDocumentWord(RTFWord word, const RTFToken& token) {
    switch (word) {
    case RTFWord::ansi:
        documentCodePage_ = 1252;
        break;
    case RTFWord::mac:
        documentCodePage_ = 10000;
        break;
    case RTFWord::pc:
        documentCodePage_ = 437;
        break;
    case RTFWord::pca:
        documentCodePage_ = 850;
        break;
    case RTFWord::ansicpg:
        if (token.parameter > 0)
            documentCodePage_ = token.parameter;
        break;
    case RTFWord::deff:
        defaultFont_ = std::max(token.parameter, 0);
        state().characters = RTFCharacterState(defaultFont_);
        state().format = -1;
        break;
    default:
        info_.apply(word, token);
        return;
    }
    state().isCodePageKnown = false;
}

void RTFReader::readTextWord(RTFWord word, const RTFToken& token) {
    switch (word) {
    case RTFWord::uc:
        unicodeSkip_ = 0;
        state().unicodeSkip = std::clamp(token.parameter, 0, 1000);
        return;
    case RTFWord::u:
        unicodeSkip_ = 0;
        return readUnicode(token.parameter);
    default:
        break;
    }
    if (const char16_t unit = rtfCharacterOf(word)) {
        if (unicodeSkip_ > 0)
            --unicodeSkip_;
        else
            appendUnit(unit);
        return;
    }
    unicodeSkip_ = 0;
    if (state().destination != Destination::body)
        return;
    const std::int32_t level = state().paragraph.tableLevel();
    switch (word) {
    case RTFWord::par:
        // The end of a paragraph that does not show leaves no empty one.
        if (!state().characters.isInvisible() || state().story->hasOpenParagraph())
            endParagraph(u'\n', level);
        break;
    case RTFWord::sect:
        if (state().story->hasOpenParagraph())
            endParagraph(u'\n', level);
        break;
    case RTFWord::cell:
        endCell(1);
        break;
    case RTFWord::nestcell:
        endCell(std::max(level, 2));
        break;
    case RTFWord::row:
        endRow(1);
        break;
    case RTFWord::nestrow:
        endRow(std::max(level, 2));
        break;
    case RTFWord::chftn: {
        if (state().storyDepth == 0)
            ++noteNumber_;
        const std::string digits = std::to_string(noteNumber_);
        appendUnits(std::u16string(digits.begin(), digits.end()));
        break;
    }
    default:
        break;
    }
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
        // As a byte: it may be the second one of a character.
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
    if (unit != 0)
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
        if (!isPackageNameEnded_)
            packageName_ += bytes;
        return;
    case Destination::body:
        if (bytes_.empty() && !state().isPackageMarkNext && isPlain(bytes) && codePage() >= 0) {
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
    // Half a character is one of a font that states the wrong charset, as fonts of bullets do.
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
        return resources_.fonts.append(units);
    case Destination::colorTable:
        return resources_.colors.append(RTFColorTable::Part::plain, units);
    case Destination::expandedColorTable:
        return resources_.colors.append(RTFColorTable::Part::expanded, units);
    case Destination::styleSheet:
        return styles_.append(units);
    case Destination::captured:
        captured_ += units;
        return;
    case Destination::packageName:
        if (!isPackageNameEnded_)
            packageName_ += UTF8StringOfCharacters(units);
        return;
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
            state().story->append(units.substr(0, plain), characterFormat());
        units.remove_prefix(plain);
        if (units.empty())
            return;
        const char16_t unit = units.front();
        units.remove_prefix(1);
        // A sign for an attachment that is not there would be taken for one.
        if (unit == u'\n' || unit == u'\r' || unit == paragraphSeparator)
            endParagraph(unit, state().paragraph.tableLevel());
        else if (unit != 0 && unit != NSAttachmentCharacter)
            state().story->append({&unit, 1}, characterFormat());
    }
}

void RTFReader::appendAttachment(std::shared_ptr<const NSTextAttachment> attachment) {
    auto& attachments = resources_.attachments;
    if (attachments.size() >= maximumAttachments || state().characters.isInvisible())
        return;
    attachments.push_back(std::move(attachment));
    RTFCharacterFormat format = state().characters.effective();
    format.link = state().link;
    format.attachment = static_cast<std::int32_t>(attachments.size() - 1);
    state().story->append({&NSAttachmentCharacter, 1}, resources_.characterFormats.indexOf(format));
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
        page = resources_.fonts.currentCodePage();
        return page > 0 ? page : documentCodePage_;
    case Destination::body:
        page = resources_.fonts.codePageOf(current.characters.effectiveFont());
        break;
    case Destination::captured:
        if (current.word == RTFWord::fldinst)
            page = resources_.fonts.codePageOf(current.characters.effectiveFont());
        break;
    default:
        break;
    }
    // Who writes UTF-8 states no charset for it in the fonts.
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
        state().format = static_cast<std::int32_t>(resources_.characterFormats.indexOf(format));
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
    // Said otherwise from here on.
    format.outlineLevel = -1;
    format.nesting = 0;
    // Only then does it matter for how the paragraph looks which of the styles it has.
    if (!format.isSpacingContextual)
        format.style = 0;
    format.isInTable = false;
    const std::uint32_t index = resources_.paragraphFormats.indexOf(format);
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
