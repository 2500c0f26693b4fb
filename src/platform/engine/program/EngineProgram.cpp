#include "platform/engine/program/EngineProgram.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSException.h"
#include "platform/ledger/RequestNotes.h"

#include <csignal>
#include <exception>
#include <new>
#include <span>
#include <string_view>

#include <fcntl.h>
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

/// So that tests see which layer holds.
ConfinementSwitches switchesIn(std::span<char* const> arguments) {
    ConfinementSwitches switches;
    for (const std::string_view argument : arguments) {
        switches.network = switches.network && argument != engineWithoutOwnNetwork;
        switches.landlock = switches.landlock && argument != engineWithoutLandlock;
        switches.systemCalls = switches.systemCalls && argument != engineWithoutFilter;
    }
    return switches;
}

Value answer(EngineProgram& program, const Value& message, EngineChannel& channel) {
    try {
        return program.answerTo(message, channel);
    } catch (const std::bad_alloc&) {
        endForWantOfMemory();
    } catch (const NSException& exception) {
        if (exception.name() == NSMallocException)
            endForWantOfMemory();
        channel.note(Outcome::broken, sentenceOfReason(exception.reason()));
    } catch (const std::exception& exception) {
        channel.note(Outcome::broken,
                     sentenceOfReason(NSString::stringByRepairingUTF8String(exception.what())));
    }
    return {};
}

} // namespace

EngineProgram::~EngineProgram() = default;

ConfinementProfile EngineProgram::profile(const std::string& folder) {
    ConfinementProfile profile;
    profile.addressSpaceBytes = std::uint64_t{4} << 30;
    if (!folder.empty())
        profile.writable = {folder};
    return profile;
}

void EngineProgram::prepare(const std::string&) {}

void silenceLibraries() {
#ifndef KELVO_SANITIZED
    const FileDescriptor nowhere(::open("/dev/null", O_WRONLY | O_CLOEXEC));
    ::dup2(nowhere.get(), STDERR_FILENO);
#endif
}

int runEngine(EngineProgram& program, int argumentCount, char** arguments) {
    std::set_new_handler(endForWantOfMemory);
    std::signal(SIGBUS, endForCutFile);
    EngineChannel channel(program.acceptedData());
    const std::string folder = argumentCount > 1 ? arguments[1] : "";
    ConfinementLayers layers;
    try {
        program.load();
        layers = confine(program.profile(folder),
                         switchesIn({arguments, static_cast<std::size_t>(argumentCount)}));
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
