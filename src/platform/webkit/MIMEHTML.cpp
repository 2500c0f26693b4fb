#include "platform/webkit/MIMEHTML.h"

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/webkit/MIMEEngineMessages.h"
#include "platform/webkit/MIMEParts.h"

namespace kelvo {
namespace {

/// Who asks waits 15 s, in which the text has to be made of it as well.
constexpr double secondsForMessage = 10;
/// A parsed message takes about as much as its file has bytes, and the engine keeps some of it.
constexpr std::uint64_t mostResidentBytes = 400ULL << 20;

EngineProcess& engine() {
    // Never taken apart: the run loop of its thread may be gone by then. The engine sees the end by itself.
    static EngineProcess& process = *new EngineProcess([] {
        EngineDescription description;
        description.programName = mimeengine::programName;
        description.title = u"MIME engine";
        description.mostResidentBytes = mostResidentBytes;
        return description;
    }());
    return process;
}

} // namespace

WebArchive archiveFromMIMEHTML(const NSData& data) {
    try {
        const NSDictionary message = engine().ask(data, secondsForMessage).dictionary();
        return archiveFromMIMEParts(message);
    } catch (const NSException&) {
        // What became of the engine is noted; that there is no archive is all that the callers ask.
        return nullptr;
    }
}

} // namespace kelvo
