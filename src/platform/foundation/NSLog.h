#pragma once

#include "platform/foundation/NSStringFormat.h"

#include <string_view>
#include <vector>

namespace kelvo {

/// Writes one entry to the system log (facility user, level notice, under the program's name), and to
/// standard error when that is a terminal. In both an entry is one line: line feeds and other control
/// characters are written as
/// "\n", "\r" and "\u001B", so that text from a file cannot forge entries or steer a terminal; after 8,192
/// UTF-16 units it is cut, which "…" shows. Failures of the system log are not reported. May be called on any
/// thread.
void NSLogMessage(const NSString& message);

/// The same with a format, see stringWithFormat_arguments.
template <typename... Arguments>
void NSLog(std::u16string_view format, const Arguments&... arguments) {
    NSLogMessage(stringWithFormat(format, arguments...));
}

/// For tests: while it lives, messages of every thread come here, exactly as they were formatted, and go
/// nowhere else. The latest of several is the one that gets them; they end in the reverse of their order.
class NSLogCapture {
public:
    NSLogCapture();
    NSLogCapture(const NSLogCapture&) = delete;
    NSLogCapture& operator=(const NSLogCapture&) = delete;
    ~NSLogCapture();

    std::vector<NSString> messages() const;

private:
    friend void NSLogMessage(const NSString& message);

    NSLogCapture* outer_;
    std::vector<NSString> messages_;
};

/// The one line that stands for a message in the system log, in UTF-8.
std::string logLineOfMessage(const NSString& message);

} // namespace kelvo
