#pragma once

namespace kelvo {

// Names of NSExceptions: what became of an engine while it was asked. Each is noted with the current request as well.

/// The program is not installed, does not start, or lacks a library.
inline constexpr const char16_t* EngineMissingException = u"EngineMissingException";
/// A signal or its own doing ended the engine, or it answered what is no answer.
inline constexpr const char16_t* EngineCrashedException = u"EngineCrashedException";
/// The engine had no memory left, or the kernel ended it for want of memory.
inline constexpr const char16_t* EngineOutOfMemoryException = u"EngineOutOfMemoryException";
/// No answer came in time, or the engine had used up its CPU time.
inline constexpr const char16_t* EngineTimeoutException = u"EngineTimeoutException";
/// The engine tried what its confinement does not let pass.
inline constexpr const char16_t* EngineRefusedException = u"EngineRefusedException";

/// The file was cut short while the engine read it.
inline constexpr const char16_t* EngineFileCutException = u"EngineFileCutException";

/// How an engine exits whose allocation failed.
inline constexpr int engineStatusOutOfMemory = 86;
/// How an engine exits that cannot work here; it has noted why.
inline constexpr int engineStatusMissing = 87;
/// How an engine exits whose file was cut short while it was read in place.
inline constexpr int engineStatusFileCut = 88;

} // namespace kelvo
