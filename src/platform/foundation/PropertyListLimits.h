#pragma once

#include "platform/foundation/NSString.h"

#include <cstddef>

namespace kelvo {

/// The most values (containers, their elements, keys) in one property list. It bounds what a small hostile
/// file can make of memory: an empty container takes three bytes of text and about a hundred bytes here.
inline constexpr std::size_t maximumPropertyListValueCount = 4'194'304;

/// Throws the NSException that the readers and writers of property lists report everything by. The reason is
/// a sentence for people.
[[noreturn]] void throwPropertyListError(NSString reason);

} // namespace kelvo
