#include "cli/TerminalPicture.h"

#include "cli/ExitStatus.h"
#include "cli/Sixels.h"
#include "platform/foundation/FileIO.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace kelvo::cli {
namespace {

constexpr std::string_view startOfAttributes = "\x1B[?";

/// The terminal's attributes, "62;4;22"; empty when they have not come.
std::string_view attributesIn(std::string_view answer) {
    const std::size_t start = answer.find(startOfAttributes);
    const std::size_t end = start == answer.npos ? start : answer.find('c', start);
    return end == answer.npos
               ? std::string_view()
               : answer.substr(start + startOfAttributes.size(), end - start - startOfAttributes.size());
}

/// While one stands, what the terminal sends comes at once and is not shown.
class RawTerminal {
public:
    explicit RawTerminal(int descriptor) : descriptor_(descriptor) {
        // Who is not in front is stopped when it changes the terminal.
        isRaw_ = tcgetpgrp(descriptor) == getpgrp() && tcgetattr(descriptor, &before_) == 0;
        termios raw = before_;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_cc[VMIN] = 0;
        raw.c_cc[VTIME] = 0;
        isRaw_ = isRaw_ && tcsetattr(descriptor, TCSANOW, &raw) == 0;
    }
    RawTerminal(const RawTerminal&) = delete;
    RawTerminal& operator=(const RawTerminal&) = delete;
    ~RawTerminal() {
        if (isRaw_)
            tcsetattr(descriptor_, TCSANOW, &before_);
    }

    bool isRaw() const { return isRaw_; }

private:
    int descriptor_;
    termios before_{};
    bool isRaw_ = false;
};

/// What the terminal says to both questions; empty when it cannot be asked.
std::string askTerminal() {
    using Clock = std::chrono::steady_clock;
    constexpr std::string_view questions = "\x1B_Gi=31,s=1,v=1,a=q,t=d,f=24;AAAA\x1B\\\x1B[c";
    constexpr auto patience = std::chrono::milliseconds(500);
    const FileDescriptor terminal(::open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY));
    if (!terminal)
        return {};
    const RawTerminal raw(terminal.get());
    if (!raw.isRaw() || !writeAll(terminal.get(), questions.data(), questions.size()))
        return {};
    std::string answer;
    const auto end = Clock::now() + patience;
    while (!isAnswerWhole(answer)) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd readable{terminal.get(), POLLIN, 0};
        if (left <= 0 || ::poll(&readable, 1, static_cast<int>(left)) <= 0)
            break;
        char bytes[256];
        const ssize_t count = ::read(terminal.get(), bytes, sizeof bytes);
        if (count <= 0)
            break;
        answer.append(bytes, static_cast<std::size_t>(count));
    }
    return answer;
}

std::string kittyDrawingOf(const CGImage& image) {
    // So long may a part be.
    constexpr std::size_t mostOfPart = 4096;
    const NSString text = image.data().base64EncodedString();
    const std::string all = text.UTF8String();
    std::string drawing;
    for (std::size_t place = 0; place < all.size(); place += mostOfPart) {
        const int follows = place + mostOfPart < all.size() ? 1 : 0;
        drawing += place == 0 ? fmt::format("\x1B_Ga=T,q=2,f=32,s={},v={},m={};", image.width(),
                                            image.height(), follows)
                              : fmt::format("\x1B_Gm={};", follows);
        drawing.append(all, place, mostOfPart).append("\x1B\\");
    }
    return drawing;
}

} // namespace

bool isAnswerWhole(std::string_view answer) {
    return !attributesIn(answer).empty();
}

bool saysKitty(std::string_view answer) {
    return answer.find("\x1B_Gi=31;OK\x1B\\") != answer.npos;
}

bool saysSixel(std::string_view answer) {
    constexpr std::string_view sixel = "4";
    std::string_view rest = attributesIn(answer);
    // The first is the class of the terminal.
    while (rest.find(';') != rest.npos) {
        rest.remove_prefix(rest.find(';') + 1);
        if (rest.substr(0, rest.find(';')) == sixel)
            return true;
    }
    return false;
}

TerminalGraphics graphicsOfTerminal(const Output& output) {
    if (!output.isTerminal())
        throw CommandError(ExitStatus::usage, "--show: standard output is no terminal");
    const char* const variable = std::getenv("TERM");
    const std::string_view term = variable ? variable : "";
    const std::string answer = term == "dumb" ? std::string() : askTerminal();
    if (saysKitty(answer) || (answer.empty() && term.find("kitty") != term.npos))
        return TerminalGraphics::kitty;
    if (saysSixel(answer) || (answer.empty() && term.find("sixel") != term.npos))
        return TerminalGraphics::sixel;
    throw CommandError(ExitStatus::usage,
                       "--show: the terminal draws no pictures, neither as kitty graphics nor as sixels");
}

std::string drawingOf(const CGImage& image, TerminalGraphics graphics) {
    return (graphics == TerminalGraphics::kitty ? kittyDrawingOf(image) : sixelsOf(image)) + "\n";
}

} // namespace kelvo::cli
