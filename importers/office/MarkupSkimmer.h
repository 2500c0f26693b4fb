#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace kelvo::importers {

/// Takes out of XML, before it is parsed, what makes up half of many documents and says nothing of their text: elements
/// without attributes by their names as they stand there ("w:rPr"), unless a word stands in them that counts. What is left
/// is as well formed as it was. Past a comment, a section of characters or an instruction nothing is taken out any more,
/// because what looks like a tag in them is none.
class MarkupSkimmer {
public:
    /// All must outlive this object.
    MarkupSkimmer(std::span<const std::string_view> names, std::string_view wordThatCounts)
        : names_(names), wordThatCounts_(wordThatCounts) {}

    /// What is to be parsed of all that has come so far and was not answered yet, valid until the next call.
    std::string_view read(std::string_view piece);
    /// The rest, after the last piece.
    std::string_view finish();

private:
    /// Past the element that begins there, or the place itself when it stays; absent (npos) when its end has not come yet.
    std::size_t endOfElement(std::size_t place) const;

    std::span<const std::string_view> names_;
    std::string_view wordThatCounts_;
    /// Begins with what has not been answered.
    std::string text_;
    std::string kept_;
    bool isAtStart_ = true;
    bool isOver_ = false;
};

} // namespace kelvo::importers
