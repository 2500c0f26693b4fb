#pragma once

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

#include <sys/types.h>

namespace kelvo {

/// The office suite, which turns word-processor documents into RTF, in a process of its own. Nothing that a
/// document holds runs or is fetched, and its file is not touched: the engine has a copy, in a folder of mode
/// 0700 that is gone when the engine or this process ends.
class DocumentEngine {
public:
    /// Nothing is started yet.
    DocumentEngine();

    /// The one of this process.
    static DocumentEngine& sharedEngine();

    /// The document as RTF. `extension` is that of a file with such contents: "doc", "docx", "odt", "fodt",
    /// "sxw", "xml". Runs the current run loop meanwhile. Data that stands on a file is not read for it.
    ///
    /// Nil when the document is encrypted or cannot be read, which is noted with the current request. Throws as
    /// EngineProcess::ask does when it takes longer or ends the engine (the next document has a new one), when the
    /// engine is still at work on another one (the run loop may perform a request meanwhile), and when there is no
    /// office suite.
    NSData RTFOfDocument(const NSData& document, const NSString& extension, double timeoutSeconds);
    /// The same as one file of OpenDocument XML; of workbooks and presentations as well ("xls", "ppt"), where the suite has
    /// the program for them, which is noted when it has not.
    NSData flatOpenDocumentOfDocument(const NSData& document, const NSString& extension,
                                      double timeoutSeconds);

    /// The process of the engine, 0 when none runs.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

private:
    NSData convert(const NSData& document, const NSString& extension, const NSString& format,
                   double timeoutSeconds);

    EngineProcess process_;
};

} // namespace kelvo
