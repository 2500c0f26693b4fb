#include "platform/plugins/PlugInEngine.h"

#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/Value.h"
#include "platform/plugins/ImporterEngineMessages.h"

#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr const char16_t* folderOfSystem = u"/System/Library/Spotlight";
/// Each file takes four messages, and leaves a reference in the engine.
constexpr unsigned mostMessages = 20'000;
constexpr std::uint64_t mostResidentBytes = 600ULL << 20;

/// Where the path really leads; empty when it leads nowhere.
std::filesystem::path realPlace(const NSString& path) {
    std::error_code error;
    const auto place = placeOfPath(path);
    auto real = std::filesystem::canonical(place.value_or(""), error);
    return error ? std::filesystem::path() : real;
}

EngineDescription description(std::vector<std::string> arguments) {
    EngineDescription description;
    description.programName = importerengine::programName;
    description.title = u"importer engine";
    description.mostMessages = mostMessages;
    description.mostResidentBytes = mostResidentBytes;
    description.arguments = std::move(arguments);
    return description;
}

} // namespace

PlugInEngine::PlugInEngine(EngineDescription description) : process_(std::move(description)) {}

PlugInEngine& PlugInEngine::engineForPlugIn(const CFPlugIn& plugIn) {
    // Never destroyed, because the run loop that they stand on goes first: they end with the process.
    const std::filesystem::path folder = realPlace(folderOfSystem);
    if (!folder.empty() && realPlace(plugIn.bundle().bundlePath()).parent_path() == folder) {
        static PlugInEngine* const own =
            new PlugInEngine(description({importerengine::onlyArgument, folder}));
        return *own;
    }
    static PlugInEngine* const others = new PlugInEngine(description({}));
    return *others;
}

Value PlugInEngine::ask(const NSDictionary& message, const CFPlugIn& plugIn, Message place,
                        std::function<void(const Value& part)> reports) {
    EngineConversation conversation;
    conversation.reports = std::move(reports);
    conversation.title = titleOfPlugIn(plugIn);
    conversation.continues = place == Message::continued;
    return process_.ask(message, plugIn.secondsLeft(), conversation);
}

NSString titleOfPlugIn(const CFPlugIn& plugIn) {
    return stringWithFormat(u"importer %@",
                            stringByDeletingPathExtension(lastPathComponent(plugIn.bundle().bundlePath())));
}

} // namespace kelvo
