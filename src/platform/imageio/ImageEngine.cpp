#include "platform/imageio/ImageEngine.h"

#include "platform/foundation/NSException.h"
#include "platform/imageio/ImageEngineMessages.h"

namespace kelvo {
namespace {

/// A file that is mapped counts like memory of the engine's own.
constexpr std::uint64_t mostResidentBytes = std::uint64_t{512} << 20;

EngineDescription description() {
    EngineDescription description;
    description.programName = imageengine::programName;
    description.title = u"image engine";
    description.mostResidentBytes = mostResidentBytes;
    // Two threads decode, and give back what they took: with an arena for each of them that stays behind.
    description.environment = {{"MALLOC_ARENA_MAX", "2"}};
    return description;
}

} // namespace

Value ImageEngine::answerTo(const NSDictionary& message) {
    constexpr double secondsToAnswer = 10;
    try {
        return process_.ask(message, secondsToAnswer);
    } catch (const NSException&) {
        return {};
    }
}

ImageEngine::ImageEngine() : process_(description()) {}

ImageEngine& ImageEngine::sharedEngine() {
    // Never destroyed, because the run loop that it stands on goes first: it ends with the process.
    static ImageEngine* const engine = new ImageEngine;
    return *engine;
}

} // namespace kelvo
