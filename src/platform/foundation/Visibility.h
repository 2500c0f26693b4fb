#pragma once

/// Everything is compiled with hidden symbols. What programs outside this house link against, the client
/// library's header and the value types that it speaks in, stands in namespace blocks with this mark,
/// `namespace KELVO_PUBLIC kelvo`. Functions that are no members need it once more, because not every
/// compiler remembers the block when it comes to the definition.
#define KELVO_PUBLIC [[gnu::visibility("default")]]
/// For functions that are first declared as friends, where the standard's form of an attribute is not
/// allowed.
#define KELVO_PUBLIC_FRIEND __attribute__((visibility("default"))) friend
