#pragma once

#include <exception>
#include <string>
#include <utility>

namespace kelvo::cli {

/// How the command ends. With several files each is tried, and the largest status among them is the
/// command's.
enum class ExitStatus : int {
    answered = 0, ///< every question had an answer
    noAnswer = 1, ///< the service answered nil, or false
    usage = 2,    ///< the command line makes no sense
    service = 3,  ///< the service could not be reached, failed, died or took too long
    file = 4      ///< a file could not be read or written
};

inline ExitStatus worse(ExitStatus left, ExitStatus right) {
    return left < right ? right : left;
}

/// Ends the work on one file. The message is UTF-8 that may be shown as it is (see Printable.h).
class CommandError final : public std::exception {
public:
    CommandError(ExitStatus status, std::string message) : status_(status), message_(std::move(message)) {}

    ExitStatus status() const noexcept { return status_; }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    ExitStatus status_;
    std::string message_;
};

} // namespace kelvo::cli
