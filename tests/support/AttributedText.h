#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/NSTextList.h"
#include "platform/appkit/NSTextTable.h"

#include <cstdio>
#include <string>

namespace kelvo::tests {

/// One line a paragraph: the text with visible breaks, and each run's attributes that are not those of plain
/// Times 12. For comparing readers with what they should have read.
inline std::string describe(const NSAttributedString& text) {
    if (text.isNil())
        return "(nil)";
    const auto number = [](float value) {
        std::string digits = std::to_string(value);
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.')
            digits.pop_back();
        return digits;
    };
    const auto color = [](const NSColor& rgb) {
        char digits[16];
        std::snprintf(digits, sizeof digits, "#%02x%02x%02x", static_cast<unsigned>(rgb.red * 255 + 0.5F),
                      static_cast<unsigned>(rgb.green * 255 + 0.5F),
                      static_cast<unsigned>(rgb.blue * 255 + 0.5F));
        return std::string(digits);
    };
    std::string result;
    bool isAtStart = true;
    for (const auto& run : text.runs()) {
        const NSTextAttributes& own = *run.attributes;
        const NSParagraphStyle& style = own.style();
        std::u16string_view units = text.string().characters().substr(run.range.location, run.range.length);
        while (!units.empty()) {
            const std::size_t lineFeed = units.find(u'\n');
            const std::u16string_view part =
                units.substr(0, lineFeed == std::u16string_view::npos ? lineFeed : lineFeed + 1);
            units.remove_prefix(part.size());
            if (isAtStart) {
                std::string facts;
                constexpr const char* alignments[] = {"left ", "right ", "center ", "justified ", ""};
                facts += alignments[static_cast<int>(style.alignment)];
                if (style.baseWritingDirection == NSWritingDirection::rightToLeft)
                    facts += "rtl ";
                if (style.headerLevel)
                    facts += "h" + std::to_string(style.headerLevel) + " ";
                if (style.firstLineHeadIndent != 0 || style.headIndent != 0)
                    facts +=
                        "indent " + number(style.firstLineHeadIndent) + "/" + number(style.headIndent) + " ";
                if (style.tailIndent != 0)
                    facts += "tail " + number(style.tailIndent) + " ";
                if (style.paragraphSpacingBefore != 0)
                    facts += "before " + number(style.paragraphSpacingBefore) + " ";
                if (style.paragraphSpacing != 0)
                    facts += "after " + number(style.paragraphSpacing) + " ";
                if (style.minimumLineHeight != 0)
                    facts += "line " + number(style.minimumLineHeight) + " ";
                for (const auto& list : style.textLists)
                    facts += list->markerFormat.UTF8String() + " ";
                for (const auto& cell : style.textBlocks) {
                    facts += "cell " + std::to_string(cell->startingRow) + "," +
                             std::to_string(cell->startingColumn);
                    if (cell->rowSpan > 1 || cell->columnSpan > 1)
                        facts += " spans " + std::to_string(cell->rowSpan) + "," +
                                 std::to_string(cell->columnSpan);
                    facts += " of " + std::to_string(cell->table->numberOfColumns) + " ";
                }
                if (!facts.empty())
                    result += "[" + facts.substr(0, facts.size() - 1) + "] ";
            }
            std::string facts;
            if (own.font.familyName != NSString(u"Times"))
                facts += own.font.familyName.UTF8String() + ";";
            if (own.font.pointSize != 12)
                facts += number(own.font.pointSize) + ";";
            if (own.font.isBold)
                facts += "bold;";
            if (own.font.isItalic)
                facts += "italic;";
            if (own.foregroundColor)
                facts += color(*own.foregroundColor) + ";";
            if (own.backgroundColor)
                facts += "on " + color(*own.backgroundColor) + ";";
            if (own.underlineStyle)
                facts += "under;";
            if (own.strikethroughStyle)
                facts += "strike;";
            if (own.superscript)
                facts += "super " + std::to_string(own.superscript) + ";";
            if (own.kern != 0)
                facts += "kern " + number(own.kern) + ";";
            if (!own.link.isNil())
                facts += "to " + own.link.UTF8String() + ";";
            if (own.attachment)
                facts += own.attachment->fileWrapper->preferredFilename().UTF8String() + " " +
                         number(own.attachment->displaySize.width) + "x" +
                         number(own.attachment->displaySize.height) + ";";
            const std::string shown = NSString(part).UTF8String();
            if (shown == "\n")
                facts.clear();
            if (!facts.empty())
                result += "{" + facts.substr(0, facts.size() - 1) + ":";
            for (const char unit : shown) {
                if (unit == '\t')
                    result += "\\t";
                else if (unit != '\n')
                    result += unit;
            }
            if (!facts.empty())
                result += "}";
            isAtStart = part.back() == u'\n';
            if (isAtStart)
                result += "\n";
        }
    }
    return result;
}

} // namespace kelvo::tests
