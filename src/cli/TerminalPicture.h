#pragma once

#include "cli/Output.h"
#include "platform/coregraphics/CGImage.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo::cli {

/// The two ways in which terminals draw pictures.
enum class TerminalGraphics : std::uint8_t { kitty, sixel };

/// What the terminal behind the output answers when it is asked, for up to half a second; one that does not answer is taken
/// for what TERM says. Throws CommandError (usage) with a sentence that says why when there is none that can draw.
TerminalGraphics graphicsOfTerminal(const Output& output);

/// What a terminal has answered so far to the two questions above: of the kitty protocol, and of its attributes. Whether
/// the answers are whole: that of its attributes, which comes last, has ended.
bool isAnswerWhole(std::string_view answer);
bool saysKitty(std::string_view answer);
bool saysSixel(std::string_view answer);

/// The image and a line end behind it.
std::string drawingOf(const CGImage& image, TerminalGraphics graphics);

} // namespace kelvo::cli
