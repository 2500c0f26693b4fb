#pragma once

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/plugins/CFPlugIn.h"

#include <cstdint>
#include <string>

namespace kelvo {

/// The process in which plug-ins are.
class PlugInEngine {
public:
    /// The one for this plug-in: that of the system's own, when its folder really lies in the system's folder of
    /// importers, or that of all others.
    static PlugInEngine& engineForPlugIn(const CFPlugIn& plugIn);

    PlugInEngine(const PlugInEngine&) = delete;
    PlugInEngine& operator=(const PlugInEngine&) = delete;

    enum class Message : std::uint8_t { first, continued };

    /// What EngineProcess::ask does, in the time that the plug-in has left. Of the conversation only what it reports and
    /// asks is looked at.
    Value ask(NSMutableDictionary message, const CFPlugIn& plugIn, Message place,
              EngineConversation conversation = {});

    /// Has the object given up with the next message, before what that is about: nobody waits for it.
    void release(std::uint64_t number) { released_ = number; }

private:
    explicit PlugInEngine(EngineDescription description);

    EngineProcess process_;
    /// 0: none. An engine that does not have it any more leaves it alone.
    std::uint64_t released_ = 0;
};

/// "importer PDF": the plug-in in sentences.
NSString titleOfPlugIn(const CFPlugIn& plugIn);

} // namespace kelvo
