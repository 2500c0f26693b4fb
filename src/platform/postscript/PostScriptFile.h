#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSRange.h"

#include <optional>

namespace kelvo {

/// What a PostScript file says of itself in its first bytes and its comments. Nothing of it is interpreted, and of a file
/// that has not been read yet only both ends are.
struct PostScriptFile {
    /// Letter, as printers have it that are told nothing.
    static constexpr NSRect defaultPage{{0, 0}, {612, 792}};
    /// So much may stand before the program, as printers' job languages do.
    static constexpr std::size_t longestPreamble = 4096;
    /// A longer or shorter side is taken for none.
    static constexpr double longestSide = 200'000;
    static constexpr double shortestSide = 0.01;

    /// Absent when the bytes are no PostScript; also for files that are PDFs as well, as those of drawing programs are
    /// which are called ".ai".
    static std::optional<PostScriptFile> read(const NSData& data);

    /// A picture for other pages, rather than a document of pages.
    bool isEncapsulated = false;
    /// Where the program stands in the file: what comes before it, and the previews for systems that have no PostScript,
    /// are left out. Within the bytes, and not empty.
    NSRange program;
    /// In points; its sides are above 0. Absent when the file tells none.
    std::optional<NSRect> boundingBox;
    /// Of a document without a box: the size that its comments tell.
    std::optional<NSSize> mediaSize;

    /// What is to be seen: the bounding box, or else a page.
    NSRect page() const noexcept;
};

} // namespace kelvo
