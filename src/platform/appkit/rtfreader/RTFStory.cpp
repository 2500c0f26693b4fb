#include "platform/appkit/rtfreader/RTFStory.h"

#include <algorithm>
#include <utility>

namespace kelvo {

void RTFStory::appendRun(std::size_t length, std::uint32_t format) {
    const std::size_t firstRun = paragraphs_.empty() ? 0 : paragraphs_.back().endRun;
    if (runs_.size() > firstRun && runs_.back().format == format)
        runs_.back().length += static_cast<std::uint32_t>(length);
    else
        runs_.push_back({static_cast<std::uint32_t>(length), format});
}

void RTFStory::append(std::u16string_view units, std::uint32_t format) {
    if (units.empty() || units.size() > maximumLength - units_.size())
        return;
    units_.append(units);
    appendRun(units.size(), format);
}

void RTFStory::appendASCII(std::string_view bytes, std::uint32_t format) {
    if (bytes.empty() || bytes.size() > maximumLength - units_.size())
        return;
    const std::size_t start = units_.size();
    units_.resize(start + bytes.size());
    std::ranges::transform(bytes, units_.data() + start,
                           [](char byte) { return static_cast<char16_t>(static_cast<unsigned char>(byte)); });
    appendRun(bytes.size(), format);
}

void RTFStory::endParagraph(char16_t unit, std::uint32_t characterFormat, std::uint32_t format,
                            std::int32_t level) {
    const bool isEmpty = !hasOpenParagraph() && !frames_;
    if (unit != 0)
        append({&unit, 1}, characterFormat);
    if (!hasOpenParagraph())
        return;
    const RTFCellIndex cell = tables_.paragraphEnded(level, paragraphs_.size(), isEmpty);
    paragraphs_.push_back(
        {static_cast<std::uint32_t>(units_.size()), static_cast<std::uint32_t>(runs_.size()), format, cell});
    if (frames_) {
        const std::unique_ptr<RTFStory> frames = std::move(frames_);
        appendStory(std::move(*frames), cell);
    }
}

void RTFStory::endMarker(std::uint32_t format) {
    if (!hasOpenParagraph() || units_.size() > maximumLength - 2)
        return;
    if (units_.back() == u' ')
        units_.back() = u'\t';
    else if (units_.back() != u'\t')
        append(u"\t", format);
    char16_t& first = units_[startOfParagraph()];
    if (first == u' ')
        first = u'\t';
    if (first == u'\t')
        return;
    units_.insert(startOfParagraph(), 1, u'\t');
    const auto firstRun =
        runs_.begin() + static_cast<std::ptrdiff_t>(paragraphs_.empty() ? 0 : paragraphs_.back().endRun);
    if (firstRun->format == format)
        ++firstRun->length;
    else
        runs_.insert(firstRun, {1, format});
}

void RTFStory::addFrame(RTFStory&& frame) {
    if (!frames_)
        frames_ = std::make_unique<RTFStory>(std::move(frame));
    else
        frames_->appendStory(std::move(frame), -1);
}

void RTFStory::appendStory(RTFStory&& other, RTFCellIndex cell) {
    if (other.units_.size() > maximumLength - units_.size())
        return;
    const auto firstUnit = static_cast<std::uint32_t>(units_.size());
    const auto firstRun = static_cast<std::uint32_t>(runs_.size());
    units_.append(other.units_);
    runs_.insert(runs_.end(), other.runs_.begin(), other.runs_.end());
    for (RTFParagraph paragraph : other.paragraphs_) {
        paragraph.endUnit += firstUnit;
        paragraph.endRun += firstRun;
        if (cell >= 0)
            paragraph.cell = cell;
        paragraphs_.push_back(paragraph);
    }
}

void RTFStory::finish() {
    tables_.finish();
    for (const std::size_t paragraph : tables_.takeDropped())
        paragraphs_[paragraph].isDropped = true;
    if (frames_)
        appendStory(std::move(*frames_), -1);
}

} // namespace kelvo
