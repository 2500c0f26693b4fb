#pragma once

#include "markup/PlainTextContext.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// What PlainTextHandler writes.

/// One line feed, or two; drops an over-long line before it when junk is removed.
void writeLineBreak(PlainTextContext& context);
void writeParagraphBreak(PlainTextContext& context);

/// The output is empty or ends in white space.
bool endsInWhiteSpace(const PlainTextContext& context);

/// Decodes the run as the context asks and writes it with the white space that belongs before it. `readable`
/// units from the run's first one may be read, no fewer than it has. The run itself is not changed.
void writeTextRun(PlainTextContext& context, std::u16string_view run, std::size_t readable);

/// The run with its references decoded, as far as the context asks for that; the run itself where there is
/// nothing to decode, else text at `place`, which is in the buffer, at or after the write position.
std::u16string_view decodedRun(const PlainTextContext& context, std::u16string_view run, char16_t* place);

/// A text in which a scan met no tag, comment or section, and decoding changes nothing, is no HTML: it is not
/// written, so that whoever converts it gets it back as it was.
bool isWithoutMarkup(const PlainTextContext& context, std::u16string_view run, std::size_t textLocation,
                     std::size_t stringLength);

} // namespace kelvo
