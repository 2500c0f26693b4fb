#include "platform/qtkit/MovieEngine.h"

#include "platform/qtkit/MovieEngineMessages.h"

namespace kelvo {
namespace {

constexpr std::uint64_t mostResidentBytes = std::uint64_t{256} << 20;

EngineDescription description() {
    EngineDescription description;
    description.programName = movieengine::programName;
    description.title = u"movie engine";
    description.mostResidentBytes = mostResidentBytes;
    // Decoders have threads of their own, and give back what these took: with an arena for each that stays behind.
    description.environment = {{"MALLOC_ARENA_MAX", "2"}};
    return description;
}

} // namespace

MovieEngine::MovieEngine() : process_(description()) {}

MovieEngine& MovieEngine::sharedEngine() {
    // Never destroyed, because the run loop that it stands on goes first: it ends with the process.
    static MovieEngine* const engine = new MovieEngine;
    return *engine;
}

} // namespace kelvo
