#include "importers/svg/SVGLength.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace kelvo::importers {
namespace {

constexpr double mostPixels = 1e9;

std::optional<double> takeNumber(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n,"), text.size()));
    if (text.starts_with('+'))
        text.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || !std::isfinite(number))
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

std::optional<double> positive(double number) {
    return number > 0 && number <= mostPixels ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<double> pixelsOfSVGLength(std::string_view text) {
    constexpr double perInch = 96;
    constexpr struct {
        std::string_view name;
        double pixels;
    } units[] = {{"", 1},
                 {"px", 1},
                 {"in", perInch},
                 {"cm", perInch / 2.54},
                 {"mm", perInch / 25.4},
                 {"pt", perInch / 72},
                 {"pc", perInch / 6},
                 {"em", 16},
                 {"ex", 8}};
    const auto number = takeNumber(text);
    while (text.ends_with(' '))
        text.remove_suffix(1);
    for (const auto& unit : units) {
        if (number && text == unit.name)
            return positive(*number * unit.pixels);
    }
    return std::nullopt;
}

std::optional<SVGViewBox> viewBoxOfText(std::string_view text) {
    std::optional<double> numbers[4];
    for (auto& number : numbers)
        number = takeNumber(text);
    const auto width = positive(numbers[2].value_or(0));
    const auto height = positive(numbers[3].value_or(0));
    return numbers[0] && numbers[1] && width && height ? std::optional(SVGViewBox{*width, *height})
                                                       : std::nullopt;
}

} // namespace kelvo::importers
