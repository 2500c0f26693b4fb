#pragma once

#include <optional>
#include <string_view>

namespace kelvo::importers {

/// A length in pixels, 96 to the inch, and 16 to an em. Absent for what depends on where the picture stands ("100%"), is
/// none, or is not above 0.
std::optional<double> pixelsOfSVGLength(std::string_view text);

/// The third and fourth of four numbers.
struct SVGViewBox {
    double width;
    double height;
};
std::optional<SVGViewBox> viewBoxOfText(std::string_view text);

} // namespace kelvo::importers
