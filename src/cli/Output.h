#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::cli {

enum class Style : std::uint8_t { strong, faint, warning, failure };

/// Standard output or standard error. Text is kept back until flush(), so that it comes out in few pieces.
class Output {
public:
    /// Does not take the descriptor over.
    explicit Output(int descriptor);
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    bool isTerminal() const noexcept { return isTerminal_; }
    /// In colour on a terminal, unless NO_COLOR is set (and not empty) or TERM is "dumb"; else as it is.
    std::string styled(Style style, std::string_view text) const;

    void write(std::string_view text);
    /// Throws std::system_error when not all could be written, which ends the command whatever it is at. When
    /// the reader of a pipe has gone, the process ends as by SIGPIPE, which the transport has switched off.
    void flush();

private:
    int descriptor_;
    bool isTerminal_;
    bool hasColor_;
    std::string pending_;
};

} // namespace kelvo::cli
