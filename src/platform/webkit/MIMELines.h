#pragma once

#include <algorithm>
#include <string_view>

namespace kelvo {

// How the lines of a MIME message are told, by those who look for one and those who read it.

/// The bytes without what editors and transports leave before the first header field.
inline std::string_view messageInBytes(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of("\r\n"), bytes.size()));
    return bytes;
}

/// The next line without its end; the rest stays in `text`.
inline std::string_view takeMIMELine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

} // namespace kelvo
