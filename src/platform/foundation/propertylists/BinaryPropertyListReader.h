#pragma once

#include "platform/foundation/Value.h"

namespace kelvo {

/// Reads a binary property list ("bplist00"). Data objects share the bytes of `data`.
///
/// The object table is untrusted: every offset, length and reference is checked before it is followed, cycles
/// and overlapping objects are refused, and so is a tree that is too deep or stands for far more than its
/// file holds. Working memory is linear in the file; nothing recurses. Throws NSException with the reason.
///
/// The table is read here, and not through a library's nodes, because those copy every data object and every
/// shared reference: a web archive of 200 MB would take three times that, and a list of 143 bytes took 227
/// MB.
Value valueFromBinaryPropertyList(const NSData& data);

} // namespace kelvo
