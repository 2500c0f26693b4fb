#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"

#include <cstddef>

namespace kelvo {

/// How long PDFDataOfPostScript() may take.
inline constexpr double secondsForPostScript = 10;
/// Longer files are not interpreted.
inline constexpr std::size_t longestPostScript = std::size_t{256} << 20;

/// The first page of a PostScript file (PostScriptFile.h) as a PDF of one page. Its size is that one, in points, and what
/// is to be seen of the file fills it: the bounding box or page of the file, scaled where it is of another size.
///
/// Nil when the size is none, and when the program in the file fails, draws no page, or takes more than the time or 512 MiB:
/// plumwick-postscript-engine interprets it, which lets it read nothing but fonts and write nothing; what became of it is
/// noted with the current request, and so is which file it wanted. Runs the current run loop.
NSData PDFDataOfPostScript(const NSData& postscript, NSSize size, double seconds = secondsForPostScript);

} // namespace kelvo
