#include "platform/plugins/PlugInEngine.h"

#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/Value.h"
#include "platform/plugins/ImporterEngineMessages.h"

#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

/// Each file takes four messages, and leaves a reference in the engine.
constexpr unsigned mostMessages = 20'000;
constexpr std::uint64_t mostResidentBytes = 600ULL << 20;

EngineDescription description(std::vector<std::string> arguments) {
    EngineDescription description;
    description.programName = importerengine::programName;
    description.title = u"importer engine";
    description.mostMessages = mostMessages;
    description.mostResidentBytes = mostResidentBytes;
    // As in the PDF engine: what libraries make for each tag and drop again is found without the C library's locks.
    description.environment = {{"GLIBC_TUNABLES", "glibc.malloc.tcache_count=4000"}};
    description.arguments = std::move(arguments);
    return description;
}

} // namespace

PlugInEngine::PlugInEngine(EngineDescription description) : process_(std::move(description)) {}

PlugInEngine& PlugInEngine::engineForPlugIn(const CFPlugIn& plugIn) {
    // Never destroyed, because the run loop that they stand on goes first: they end with the process.
    if (plugIn.isOfSystem()) {
        static PlugInEngine* const own =
            new PlugInEngine(description({importerengine::onlyArgument, systemFolderOfImporters()}));
        return *own;
    }
    static PlugInEngine* const others = new PlugInEngine(description({}));
    return *others;
}

Value PlugInEngine::ask(NSMutableDictionary message, const CFPlugIn& plugIn, Message place,
                        EngineConversation conversation) {
    if (const std::uint64_t released = std::exchange(released_, 0); released != 0)
        message.setObject_forKey(NSNumber::numberWithLongLong(static_cast<long long>(released)),
                                 importerengine::releasedKey);
    message.setObject_forKey(titleOfPlugIn(plugIn), importerengine::titleKey);
    conversation.title = titleOfPlugIn(plugIn);
    conversation.continues = place == Message::continued;
    return process_.ask(message.copy(), plugIn.secondsLeft(), conversation);
}

NSString titleOfPlugIn(const CFPlugIn& plugIn) {
    return stringWithFormat(u"importer %@",
                            stringByDeletingPathExtension(lastPathComponent(plugIn.bundle().bundlePath())));
}

} // namespace kelvo
