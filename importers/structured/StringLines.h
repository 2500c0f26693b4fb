#pragma once

#include "importers/support/Importer.h"

#include <string>
#include <string_view>
#include <unordered_set>

namespace kelvo::importers {

/// The text that strings and keys make, in UTF-8.
class StringLines {
public:
    void addKey(std::string_view key) {
        if (keys_.size() < mostKeys && keys_.emplace(key).second)
            addString(key);
    }

    void addString(std::string_view text) {
        if (text.empty() || isFull())
            return;
        if (!text_.empty())
            text_ += '\n';
        text_ += text;
    }

    bool isFull() const { return text_.size() > mostBytes; }
    const std::string& text() const { return text_; }

private:
    static constexpr std::size_t mostKeys = 65'536;
    /// The longest text that is kept has no more.
    static constexpr std::size_t mostBytes = 3 * mostUnitsOfText;

    std::string text_;
    std::unordered_set<std::string> keys_;
};

} // namespace kelvo::importers
