#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::cli {

/// What a file is for the operations: which of them fit it, and how long they may take.
enum class FileKind : std::uint8_t {
    html,
    webArchive,
    richText,
    officeDocument,
    plainText,
    pdf,
    postScript,
    image,
    movie,
    audio,
    folder,
    other
};

/// "HTML page", "PDF", …
std::string_view nameOfKind(FileKind kind);

/// By the first bytes where they tell, else by the extension; text that no extension claims is plain text.
FileKind kindOfContents(std::string_view firstBytes, std::string_view fileName);

/// The same for a file or folder on the disk; what cannot be read is judged by its name alone.
FileKind kindOfFile(const std::string& name);

/// Whether the service may need its longer budgets for such a file: web pages have 15 s to load, walks
/// through the pages of a PDF 60 s.
bool isSlowKind(FileKind kind);

} // namespace kelvo::cli
