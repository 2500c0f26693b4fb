#pragma once

#include "platform/foundation/Value.h"

#include <string_view>

namespace kelvo {

/// Once, before the first message.
void loadMIMELibrary();

/// A message and its parts as MIMEEngineMessages.h describes them. Nil when it can be no page: when it is neither
/// multipart nor a part with a MIME-Version, and when it might have more than 65,536 parts, 2,048 messages within it,
/// 262,144 header fields and parameters, or a field of more than 1 MiB. Throws NSException (NSMallocException) when
/// there is no memory for as many bytes as it has.
Value fieldsOfMIMEMessage(std::string_view bytes);

/// Whether it is nil because of those bounds.
bool isTooLargeMIMEMessage(std::string_view bytes);

} // namespace kelvo
