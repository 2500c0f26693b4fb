#pragma once

#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::ledger {

enum class KeptEnd : bool { beginning, end };

/// The text in no more than so many bytes (at least 4), with "…" where it was cut, between two characters.
std::string cutToFit(std::string_view text, std::size_t capacity, KeptEnd kept);

/// UTF-8, cut behind.
std::string bytesOfText(const NSString& text, std::size_t capacity);
/// The bytes of the file system, cut before.
std::string bytesOfPath(const NSString& path, std::size_t capacity);

/// Each behind its length. What short ones leave goes to those after them.
std::string packedTexts(const std::vector<NSString>& texts, std::size_t capacity);
/// Takes anything: what does not come out even is left out.
std::vector<NSString> unpackedTexts(std::string_view packed);

} // namespace kelvo::ledger
