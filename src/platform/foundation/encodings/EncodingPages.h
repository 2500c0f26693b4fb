#pragma once

#include "platform/foundation/encodings/CFStringEncodings.h"

#include <array>
#include <optional>
#include <string_view>

namespace kelvo {

/// The single-byte encodings that no library has: for each byte its unit, U+FFFD where the byte is undefined,
/// or a noncharacter that stands for a sequence. Empty for other encodings.
std::optional<std::array<char16_t, 256>> ownEncodingPage(CFStringEncoding encoding);

/// The characters that the entry of a page stands for; empty when the entry is no sequence.
std::u16string_view encodingPageSequence(char16_t entry);

/// Which of several bytes for one character is written: the last for MacThai, whose low bytes are forms of
/// the plain marks in other positions, and the first for all others.
bool encodingPagePrefersLastByte(CFStringEncoding encoding);

} // namespace kelvo
