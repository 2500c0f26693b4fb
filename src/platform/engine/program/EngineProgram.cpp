#include "platform/engine/program/EngineProgram.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/NSException.h"

#include <csignal>
#include <exception>
#include <new>

#include <unistd.h>

namespace kelvo {
namespace {

[[noreturn]] void endForWantOfMemory() {
    ::_exit(engineStatusOutOfMemory);
}

/// Mapped files raise it, and memory that is not backed.
void endForCutFile(int) {
    ::_exit(engineStatusFileCut);
}

Value answer(EngineProgram& program, const Value& message, EngineChannel& channel) {
    try {
        return program.answerTo(message, channel);
    } catch (const std::bad_alloc&) {
        endForWantOfMemory();
    } catch (const NSException& exception) {
        if (exception.name() == NSMallocException)
            endForWantOfMemory();
        channel.note(Outcome::broken, exception.reason());
    } catch (const std::exception& exception) {
        channel.note(Outcome::broken, NSString::stringByRepairingUTF8String(exception.what()));
    }
    return {};
}

} // namespace

EngineProgram::~EngineProgram() = default;

ConfinementProfile EngineProgram::profile(const std::string& folder) {
    ConfinementProfile profile;
    if (!folder.empty())
        profile.writable = {folder};
    return profile;
}

void EngineProgram::prepare(const std::string&) {}

int runEngine(EngineProgram& program, int argumentCount, char** arguments) {
    std::set_new_handler(endForWantOfMemory);
    std::signal(SIGBUS, endForCutFile);
    EngineChannel channel;
    const std::string folder = argumentCount > 1 ? arguments[1] : "";
    ConfinementLayers layers;
    try {
        program.load();
        layers = confine(program.profile(folder));
        channel.endWithOtherSide(folder);
        program.prepare(folder);
    } catch (const NSException& exception) {
        channel.note(Outcome::missingEngine, exception.reason());
        return engineStatusMissing;
    }
    if (!channel.greet(NSString::stringWithUTF8String(layers.names())))
        return 0;
    while (const auto message = channel.nextMessage()) {
        if (!channel.answer(answer(program, *message, channel)))
            break;
    }
    return 0;
}

} // namespace kelvo
