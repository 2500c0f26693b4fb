#pragma once

#include "platform/foundation/NSGeometry.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo {

struct RTFToken;

/// The colours of a document by their numbers: one table for every reader, and one with the same numbers for
/// those who know of opacity and finer steps.
class RTFColorTable {
public:
    enum class Part : std::uint8_t { plain, expanded };

    void apply(Part part, const RTFToken& token);
    /// Text of a table: each semicolon ends an entry.
    void append(Part part, std::u16string_view units);

    /// Absent for numbers that are not in the table, and for entries that leave it to the reader.
    std::optional<NSColor> colorOf(std::int32_t number) const;

private:
    enum class Space : std::uint8_t { unknown, gray, rgb };
    struct Expanded {
        Space space = Space::unknown;
        std::uint8_t count = 0;
        std::array<std::int32_t, 4> components{};
    };

    template <float NSColor::*component>
    static void setComponent(RTFColorTable& table, const RTFToken& token);
    template <Space space>
    static void beginComponents(RTFColorTable& table, const RTFToken& token);
    static void addComponent(RTFColorTable& table, const RTFToken& token);
    static std::optional<NSColor> colorOf(const Expanded& entry);

    NSColor current_{0, 0, 0, 1};
    bool isStated_ = false;
    Expanded currentExpanded_;
    std::vector<std::optional<NSColor>> plain_;
    std::vector<std::optional<NSColor>> expanded_;
};

} // namespace kelvo
