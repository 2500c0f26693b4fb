#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/NSTextList.h"
#include "platform/appkit/NSTextTable.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <string>

namespace kelvo::tests {

/// Facts one after another, with a sign between them.
class Facts {
public:
    explicit Facts(char separator) : separator_(separator) {}

    template <typename... Parts>
    void add(bool isSaid, const Parts&... parts) {
        if (!isSaid)
            return;
        if (out_.tellp() > 0)
            out_ << separator_;
        (out_ << ... << parts);
    }
    std::string text() const { return out_.str(); }

private:
    char separator_;
    std::ostringstream out_;
};

inline std::string hexadecimal(const NSColor& rgb) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "#%02x%02x%02x", static_cast<unsigned>(rgb.red * 255 + 0.5F),
                  static_cast<unsigned>(rgb.green * 255 + 0.5F),
                  static_cast<unsigned>(rgb.blue * 255 + 0.5F));
    return digits;
}

inline std::string factsOfParagraph(const NSParagraphStyle& style) {
    Facts facts(' ');
    constexpr const char* alignments[] = {"left", "right", "center", "justified", ""};
    facts.add(style.alignment != NSTextAlignment::natural, alignments[static_cast<int>(style.alignment)]);
    facts.add(style.baseWritingDirection == NSWritingDirection::rightToLeft, "rtl");
    facts.add(style.headerLevel != 0, "h", style.headerLevel);
    facts.add(style.firstLineHeadIndent != 0 || style.headIndent != 0, "indent ", style.firstLineHeadIndent,
              "/", style.headIndent);
    facts.add(style.tailIndent != 0, "tail ", style.tailIndent);
    facts.add(style.paragraphSpacingBefore != 0, "before ", style.paragraphSpacingBefore);
    facts.add(style.paragraphSpacing != 0, "after ", style.paragraphSpacing);
    constexpr const char* edges[] = {"left", "above", "right", "below"};
    for (std::size_t edge = 0; edge < style.borders.size(); ++edge)
        facts.add(style.borders[edge].width > 0, "line ", edges[edge]);
    facts.add(style.minimumLineHeight != 0, "line ", style.minimumLineHeight);
    for (const auto& list : style.textLists)
        facts.add(true, list->markerFormat.UTF8String());
    for (const auto& cell : style.textBlocks) {
        facts.add(true, "cell ", cell->startingRow, ",", cell->startingColumn);
        facts.add(cell->rowSpan > 1 || cell->columnSpan > 1, "spans ", cell->rowSpan, ",", cell->columnSpan);
        facts.add(true, "of ", cell->table->numberOfColumns);
    }
    return facts.text();
}

inline std::string factsOfRun(const NSTextAttributes& run) {
    Facts facts(';');
    facts.add(run.font.familyName != NSString(u"Times"), run.font.familyName.UTF8String());
    facts.add(run.font.pointSize != 12, run.font.pointSize);
    facts.add(run.font.isBold, "bold");
    facts.add(run.font.isItalic, "italic");
    facts.add(run.foregroundColor.has_value(), hexadecimal(run.foregroundColor.value_or(NSColor{})));
    facts.add(run.backgroundColor.has_value(), "on ", hexadecimal(run.backgroundColor.value_or(NSColor{})));
    facts.add(run.underlineStyle != 0, "under");
    facts.add(run.strikethroughStyle != 0, "strike");
    facts.add(run.superscript != 0, "super ", run.superscript);
    facts.add(run.kern != 0, "kern ", run.kern);
    facts.add(!run.link.isNil(), "to ", run.link.UTF8String());
    if (run.attachment)
        facts.add(true, run.attachment->fileWrapper->preferredFilename().UTF8String(), " ",
                  run.attachment->displaySize.width, "x", run.attachment->displaySize.height);
    return facts.text();
}

/// One line a paragraph: the text with visible breaks, and each run's attributes that are not those of plain
/// Times 12. For comparing readers with what they should have read.
inline std::string describe(const NSAttributedString& text) {
    if (text.isNil())
        return "(nil)";
    std::string result;
    bool isAtStart = true;
    for (const auto& run : text.runs()) {
        std::u16string_view units = text.string().characters().substr(run.range.location, run.range.length);
        while (!units.empty()) {
            const std::u16string_view part =
                units.substr(0, std::min(units.find(u'\n'), units.size() - 1) + 1);
            units.remove_prefix(part.size());
            const std::string paragraph = isAtStart ? factsOfParagraph(run.attributes->style()) : "";
            if (!paragraph.empty())
                result += "[" + paragraph + "] ";
            const std::string facts = part == u"\n" ? "" : factsOfRun(*run.attributes);
            if (!facts.empty())
                result += "{" + facts + ":";
            isAtStart = part.back() == u'\n';
            for (const char unit : NSString(part.substr(0, part.size() - isAtStart)).UTF8String())
                unit == '\t' ? result += "\\t" : result += unit;
            result += facts.empty() ? "" : "}";
            result += isAtStart ? "\n" : "";
        }
    }
    return result;
}

} // namespace kelvo::tests
