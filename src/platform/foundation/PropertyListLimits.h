#pragma once

#include "platform/foundation/NSString.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// The most values (containers, their elements, keys) in one property list. It bounds what a small hostile
/// file can make of memory: an empty container takes three bytes of text and about a hundred bytes here.
inline constexpr std::size_t maximumPropertyListValueCount = 4'194'304;

/// Throws the NSException that the readers and writers of property lists report everything by. The reason is
/// a sentence for people.
[[noreturn]] void throwPropertyListError(NSString reason);
/// A reason of that kind, which ends in a full stop, with the line (from 1) that it is about.
NSString propertyListReasonWithLine(const NSString& reason, std::int64_t line);

} // namespace kelvo
