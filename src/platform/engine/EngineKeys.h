#pragma once

namespace kelvo::enginekeys {

// Of a note.
/// A number: the Outcome.
inline constexpr const char16_t* outcome = u"Outcome";
/// A string.
inline constexpr const char16_t* sentence = u"Sentence";

} // namespace kelvo::enginekeys
