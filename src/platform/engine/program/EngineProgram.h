#pragma once

#include "platform/engine/program/Confinement.h"
#include "platform/engine/program/EngineChannel.h"
#include "platform/foundation/Value.h"

#include <string>

namespace kelvo {

// Arguments that leave a layer of the confinement out (EngineDescription::arguments).
inline constexpr const char* engineWithoutOwnNetwork = "--without-own-network";
inline constexpr const char* engineWithoutLandlock = "--without-landlock";
inline constexpr const char* engineWithoutFilter = "--without-filter";

/// What makes a program an engine. The functions are called in the order in which they stand here.
class EngineProgram {
public:
    virtual ~EngineProgram();

    /// How it is handed files.
    virtual EngineFrameData acceptedData() const { return EngineFrameData::filesAndSealedMemory; }
    /// Finds its libraries, in a process of one thread that is not confined yet. Nothing of any file is known. Throws
    /// NSException (EngineMissingException) when something is not installed, with a sentence that says what.
    virtual void load() {}
    /// What it needs of the system from then on: by default nothing but its folder, what all programs
    /// need, and 4 GiB of addresses.
    virtual ConfinementProfile profile(const std::string& folder);
    /// Gets ready for the first message, confined; throws as load() does. The folder is its own, and empty.
    virtual void prepare(const std::string& folder);
    /// What it throws is noted as `broken`, and answered nil; what allocations throw ends the engine.
    virtual Value answerTo(const Value& message, EngineChannel& channel) = 0;
};

/// For prepare(): what libraries print on standard error about a file, they print as often as the file likes. From here on
/// it is lost, but in a build whose sanitizers print there.
void silenceLibraries();

/// Serves messages until the other side is gone; the status to exit with. The first argument is the path of the engine's
/// folder.
int runEngine(EngineProgram& program, int argumentCount, char** arguments);

} // namespace kelvo
