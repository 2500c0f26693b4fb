#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/appkit/rtfreader/RTFAssembler.h"
#include "platform/appkit/rtfreader/RTFCharsets.h"
#include "platform/appkit/rtfreader/RTFDocumentInfo.h"
#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFPackageMark.h"
#include "platform/appkit/rtfreader/RTFPicture.h"
#include "platform/appkit/rtfreader/RTFScanner.h"
#include "platform/appkit/rtfreader/RTFStory.h"
#include "platform/appkit/rtfreader/RTFStyleSheet.h"
#include "platform/appkit/rtfreader/RTFWords.h"
#include "platform/foundation/NSDictionary.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvo {

class NSFileWrapper;

/// Reads one document. RTF may say what a thing looks like before or after it, so everything is collected
/// first and made into attributed text at the end.
class RTFReader {
public:
    /// `package` holds the attachments that the source names; null: none. Both must stay valid.
    RTFReader(std::string_view source, const NSFileWrapper* package);

    /// Reads everything; called once. Never nil.
    NSAttributedString read();
    /// After read().
    NSDictionary documentAttributes() const { return info_.documentAttributes(package_ != nullptr); }

private:
    using Capitals = RTFCharacterState::Capitals;

    /// What becomes of the text in a group.
    enum class Destination : std::uint8_t {
        body,
        /// Words are read, text is not.
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
        /// Collected until the group ends, and then what its word makes of it.
        captured
    };

    struct State;
    /// A word at the start of a group, which says what the group is.
    struct GroupWord {
        std::string_view name;
        /// The destinations in which it counts, as bits. In others its group is passed over.
        std::uint32_t places = 0;
        /// False says that the group is to be passed over.
        bool (*begin)(RTFReader& reader, const GroupWord& word) = nullptr;
        /// Null when there is nothing to do.
        void (*end)(RTFReader& reader, const State& ended) = nullptr;
    };
    struct State {
        RTFCharacterState characters;
        RTFParagraphFormat paragraph;
        Destination destination = Destination::body;
        /// The word of the innermost group that began something of its own; null when there is none.
        const GroupWord* group = nullptr;
        /// Indices of the pooled formats of `characters` with `link`, and of `paragraph`; negative until
        /// somebody asks for them.
        std::int32_t format = -1;
        std::int32_t paragraphFormat = -1;
        RTFCodePage codePage = RTFDocumentCodePage;
        bool isCodePageKnown = false;
        /// The character comes next that other readers show in place of the attachment.
        bool isPackageMarkNext = false;
        /// The field is in the text already, so its result is left out.
        bool isFieldShown = false;
        std::uint8_t storyDepth = 0;
        std::int32_t unicodeSkip = 1;
        std::int32_t link = -1;
        /// The left, top, right and bottom edge of the shape around it, in twips.
        std::array<std::int32_t, 4> shape{};
        RTFStory* story = nullptr;
    };

    State& state() { return states_.back(); }
    bool keepsStates() const { return depth_ == states_.size() - 1; }
    void openGroup();
    void closeGroup();
    void endOldList();
    void endField();
    void endPicture();
    void endPackageMark();

    /// Words of the reader's own: those that count everywhere, and those that count in the text.
    static std::span<const RTFWord<RTFReader>> words();
    static std::span<const RTFWord<RTFReader>> bodyWords();
    static std::span<const GroupWord> groupWords();
    static const RTFWordIndex& wordIndex();
    void readWord(const RTFToken& token);
    void readDestinationWord(const RTFToken& token);
    void readBorderWord(const RTFWord<RTFBorder>& word, const RTFToken& token);
    void readGroupWord(const GroupWord& word, bool isAtGroupStart);
    void readSymbol(const RTFToken& token);
    void readUnicode(std::int32_t number);
    template <Destination destination>
    static bool enter(RTFReader& reader, const GroupWord& word);
    static bool enterStory(RTFReader& reader, const GroupWord& word);
    static bool readOn(RTFReader&, const GroupWord&) { return true; }
    template <std::size_t edge>
    static void setShapeEdge(RTFReader& reader, const RTFToken& token);
    template <RTFCodePage page>
    static void setDocumentCodePage(RTFReader& reader, const RTFToken& token);
    void endStory(bool isNote);

    void readBytes(std::string_view bytes);
    void flushBytes();
    void appendUnits(std::u16string_view units);
    void appendUnit(char16_t unit) { appendUnits({&unit, 1}); }
    void appendCharacters(std::u16string_view units);
    void appendToBody(std::u16string_view units);
    void appendAttachment(std::shared_ptr<const NSTextAttachment> attachment);

    RTFCodePage codePage();
    std::uint32_t characterFormat();
    std::uint32_t paragraphFormat();
    void setPlain();
    void setStyle(std::int32_t number);
    void endParagraph(char16_t unit, std::int32_t level);
    void endCell(std::int32_t level);
    void endRow(std::int32_t level);

    RTFScanner scanner_;
    const NSFileWrapper* package_;
    RTFDefinitions definitions_;
    RTFStyleSheet styles_;
    RTFDocumentInfo info_;
    RTFCharsets charsets_;
    RTFStory body_;
    RTFStory notes_;
    /// Notes and frames whose groups are open.
    std::vector<std::unique_ptr<RTFStory>> openStories_;
    std::vector<State> states_;
    /// How many groups are open, including those too deep for their states to be kept.
    std::size_t depth_ = 0;

    bool isAtGroupStart_ = false;
    bool isStarred_ = false;
    bool skipsNextGroup_ = false;
    /// How many of the next characters only stand in for the last Unicode one.
    std::int32_t unicodeSkip_ = 0;
    /// Bytes of a code page in which characters may take several.
    std::string bytes_;
    std::u16string units_;
    std::u16string captured_;
    RTFPackageMark packageMark_;
    RTFPicture picture_;
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
