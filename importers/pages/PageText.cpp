#include "importers/pages/PageText.h"

#include "importers/pages/HiddenElements.h"
#include "importers/pages/TagReader.h"
#include "markup/PlainTextHandler.h"
#include "markup/PlainTextRuns.h"
#include "markup/PlainTextTags.h"
#include "markup/TagAttributes.h"
#include "markup/TagScanner.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/units/UTF8.h"
#include "platform/foundation/units/UnitScan.h"
#include "text/CharacterSetReps.h"

#include <algorithm>

namespace kelvo::importers {
namespace {

/// The handler writes no more for each unit of the page, and a line feed for one in preformatted text.
constexpr std::size_t unitsPerUnit = 4;
constexpr std::u16string_view openingUnits = u"([{\u2018\u201C\u201E\u00AB";
constexpr std::u16string_view closingUnits = u".,;:!?)]}\u2019\u201D\u00BB";

/// The character of a numeric reference past U+FFFF, and how long the reference is; 0 for what is none.
char32_t takeSupplementaryReference(std::u16string_view text, std::size_t& length) {
    length = 2;
    const bool isHexadecimal = text.size() > 2 && (text[2] | 0x20) == u'x';
    if (isHexadecimal)
        ++length;
    char32_t number = 0;
    for (; length < text.size() && number <= 0x10FFFF; ++length) {
        const int digit = hexDigitValue(text[length]);
        if (digit < 0 || (!isHexadecimal && digit > 9))
            break;
        number = number * (isHexadecimal ? 16 : 10) + static_cast<char32_t>(digit);
    }
    if (length < text.size() && text[length] == u';')
        ++length;
    return number > 0xFFFF && number <= 0x10FFFF ? number : 0;
}

/// With characters past U+FFFF instead of the references to them, which the markup's own decoding does not know. They are
/// never markup themselves, so that it does not matter where they stand.
NSString withSupplementaryCharacters(const NSString& source) {
    const std::u16string_view all = source;
    std::u16string result;
    std::size_t copied = 0;
    for (std::size_t at = 0; at < all.size();) {
        at += firstPairOfUnits(all.data() + at, all.size() - at, u'&', u'#');
        if (at >= all.size())
            break;
        std::size_t length;
        if (const char32_t character = takeSupplementaryReference(all.substr(at), length)) {
            char16_t units[2];
            result.append(all, copied, at - copied).append(units, writeCharacter(character, units));
            copied = at + length;
        }
        at += length;
    }
    return copied == 0 ? source : NSString(std::u16string_view(result.append(all, copied)));
}

/// Blanks and empty lines are written where the markup asks for them, which nobody wants to read.
std::u16string withoutEmptyLines(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    std::size_t feeds = 0;
    bool hasSpace = false;
    for (const char16_t unit : text) {
        if (unit == u'\n') {
            ++feeds;
        } else if (unit == u' ') {
            hasSpace = true;
        } else {
            if (feeds > 0 && !result.empty())
                result.append(std::min<std::size_t>(feeds, 2), u'\n');
            else if (hasSpace && !result.empty())
                result += u' ';
            feeds = 0;
            hasSpace = false;
            result += unit;
        }
    }
    return result;
}

bool isLetter(char16_t unit) {
    return unitIsInBitmap(alphaCharacterSetRep(), unit);
}

/// The tags between two pieces of text that keep words apart. Books mark where their printed pages began with anchors,
/// in the midst of words too, and a link may be of only a part of a word.
class Anchors {
public:
    /// The tag of an anchor or a link.
    void pass(std::u16string_view tag) {
        if (tag.size() > 1 && tag[1] == u'/') {
            end(false);
            return;
        }
        const bool isLink = !attributeValueOfTag(tag, "href", false).empty();
        // An address without quotes may end in a stroke, too.
        if (!isLink && nestingEffectOfTag(tag.data(), tag.size()) == 0)
            return;
        // There are none within others.
        end(true);
        isOpen_ = isEmpty_ = true;
        isLink_ = isLink;
        ++tags_;
        areLinks_ = areLinks_ || isLink;
    }

    void passOther() { others_ = true; }

    void passText() {
        isEmpty_ = others_ = areLinks_ = false;
        tags_ = 0;
    }

    /// Whether the text before and behind them are words of their own.
    bool separate(bool isBetweenLetters) const {
        return others_ || tags_ > 1 || (tags_ == 1 && areLinks_ && !isBetweenLetters);
    }

private:
    void end(bool isImplied) {
        if (isOpen_ && isEmpty_) {
            --tags_;
        } else if (isOpen_ && !isImplied) {
            ++tags_;
            areLinks_ = areLinks_ || isLink_;
        }
        isOpen_ = false;
    }

    bool isOpen_ = false;
    /// Of the one that is open.
    bool isLink_ = false;
    bool isEmpty_ = false;
    /// Since the last text.
    int tags_ = 0;
    bool areLinks_ = false;
    bool others_ = false;
};

class PageScan {
public:
    PageScan(const NSString& source, PageFacts* facts)
        : source_(source),
          facts_(facts),
          output_(NSMutableString::stringWithCapacity(unitsPerUnit * source.length() + plainTextSlack)) {
        context_.outputStart = context_.write = context_.lineStart = output_.mutableCharacters();
        context_.convertEntities = context_.standardEntities = context_.reformat = true;
    }

    std::u16string text() {
        GetTagsOfString(source_, handle, this, false);
        return withoutEmptyLines(
            {context_.outputStart, static_cast<std::size_t>(context_.write - context_.outputStart)});
    }

private:
    static bool handle(const NSString&, char16_t* characters, std::size_t nameLocation,
                       std::size_t nameLength, std::size_t tagLocation, std::size_t tagLength,
                       std::size_t textLocation, TagKind kind, void* self) {
        auto& scan = *static_cast<PageScan*>(self);
        if (!scan.hidden_.isHidden())
            scan.writeRun(characters, textLocation, tagLocation);
        if (kind == TagKind::tag && nameLength > 0)
            scan.handleTag(characters, {nameLocation, nameLength}, {tagLocation, tagLength});
        return false;
    }

    void handleTag(char16_t* characters, NSRange nameRange, NSRange tagRange) {
        const std::u16string_view tag(characters + tagRange.location, tagRange.length);
        const LowerCaseName name(std::u16string_view(characters + nameRange.location, nameRange.length));
        // They come with all that is in them, up to their end.
        if (name == "script" || name == "style")
            return;
        const int effect = nestingEffectOfTag(tag.data(), tag.size());
        const bool opens = effect > 0, closes = effect < 0;
        if (hidden_.isHidden() && !hidden_.passTag(name, opens, closes))
            return;
        endTitle(tagRange.location);
        if (name == "svg")
            pictureDepth_ = std::max(0, pictureDepth_ + effect);
        if (!closes && facts_)
            facts_->readTag(name, tag);
        if (opens && hidden_.open(name, tag)) {
            if (facts_ && name == "title" && pictureDepth_ == 0)
                titleLocation_ = tagRange.location + tagRange.length;
            return;
        }
        writeTag(characters, nameRange, tagRange, opens);
    }

    /// The title is hidden, too: it ends where that does.
    void endTitle(std::size_t location) {
        if (titleLocation_ == NSNotFound)
            return;
        facts_->readTitle(source_.characters().substr(titleLocation_, location - titleLocation_));
        titleLocation_ = NSNotFound;
    }

    void writeTag(char16_t* characters, NSRange name, NSRange tag, bool opens) {
        const PlainTextRule rule = plainTextRuleOfTag(characters + name.location, name.length);
        if (rule == PlainTextRule::preformatted) {
            // The lines are kept here: the handler makes one of several.
            isPreformatted_ = opens;
            writeParagraphBreak(context_);
            return;
        }
        const bool hadSpace = context_.pendingSpace;
        PlainTextHandler(source_, characters, name.location, name.length, tag.location, tag.length,
                         tag.location, TagKind::tag, &context_);
        if (rule == PlainTextRule::link)
            anchors_.pass({characters + tag.location, tag.length});
        else if (rule == PlainTextRule::separation)
            anchors_.passOther();
        // Which divisions are hidden is told more closely here, and with all that is in them.
        if (rule == PlainTextRule::division)
            context_.junkDivision = false;
        isSpaceOfTag_ = context_.pendingSpace && (isSpaceOfTag_ || !hadSpace);
    }

    void writeRun(char16_t* characters, std::size_t location, std::size_t end) {
        while (isPreformatted_ && location < end) {
            const char16_t* const feed = std::find(characters + location, characters + end, u'\n');
            const auto lineEnd = static_cast<std::size_t>(feed - characters);
            writePiece(characters, location, lineEnd);
            if (lineEnd == end)
                return;
            writeLineBreak(context_);
            location = lineEnd + 1;
        }
        if (location < end)
            writePiece(characters, location, end);
    }

    /// As before a comment, which adds nothing.
    void writePiece(char16_t* characters, std::size_t location, std::size_t end) {
        // The handler keeps words apart that are links; what encloses or ends a phrase belongs to its words all the same.
        const bool isBehindOpening = context_.write > context_.outputStart &&
                                     openingUnits.find(context_.write[-1]) != openingUnits.npos;
        if (isSpaceOfTag_ &&
            (isBehindOpening || closingUnits.find(characters[location]) != closingUnits.npos ||
             !anchors_.separate(isLetter(characters[location]) && context_.write > context_.outputStart &&
                                isLetter(context_.write[-1]))))
            context_.pendingSpace = false;
        isSpaceOfTag_ = false;
        anchors_.passText();
        PlainTextHandler(source_, characters, NSNotFound, 0, end, 0, location, TagKind::comment, &context_);
    }

    const NSString& source_;
    PageFacts* facts_;
    NSMutableString output_;
    PlainTextContext context_;
    HiddenElements hidden_;
    Anchors anchors_;
    /// Behind the tag; NSNotFound where no title is open.
    std::size_t titleLocation_ = NSNotFound;
    /// Their titles are not the page's.
    int pictureDepth_ = 0;
    bool isPreformatted_ = false;
    /// The space that is due was not in the page.
    bool isSpaceOfTag_ = false;
};

} // namespace

std::u16string textOfPage(const NSString& source, PageFacts* facts) {
    const NSString page =
        withSupplementaryCharacters(source.substringToIndex(std::min(source.length(), mostUnitsOfPage)));
    return PageScan(page, facts).text();
}

} // namespace kelvo::importers
