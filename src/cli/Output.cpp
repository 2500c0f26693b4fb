#include "cli/Output.h"

#include "platform/foundation/FileIO.h"

#include <fmt/format.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <unistd.h>

namespace kelvo::cli {
namespace {

/// Large texts go out in several pieces.
constexpr std::size_t flushSize = std::size_t{1} << 16;

bool environmentAllowsColor() {
    const char* refusal = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return !(refusal && *refusal) && terminal && std::string_view(terminal) != "dumb";
}

} // namespace

Output::Output(int descriptor)
    : descriptor_(descriptor),
      isTerminal_(isatty(descriptor) == 1),
      hasColor_(isTerminal_ && environmentAllowsColor()) {}

std::string Output::styled(Style style, std::string_view text) const {
    if (!hasColor_)
        return std::string(text);
    constexpr const char* codes[] = {"1", "2", "33", "31"};
    return fmt::format("\x1B[{}m{}\x1B[0m", codes[static_cast<std::size_t>(style)], text);
}

void Output::write(std::string_view text) {
    pending_ += text;
    if (pending_.size() >= flushSize)
        flush();
}

void Output::flush() {
    const std::string text = std::exchange(pending_, {});
    if (writeAll(descriptor_, text.data(), text.size()))
        return;
    if (errno == EPIPE) {
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    throw std::system_error(errno, std::generic_category(),
                            descriptor_ == STDERR_FILENO ? "standard error cannot be written"
                                                         : "standard output cannot be written");
}

} // namespace kelvo::cli
