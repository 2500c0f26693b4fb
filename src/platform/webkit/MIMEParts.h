#pragma once

#include "platform/foundation/NSDictionary.h"
#include "platform/webkit/WebArchive.h"

namespace kelvo {

/// Whether the data begins with a block of header fields that has a Content-Type among them, as MIME HTML
/// (.mht, .mhtml) does. Nothing after that block is looked at.
bool beginsLikeMIMEMessage(const NSData& data);

/// The page (MIMEHTML.h) that the parts of a message make (MIMEEngineMessages.h), in any process. Nil for what
/// fieldsOfMIMEMessage cannot have made.
WebArchive archiveFromMIMEParts(const NSDictionary& message);

} // namespace kelvo
