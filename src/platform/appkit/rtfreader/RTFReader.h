#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/appkit/rtfreader/RTFAssembler.h"
#include "platform/appkit/rtfreader/RTFCharsets.h"
#include "platform/appkit/rtfreader/RTFDocumentInfo.h"
#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFPicture.h"
#include "platform/appkit/rtfreader/RTFScanner.h"
#include "platform/appkit/rtfreader/RTFStory.h"
#include "platform/appkit/rtfreader/RTFStyleSheet.h"
#include "platform/appkit/rtfreader/RTFWords.h"
#include "platform/foundation/NSDictionary.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvo {

class NSFileWrapper;

/// Reads one document. What is said in any order is collected first, and made into text at the end.
class RTFReader {
public:
    /// `package` holds the attachments that the source names; null: none. Both must stay valid.
    RTFReader(std::string_view source, const NSFileWrapper* package);

    /// Reads everything; called once. Never nil.
    NSAttributedString read();
    /// After read().
    NSDictionary documentAttributes() const { return info_.documentAttributes(package_ != nullptr); }

private:
    /// What the text of a group is.
    enum class Destination : std::uint8_t {
        body,
        /// Words count and text does not.
        wordsOnly,
        fontTable,
        colorTable,
        expandedColorTable,
        styleSheet,
        listTable,
        info,
        time,
        oldList,
        picture,
        packageName,
        /// Collected until the group ends; `State::word` says what for.
        captured
    };

    struct State {
        RTFCharacterState characters;
        RTFParagraphFormat paragraph;
        Destination destination = Destination::body;
        RTFWord word = RTFWord::unknown;
        /// Of `characters` and `link`, and of `paragraph`; negative until they are asked for.
        std::int32_t format = -1;
        std::int32_t paragraphFormat = -1;
        RTFCodePage codePage = RTFDocumentCodePage;
        bool isCodePageKnown = false;
        /// The sign that stands for the attachment in the eyes of other readers comes next.
        bool isPackageMarkNext = false;
        /// The field has been shown, so that its result is not.
        bool isFieldShown = false;
        std::uint8_t storyDepth = 0;
        std::int32_t unicodeSkip = 1;
        std::int32_t link = -1;
        RTFStory* story = nullptr;
    };

    State& state() { return states_.back(); }
    bool keepsStates() const { return depth_ == states_.size() - 1; }
    void openGroup();
    void closeGroup();
    void endDestination(const State& ended);
    void endCapture(RTFWord word);
    void endOldList();
    void endField();

    void readWord(const RTFToken& token);
    void readGroupWord(RTFWord word, bool isAtGroupStart);
    void readTextWord(RTFWord word, const RTFToken& token);
    void readDocumentWord(RTFWord word, const RTFToken& token);
    void readSymbol(const RTFToken& token);
    void readUnicode(std::int32_t number);
    void enter(Destination destination, RTFWord word = RTFWord::unknown);
    void enterStory(RTFWord word);
    void endStory(RTFWord word);

    void readBytes(std::string_view bytes);
    void flushBytes();
    void appendUnits(std::u16string_view units);
    void appendUnit(char16_t unit) { appendUnits({&unit, 1}); }
    void appendToBody(std::u16string_view units);
    void appendAttachment(std::shared_ptr<const NSTextAttachment> attachment);

    RTFCodePage codePage();
    std::uint32_t characterFormat();
    std::uint32_t paragraphFormat();
    void endParagraph(char16_t unit, std::int32_t level);
    void endCell(std::int32_t level);
    void endRow(std::int32_t level);

    RTFScanner scanner_;
    const NSFileWrapper* package_;
    RTFResources resources_;
    RTFStyleSheet styles_;
    RTFDocumentInfo info_;
    RTFCharsets charsets_;
    RTFStory body_;
    RTFStory notes_;
    /// Stories whose groups are open.
    std::vector<std::unique_ptr<RTFStory>> openStories_;
    std::vector<State> states_;
    /// Open groups, also those whose states are not kept.
    std::size_t depth_ = 0;

    bool isAtGroupStart_ = false;
    bool isStarred_ = false;
    bool skipsNextGroup_ = false;
    /// How many characters are still stand-ins for one of Unicode.
    std::int32_t unicodeSkip_ = 0;
    /// Bytes of a code page in which characters may take several.
    std::string bytes_;
    std::u16string units_;
    std::u16string captured_;
    /// UTF-8.
    std::string packageName_;
    bool isPackageNameEnded_ = false;
    RTFPicture picture_;
    NSSize packageSize_;
    RTFTime time_;
    RTFOldList oldList_;
    std::unordered_map<NSString, std::int32_t> linkIndices_;
    bool hasShapePicture_ = false;
    std::u16string shapeProperty_;
    std::int32_t noteNumber_ = 0;
    std::int32_t defaultFont_ = 0;
    RTFCodePage documentCodePage_ = 1252;
};

} // namespace kelvo
