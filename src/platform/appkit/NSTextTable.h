#pragma once

#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/Visibility.h"

#include <array>
#include <memory>
#include <optional>

namespace KELVO_PUBLIC kelvo {

/// A length of a table or cell: in points, or in percent of what surrounds it.
struct NSTextBlockLength {
    enum class Unit : unsigned char { points, percent };

    float value = 0;
    Unit unit = Unit::points;

    friend bool operator==(const NSTextBlockLength&, const NSTextBlockLength&) = default;
};

enum class NSTextBlockVerticalAlignment : unsigned char { top, middle, bottom };

/// One side of a frame.
struct NSTextBlockBorder {
    /// In points; 0 is no border.
    float width = 0;
    /// Absent: the colour of the text.
    std::optional<NSColor> color;

    friend bool operator==(const NSTextBlockBorder&, const NSTextBlockBorder&) = default;
};

/// What the cells of one table share. Two tables may be equal and are two all the same: cells belong to one
/// table when they point to the same object.
struct NSTextTable {
    int numberOfColumns = 1;
    bool collapsesBorders = false;
    /// Absent: as wide as its contents ask for.
    std::optional<NSTextBlockLength> width;
    std::optional<NSColor> backgroundColor;

    friend bool operator==(const NSTextTable&, const NSTextTable&) = default;
};

/// One cell of a table, as the paragraphs in it see it. Every cell ends with a paragraph of its own.
struct NSTextTableBlock {
    /// In the order left, top, right, bottom.
    template <typename T>
    using Edges = std::array<T, 4>;

    std::shared_ptr<const NSTextTable> table;
    /// From 0.
    int startingRow = 0;
    int startingColumn = 0;
    /// At least 1.
    int rowSpan = 1;
    int columnSpan = 1;
    /// Absent: what is left after the other columns.
    std::optional<NSTextBlockLength> width;
    Edges<NSTextBlockBorder> borders{};
    /// In points.
    Edges<float> padding{};
    std::optional<NSColor> backgroundColor;
    NSTextBlockVerticalAlignment verticalAlignment = NSTextBlockVerticalAlignment::top;

    /// Tables are compared by what they say, not by identity.
    KELVO_PUBLIC_FRIEND bool operator==(const NSTextTableBlock& left, const NSTextTableBlock& right);
};

} // namespace kelvo
