#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"

#include <functional>

namespace kelvo {

/// Answers an office document as one file of OpenDocument XML, by its bytes and its type; nil when there is none, which is
/// noted with the current request. Throws as EngineProcess::ask does.
using OfficeDocumentReader =
    std::function<NSData(const NSData& document, const NSString& contentType, double seconds)>;

/// Plug-ins may ask for what it answers from then on; until then there is none.
void setOfficeDocumentReader(OfficeDocumentReader reader);

/// What a plug-in may ask about while it imports a file.
struct ImportedFile {
    NSString path;
    NSString contentType;
    /// Nil for a folder.
    NSData contents;
};

/// Nil when the question cannot be answered: nothing is thrown.
NSData answerToPlugIn(const NSDictionary& question, const ImportedFile& file, double secondsLeft);

} // namespace kelvo
