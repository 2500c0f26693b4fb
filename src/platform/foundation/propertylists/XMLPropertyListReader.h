#pragma once

#include "platform/foundation/Value.h"

namespace kelvo {

/// Reads an XML property list in any encoding that the parser knows (UTF-8, UTF-16, Latin 1, ASCII). Entities
/// that the document declares itself are refused, and nothing outside of the document is ever loaded. Working
/// memory is linear in the file; nothing recurses. Throws NSException with the reason and the line.
Value valueFromXMLPropertyList(const NSData& data);

} // namespace kelvo
