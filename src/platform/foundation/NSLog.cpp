#include "platform/foundation/NSLog.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSMutableString.h"

#include <cerrno>
#include <mutex>
#include <string>

#include <syslog.h>
#include <unistd.h>

namespace kelvo {
namespace {

std::mutex captureMutex;
NSLogCapture* latestCapture = nullptr;

constexpr std::size_t longestLineInUnits = 8192;

bool endsOrSteersLine(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

} // namespace

std::string logLineOfMessage(const NSString& message) {
    NSMutableString line = NSMutableString::string();
    for (const char16_t unit : message.characters().substr(0, longestLineInUnits)) {
        if (unit == '\n' || unit == '\r')
            line.appendString(unit == '\n' ? u"\\n" : u"\\r");
        else if (endsOrSteersLine(unit) && unit != '\t')
            line.appendString(stringWithFormat(u"\\u%04X", unit));
        else
            line.appendCharacter(unit);
    }
    if (message.length() > longestLineInUnits)
        line.appendCharacter(u'\x2026');
    return line.UTF8String();
}

void NSLogMessage(const NSString& message) {
    {
        const std::scoped_lock lock(captureMutex);
        if (latestCapture) {
            latestCapture->messages_.push_back(message);
            return;
        }
    }
    const std::string line = logLineOfMessage(message);
    static std::once_flag once;
    std::call_once(once, [] { ::openlog(nullptr, LOG_PID, LOG_USER); });
    ::syslog(LOG_USER | LOG_NOTICE, "%s", line.c_str());
    if (::isatty(STDERR_FILENO)) {
        const std::string shown = std::string(program_invocation_short_name) + '[' +
                                  std::to_string(::getpid()) + "]: " + line + '\n';
        writeAll(STDERR_FILENO, shown.data(), shown.size());
    }
}

NSLogCapture::NSLogCapture() {
    const std::scoped_lock lock(captureMutex);
    outer_ = latestCapture;
    latestCapture = this;
}

NSLogCapture::~NSLogCapture() {
    const std::scoped_lock lock(captureMutex);
    latestCapture = outer_;
}

std::vector<NSString> NSLogCapture::messages() const {
    const std::scoped_lock lock(captureMutex);
    return messages_;
}

} // namespace kelvo
