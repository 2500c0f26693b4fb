#pragma once

namespace kelvo {

/// Publishes the root object under KelvoImExport::registeredName and serves for ever; the process ends when
/// it is killed. Takes no arguments and has no configuration.
///
/// When the name cannot be registered, because a first copy holds it, the process goes on all the same, and
/// no client finds it.
[[noreturn]] void runService();

} // namespace kelvo
