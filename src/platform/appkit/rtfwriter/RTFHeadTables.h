#pragma once

#include "platform/appkit/NSFont.h"
#include "platform/appkit/NSTextList.h"
#include "platform/foundation/NSGeometry.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace kelvo {

class RTFOutput;

// What the head of an RTF document lists and its text names by number. Numbers are given as the text asks for
// them, so that the head is written last.

class RTFFontNumbers {
public:
    /// There is always a font 0.
    RTFFontNumbers() { numberOfFont(NSFont()); }
    /// Family and pitch count; size and style are for the text to say.
    std::int32_t numberOfFont(const NSFont& font);
    void write(RTFOutput& output) const;

private:
    struct Entry {
        NSString family;
        bool isFixedPitch;
    };
    std::vector<Entry> entries_;
    std::array<std::unordered_map<NSString, std::int32_t>, 2> numbers_;
};

/// Components are kept to 1/100000, beside the 1/255 that every reader knows.
class RTFColorNumbers {
public:
    /// 0 for no colour, which is the automatic one.
    std::int32_t numberOfColor(const std::optional<NSColor>& color);
    /// The table of 8-bit components, and the one with opacity.
    void write(RTFOutput& output) const;

private:
    using Components = std::array<std::int32_t, 4>;
    static Components componentsOf(const NSColor& color);

    // Colour 1 is white in every document of the platform.
    std::vector<Components> entries_{{100000, 100000, 100000, 100000}};
    std::map<Components, std::int32_t> numbers_{{entries_.front(), 1}};
};

class RTFListNumbers {
public:
    using Path = std::vector<std::shared_ptr<const NSTextList>>;
    /// Word and its kin have no more levels.
    static constexpr std::size_t maximumLevels = 9;
    struct Place {
        /// From 1; 0 for an empty path.
        std::int32_t list = 0;
        std::int32_t level = 0;

        friend bool operator==(const Place&, const Place&) = default;
    };

    /// In twips.
    struct Indents {
        std::int32_t head = 0;
        std::int32_t firstLine = 0;
    };

    /// The lists of a paragraph from the outermost to the innermost, of which the first maximumLevels count.
    /// A level gets the indents of its first paragraph, because for some readers they count more than those
    /// that the paragraph states.
    Place placeOfLists(const Path& path, Indents indents);
    /// Writes nothing when there are no lists.
    void write(RTFOutput& output) const;

private:
    struct Level {
        std::shared_ptr<const NSTextList> list;
        std::optional<Indents> indents;
        /// A paragraph of an outer level has come since, after which readers begin to count anew: a list that
        /// looks the same may take the place of this one.
        bool isOver = false;
    };
    using Levels = std::vector<Level>;

    std::optional<std::int32_t> listThatFits(const Path& path) const;
    static void writeLevel(const Level& level, std::size_t depth, std::int32_t identifier, RTFOutput& output);

    /// By number less 1.
    std::vector<Levels> lists_;
    /// By the outermost list: the numbers of those that begin with it.
    std::unordered_map<const NSTextList*, std::vector<std::int32_t>> byOutermost_;
    Path lastPath_;
    Place lastPlace_;
};

} // namespace kelvo
