#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo::importers {

/// Where texts of several sources come together, in UTF-8. A break is written when text follows it, and of several the
/// greatest: there are no empty lines but those between sections.
class TextBuilder {
public:
    enum class Break : std::uint8_t { none, cell, line, section };

    void append(std::string_view text) {
        if (text.empty())
            return;
        constexpr std::string_view breaks[] = {"", "\t", "\n", "\n\n"};
        if (!text_.empty())
            text_ += breaks[static_cast<std::size_t>(break_)];
        break_ = Break::none;
        text_ += text;
    }

    void raise(Break least) { break_ = std::max(break_, least); }

    /// What of the other is there goes to the end of this one; that is empty then.
    void take(TextBuilder& other, Break before) {
        raise(before);
        if (text_.empty())
            text_ = std::move(other.text_);
        else
            append(other.text_);
        raise(before);
        other = {};
    }

    std::size_t size() const { return text_.size(); }
    const std::string& text() const { return text_; }

private:
    std::string text_;
    Break break_ = Break::none;
};

} // namespace kelvo::importers
