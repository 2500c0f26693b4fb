#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

/// A document, workbook or presentation of the older office formats ("com.microsoft.word.doc"), as one file of OpenDocument
/// XML. Nil for other types, and when it cannot be read, which is noted with the current request. Throws as
/// EngineProcess::ask does.
NSData flatOpenDocumentOfDocument(const NSData& document, const NSString& contentType, double timeoutSeconds);

} // namespace kelvo
