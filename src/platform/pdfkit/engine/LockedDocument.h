#pragma once

#include <optional>
#include <string_view>

namespace kelvo {

/// In points; the corner is that at the bottom left.
struct PageBox {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

/// What an encrypted document tells without its key: in it numbers are not encrypted. Absent is what stands in a stream
/// of objects, which are, and what cannot be true.
struct LockedDocument {
    std::optional<int> pageCount;
    std::optional<PageBox> firstMediaBox;
};

/// The file is read in place.
LockedDocument readLockedDocument(std::string_view file);

} // namespace kelvo
