#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo::importers {

/// One property: "item1.TEL;TYPE=home:+1 2".
struct ContentLine {
    /// In upper case, without the group.
    std::string name;
    /// Their names in upper case; those of the old versions that have no name stand under "".
    std::vector<std::pair<std::string, std::string>> parameters;
    /// Without folds, in UTF-8, and with its escapes.
    std::string value;

    /// The first with that name; empty when there is none.
    std::string_view parameter(std::string_view name) const;
};

/// The properties of a file one after the other.
class ContentLineReader {
public:
    explicit ContentLineReader(std::string_view bytes);

    /// Absent at the end. Lines that are none are passed over, and of long ones the rest is.
    std::optional<ContentLine> next();

private:
    std::string takeUnfolded();

    std::string_view rest_;
};

/// A text value without its escapes.
std::string textOfValue(std::string_view value);

/// The parts of a value between separators that are not escaped, without their escapes; some may be empty.
std::vector<std::string> partsOfValue(std::string_view value, char separator);

} // namespace kelvo::importers
