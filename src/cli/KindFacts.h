#pragma once

#include "platform/filekinds/FileKind.h"

#include <string_view>

namespace kelvo::cli {

/// "HTML page", "PDF", … Kinds that are the same to people share a name.
std::string_view nameOfKind(FileKind kind);

/// Whether the service may need its longer budgets for such a file: web pages have 15 s to load, walks
/// through the pages of a PDF 60 s.
bool isSlowKind(FileKind kind);

} // namespace kelvo::cli
