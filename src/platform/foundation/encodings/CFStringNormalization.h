#pragma once

#include "platform/foundation/NSMutableString.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvo {

/// The four normalisation forms of Unicode (15.0).
enum class CFStringNormalizationForm : std::uint8_t { D = 0, KD = 1, C = 2, KC = 3 };

/// Changes the string in place; nil is left alone, and so are unpaired surrogates. Text that is in the form
/// already is only read. Takes linear time, over any order of combining marks too.
void CFStringNormalize(NSMutableString& string, CFStringNormalizationForm form);

/// Whether the text is in that form already (never a guess: an exact yes or no). Linear time.
bool CFStringIsNormalized(std::u16string_view units, CFStringNormalizationForm form);

/// A quick look: the length of a beginning that is in that form whatever follows, though a mark that follows
/// may join its last unit. It holds no surrogates and no private use. May be shorter than it could be.
std::size_t CFStringLengthOfPlainPrefix(std::u16string_view units, CFStringNormalizationForm form);

} // namespace kelvo
