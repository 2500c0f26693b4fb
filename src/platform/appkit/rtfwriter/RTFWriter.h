#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/appkit/rtfwriter/RTFHeadTables.h"
#include "platform/appkit/rtfwriter/RTFOutput.h"
#include "platform/foundation/NSDictionary.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace kelvo {

/// What the document says of itself, from the group of its title to the interval of its tabs.
void writeRTFDocumentAttributes(const NSDictionary& attributes, RTFOutput& output);

/// Writes one text as an RTF document, in time that grows with its length.
class RTFWriter {
public:
    /// Takes an attachment in and gives the name of its file, as bytes; empty leaves it out.
    using NameAttachment = std::function<std::string(const NSTextAttachment&)>;

    RTFWriter(const NSAttributedString& text, NameAttachment nameAttachment);

    /// The whole document. To be called once.
    std::string write(const NSDictionary& documentAttributes);

private:
    /// A paragraph includes the line feed that ends it.
    struct Paragraph {
        std::size_t start = 0;
        std::size_t end = 0;
        /// The run that holds its first unit.
        std::size_t run = 0;
        /// Never null.
        const NSParagraphStyle* style = nullptr;
    };
    /// The attributes that hold from where they are stated until they are stated anew; -1 is not yet. The
    /// rest (background, superscript and the like) is stated in a group of each run, because not every reader
    /// knows the words that end them.
    struct CharacterFormat {
        std::int32_t font = -1;
        std::int32_t size = -1;
        std::int32_t foreground = -1;
        NSUnderlineStyle underline = NSUnderlineStyleNone;
        bool isBold = false;
        bool isItalic = false;
    };

    bool takeParagraph(Paragraph& paragraph);
    void writeParagraphs(std::span<const Paragraph> paragraphs, std::size_t depth, std::int32_t width);
    void writeTable(std::span<const Paragraph> paragraphs, std::size_t depth, std::int32_t width);
    /// `endsCell`: it is the last of its cell.
    void writeParagraph(const Paragraph& paragraph, std::size_t depth, bool endsCell);
    /// The end of a cell that has no text of its own there.
    void endCell(std::size_t depth);
    void stateParagraph(const NSParagraphStyle& style, std::size_t depth, RTFListNumbers::Place place);
    void forgetParagraph();
    /// `run` is the run with the first unit or one before it, and afterwards that of the last unit.
    void writeUnits(std::size_t start, std::size_t end, std::size_t& run);
    void writeRun(const NSTextAttributes& attributes, std::u16string_view units);
    void writeAttachment(const NSTextAttachment& attachment, const std::string& name);
    void enterLink(const NSString& link);
    void closeLink();
    void restore(const CharacterFormat& format);
    void stateCharacters(const NSTextAttributes& attributes);
    CharacterFormat formatOf(const NSTextAttributes& attributes);
    /// False when there is nothing to state, and then there is no group to be closed.
    bool openGroup(const NSTextAttributes& attributes);

    NSAttributedString text_;
    NSString string_;
    std::u16string_view units_;
    std::span<const NSAttributedString::Run> runs_;
    NameAttachment nameAttachment_;

    RTFOutput body_;
    RTFFontNumbers fonts_;
    RTFColorNumbers colors_;
    RTFListNumbers lists_;

    std::size_t position_ = 0;
    std::size_t run_ = 0;
    CharacterFormat format_;
    const NSTextAttributes* statedAttributes_ = nullptr;
    const NSParagraphStyle* statedStyle_ = nullptr;
    std::size_t statedDepth_ = 0;
    RTFListNumbers::Place statedPlace_;
    /// \pard and its words in force.
    RTFOutput paragraphWords_;
    RTFOutput scratch_;
    /// Nil outside links.
    NSString link_;
    CharacterFormat formatBeforeLink_;
};

} // namespace kelvo
