#pragma once

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSString.h"

#include <memory>
#include <string>
#include <utility>

namespace kelvo {

/// No socket, no folder for it, or nobody to trust at the other end.
inline constexpr const char16_t* NSPortException = u"NSPortException";
/// No answer came in time.
inline constexpr const char16_t* NSPortTimeoutException = u"NSPortTimeoutException";
/// The conversation broke off before the answer.
inline constexpr const char16_t* NSInvalidReceivePortException = u"NSInvalidReceivePortException";

/// Where registered names live: $XDG_RUNTIME_DIR, or else a folder of mode 0700 below /tmp, which this makes.
/// As a path in file-system bytes. Throws NSException (NSPortException) with a sentence for people when the
/// folder is missing, is no folder, belongs to another user, or can be written by others.
std::string portNameFolder();

/// The socket of a registered name, in file-system bytes. Throws like portNameFolder, and when the name holds
/// a slash or NUL or the path is longer than a unix socket's can be.
std::string socketPathOfPortName(const NSString& name);

/// An exclusive lock on a file, for as long as the object lives and no longer than the process.
class PortLock {
public:
    /// `path` with that suffix, made when it is missing. Null when another still holds the lock after that
    /// many seconds. Throws NSException (NSPortException) when the file cannot be opened.
    static std::unique_ptr<PortLock> lock(const std::string& path, const char* suffix,
                                          double patienceSeconds);

private:
    explicit PortLock(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

} // namespace kelvo
