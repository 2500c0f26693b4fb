#pragma once

#include <string>
#include <string_view>

namespace kelvo::importers {

/// The path that a reference in the part leads to: "xl/worksheets/sheet1.xml" from "worksheets/sheet1.xml" in
/// "xl/workbook.xml". It does not leave the package.
std::string pathOfReference(std::string_view part, std::string_view reference);

} // namespace kelvo::importers
