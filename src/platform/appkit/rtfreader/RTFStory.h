#pragma once

#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFTableBuilder.h"
#include "platform/foundation/LargePages.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvo {

/// The formats of a document, each kept once, by index.
template <typename Format>
class RTFFormatPool {
public:
    /// Past so many, which no document has, further text takes the format that came last.
    static constexpr std::size_t maximumFormats = 1 << 18;

    std::uint32_t indexOf(const Format& format) {
        if (indices_.size() >= maximumFormats) {
            const auto found = indices_.find(format);
            return found == indices_.end() ? static_cast<std::uint32_t>(formats_.size() - 1) : found->second;
        }
        const auto [entry, isNew] = indices_.try_emplace(format, static_cast<std::uint32_t>(formats_.size()));
        if (isNew)
            formats_.push_back(&entry->first);
        return entry->second;
    }
    const Format& operator[](std::uint32_t index) const { return *formats_[index]; }

private:
    std::unordered_map<Format, std::uint32_t, typename Format::Hash> indices_;
    std::vector<const Format*> formats_;
};

// Documents can have millions of both, so they are kept small.

struct RTFRun {
    std::uint32_t length;
    std::uint32_t format;
};

struct RTFParagraph {
    /// One past its last unit, and one past its last run.
    std::uint32_t endUnit;
    std::uint32_t endRun;
    std::uint32_t format;
    RTFCellIndex cell;
    bool isDropped = false;
};

/// One stream of text: that of the document, of a note or of a frame.
class RTFStory {
public:
    /// The longest text that the platform can hold; what comes after is dropped.
    static constexpr std::size_t maximumLength = maximumSizeInBytes / sizeof(char16_t);

    RTFStory(RTFCells& cells, const RTFColorTable& colors) : tables_(cells, colors) {}

    void reserve(std::size_t length) {
        units_.reserve(std::min(length, maximumLength));
        preferLargePages(units_.data(), units_.capacity() * sizeof(char16_t));
    }
    void append(std::u16string_view units, std::uint32_t format);
    /// The bytes are ASCII.
    void appendASCII(std::string_view bytes, std::uint32_t format);
    /// Ends the paragraph with the unit; 0 is none.
    void endParagraph(char16_t unit, std::uint32_t characterFormat, std::uint32_t format, std::int32_t level);
    /// The open paragraph so far is the marker of its list: it is put between two tabs, however the writer
    /// set it apart. Tabs that were missing get the format.
    void endMarker(std::uint32_t format);
    void endCell(std::int32_t level) { tables_.cellEnded(level); }
    void endRow(std::int32_t level) { tables_.rowEnded(level); }
    RTFRowDefinition& rowDefinition(std::int32_t level) { return tables_.definition(level); }
    bool hasOpenParagraph() const { return units_.size() > startOfParagraph(); }
    bool isEmpty() const { return units_.empty(); }
    const RTFParagraph* lastParagraph() const { return paragraphs_.empty() ? nullptr : &paragraphs_.back(); }

    /// Puts a finished frame after the paragraph that is open now.
    void addFrame(RTFStory&& frame);
    bool hasFrames() const { return frames_ != nullptr; }
    /// Appends a finished story; `cell` is the cell for all of it, -1 leaves its paragraphs where they are.
    void appendStory(RTFStory&& other, RTFCellIndex cell);
    /// No paragraph is open.
    void finish();

    std::u16string_view units() const { return units_; }
    const std::vector<RTFRun>& runs() const { return runs_; }
    const std::vector<RTFParagraph>& paragraphs() const { return paragraphs_; }

private:
    std::size_t startOfParagraph() const { return paragraphs_.empty() ? 0 : paragraphs_.back().endUnit; }
    void appendRun(std::size_t length, std::uint32_t format);

    std::u16string units_;
    std::vector<RTFRun> runs_;
    std::vector<RTFParagraph> paragraphs_;
    RTFTableBuilder tables_;
    std::unique_ptr<RTFStory> frames_;
};

} // namespace kelvo
