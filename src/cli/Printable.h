#pragma once

#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::cli {

enum class LineEnds : std::uint8_t { kept, escaped };

/// Text out of files as UTF-8 that does nothing to a terminal: control characters (C0, DEL, C1) and the
/// characters that turn the direction of writing become visible escapes such as "\x1B" and "\u{202E}",
/// unpaired surrogates U+FFFD. Kept line ends come out as "\n" whatever they were, and tabs are kept with
/// them.
std::string printable(std::u16string_view text, LineEnds lineEnds = LineEnds::escaped);

/// With a line feed in the place of each line separator, paragraph separator and form feed.
NSString withLineFeeds(const NSString& text);

/// A name in file-system bytes; bytes that are not UTF-8 become escapes such as "\xE9".
std::string printableFileName(std::string_view bytes);

/// "1 byte", "999 bytes", "12.3 KB" (of 1000 bytes), …
std::string printableByteCount(std::uint64_t bytes);

/// "0.42 ms", "12.3 ms", "1.25 s", …
std::string printableMilliseconds(double milliseconds);

/// "2026-11-21 10:30:00" in the time zone of whoever reads it; far dates as they describe themselves.
std::string printableLocalTime(NSDate date);

/// "3 s", "2 min 5 s", "4 h 0 min", "12 d 3 h".
std::string printableUptime(double seconds);

} // namespace kelvo::cli
