#pragma once

#include "platform/appkit/rtfreader/RTFScanner.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

/// A control word and what it does to the state that it speaks of. Each kind of state has a table of its
/// words beside it, so that a new word is a new row in one place. Upper and lower case differ.
template <typename State>
struct RTFWord {
    std::string_view name;
    void (*apply)(State& state, const RTFToken& token);
};

/// Applies the token's word if the table has it. For short tables, or words that are few in a document.
template <typename State>
void applyRTFWord(std::span<const RTFWord<State>> words, State& state, const RTFToken& token) {
    const auto word = std::ranges::find(words, token.bytes, &RTFWord<State>::name);
    if (word != words.end())
        word->apply(state, token);
}

/// Finds words of many tables by their names. The text is full of them.
class RTFWordIndex {
public:
    /// Which of the tables, by a number of the caller's, and which of its rows.
    struct Entry {
        std::uint8_t table = 0;
        std::uint16_t row = 0;
    };

    /// Adds the names of a table's rows, which no other table has.
    void add(std::uint8_t table, const auto& rows) {
        std::uint16_t row = 0;
        for (const auto& word : rows)
            add(word.name, {table, row++});
    }
    /// Null for words that no table has.
    const Entry* find(std::string_view name) const;

private:
    /// Four times as many as there are words, so that nearly every search ends at the first that it tries.
    static constexpr std::size_t slotCount = 2048;
    struct Slot {
        std::string_view name;
        Entry entry;
    };

    static std::size_t slotOf(std::string_view name);
    void add(std::string_view name, Entry entry);

    std::array<Slot, slotCount> slots_;
};

} // namespace kelvo
