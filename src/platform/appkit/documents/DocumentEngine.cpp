#include "platform/appkit/documents/DocumentEngine.h"

#include "platform/appkit/documents/DocumentEngineMessages.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/processes/ProcessFacts.h"

namespace kelvo {
namespace {

/// An engine holds about 200 MiB from its first document on and keeps part of every large one.
constexpr std::uint64_t mostResidentBytes = 600ULL << 20;

} // namespace

DocumentEngine::DocumentEngine() : process_(documentengine::programName), folder_("plumwick-documents") {}

DocumentEngine::~DocumentEngine() {
    process_.stop();
}

DocumentEngine& DocumentEngine::sharedEngine() {
    // Never destroyed, because the run loop that it stands on goes first: it ends with the process.
    static DocumentEngine* const engine = new DocumentEngine;
    return *engine;
}

NSData DocumentEngine::RTFOfDocument(const NSData& document, const NSString& extension,
                                     double timeoutSeconds) {
    if (document.isNil() || isAtWork_)
        return nullptr;
    const Value path = NSFileManager::defaultManager().stringWithFileSystemRepresentation(folder_.path());
    const Value message = NSMutableDictionary::dictionaryWithObjectsAndKeys({
        {path, documentengine::folderKey},
        {document, documentengine::documentKey},
        {extension, documentengine::extensionKey},
    });
    isAtWork_ = true;
    const NSDictionary answer = process_.ask(message, timeoutSeconds).dictionary();
    isAtWork_ = false;
    const NSString complaint = answer.objectForKey(documentengine::complaintKey).string();
    if (!complaint.isNil())
        NSLogMessage(complaint);
    if (residentBytesOfProcess(process_.processIdentifier()) > mostResidentBytes)
        process_.stop();
    if (process_.processIdentifier() == 0)
        folder_.remove();
    return answer.objectForKey(documentengine::rtfKey).data();
}

} // namespace kelvo
