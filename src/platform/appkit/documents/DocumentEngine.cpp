#include "platform/appkit/documents/DocumentEngine.h"

#include "platform/appkit/documents/DocumentEngineMessages.h"
#include "platform/foundation/Value.h"

#include <cstdlib>
#include <string>

namespace kelvo {
namespace {

/// An engine holds about 200 MiB from its first document on and keeps part of every large one.
constexpr std::uint64_t mostResidentBytes = 600ULL << 20;

EngineDescription description() {
    EngineDescription description;
    description.programName = documentengine::programName;
    description.title = u"document engine";
    description.mostResidentBytes = mostResidentBytes;
#ifdef KELVO_SANITIZED
    // liborcus, which is shown each file, has strtol read numbers in the midst of a text. They end there, and the strict
    // check is for a zero at the end of all of it.
    const char* const options = std::getenv("ASAN_OPTIONS");
    description.environment = {
        {"ASAN_OPTIONS", std::string(options ? options : "") + ":strict_string_checks=0"}};
#endif
    return description;
}

} // namespace

DocumentEngine::DocumentEngine() : process_(description()) {}

DocumentEngine& DocumentEngine::sharedEngine() {
    // Never destroyed, because the run loop that it stands on goes first: it ends with the process.
    static DocumentEngine* const engine = new DocumentEngine;
    return *engine;
}

NSData DocumentEngine::RTFOfDocument(const NSData& document, const NSString& extension,
                                     double timeoutSeconds) {
    return convert(document, extension, nullptr, timeoutSeconds);
}

NSData DocumentEngine::flatOpenDocumentOfDocument(const NSData& document, const NSString& extension,
                                                  double timeoutSeconds) {
    return convert(document, extension, documentengine::flatOpenDocumentFormat, timeoutSeconds);
}

NSData DocumentEngine::convert(const NSData& document, const NSString& extension, const NSString& format,
                               double timeoutSeconds) {
    if (document.isNil())
        return nullptr;
    auto message = NSMutableDictionary::dictionaryWithObjectsAndKeys({
        {document, documentengine::documentKey},
        {extension, documentengine::extensionKey},
    });
    if (!format.isNil())
        message.setObject_forKey(format, documentengine::formatKey);
    return process_.ask(message.copy(), timeoutSeconds).data();
}

} // namespace kelvo
