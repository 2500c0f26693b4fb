#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "protocol/KelvoImExport.capnp.h"

namespace kelvo {

// As WireValues.h: both throw NSException (NSInvalidArgumentException). Pictures, lists and tables are what the wire cannot
// carry of a text; nothing that has them is sent but as RTFD. Equal attributes are sent once, and come back as one object.

void encodeAttributedString(const NSAttributedString& text, wire::AttributedString::Builder builder);
NSAttributedString decodeAttributedString(wire::AttributedString::Reader reader);

} // namespace kelvo
