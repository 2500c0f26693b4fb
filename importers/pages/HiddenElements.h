#pragma once

#include <cstddef>
#include <string_view>

namespace kelvo::importers {

/// Whether the text at a place of a page lies in an element that readers never see. Only one element is followed at a
/// time, the outermost that is hidden, by counting, so that no nesting costs memory.
class HiddenElements {
public:
    bool isHidden() const { return isHidden_; }

    /// For a tag that opens an element where nothing is hidden: whether the element is hidden.
    bool open(std::string_view name, std::u16string_view tag);
    /// For a tag where something is hidden: whether the hidden element ends there. That is its own end tag, or one that
    /// ends it where end tags may be left out; of a tag that opens the next element, open() is then the question.
    bool passTag(std::string_view name, bool opens, bool closes);

private:
    struct OptionalEnd;
    static const OptionalEnd optionalEnds[];

    bool endsWithout(std::string_view name, bool opens, bool closes);

    bool isHidden_ = false;
    /// Of the hidden element.
    std::string_view name_;
    char nameBuffer_[24] = {};
    /// Its contents are no markup: the first end tag ends it.
    bool isRaw_ = false;
    /// Null when its end tag cannot be left out.
    const OptionalEnd* optionalEnd_ = nullptr;
    /// How many elements of its name are open, itself included; of lists or tables within it.
    std::size_t depth_ = 0;
    std::size_t containerDepth_ = 0;
};

} // namespace kelvo::importers
