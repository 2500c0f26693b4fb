#include "importers/office/MarkupSkimmer.h"

#include <algorithm>

namespace kelvo::importers {
namespace {

/// What is longer stays.
constexpr std::size_t longestElement = 4096;
constexpr std::size_t none = std::string_view::npos;

} // namespace

std::string_view MarkupSkimmer::read(std::string_view piece) {
    if (isOver_ && text_.empty())
        return piece;
    kept_.clear();
    text_ += piece;
    std::size_t copied = 0;
    std::size_t place = 0;
    while (!isOver_ && (place = text_.find('<', place)) != none) {
        const char next = place + 1 < text_.size() ? text_[place + 1] : '\0';
        if (next == '\0')
            break;
        // The declaration that a document begins with.
        const bool isDeclaration = next == '?' && isAtStart_ && place == 0;
        isOver_ = next == '!' || (next == '?' && !isDeclaration);
        const std::size_t end = next == 'w' ? endOfElement(place) : place;
        if (end == none)
            break;
        if (end > place) {
            kept_.append(text_, copied, place - copied);
            copied = end;
        }
        place = std::max(end, place + 1);
    }
    isAtStart_ = isAtStart_ && text_.empty();
    const std::size_t last = isOver_ || place == none ? text_.size() : place;
    kept_.append(text_, copied, last - copied);
    text_.erase(0, last);
    return kept_;
}

std::string_view MarkupSkimmer::finish() {
    kept_ = text_;
    text_.clear();
    isOver_ = true;
    return kept_;
}

std::size_t MarkupSkimmer::endOfElement(std::size_t place) const {
    const std::string_view rest = std::string_view(text_).substr(place, longestElement);
    for (const std::string_view name : names_) {
        const std::size_t length = name.size() + 2;
        if (rest.size() < length && text_.size() - place < length && name.starts_with(rest.substr(1)))
            return none;
        if (rest.size() < length || rest[length - 1] != '>' || rest.substr(1, name.size()) != name)
            continue;
        std::size_t end = length;
        do {
            end = rest.find("</", end);
            if (end == none || rest.size() - end < name.size() + 3)
                return rest.size() < longestElement ? none : place;
            end += 2;
        } while (rest.substr(end, name.size()) != name || rest[end + name.size()] != '>');
        end += name.size() + 1;
        const std::string_view inside = rest.substr(length, end - length);
        const bool stays = inside.find(wordThatCounts_) != none || inside.find("<!") != none ||
                           inside.find("<?") != none || inside.find(rest.substr(0, name.size() + 1)) != none;
        return stays ? place : place + end;
    }
    return place;
}

} // namespace kelvo::importers
