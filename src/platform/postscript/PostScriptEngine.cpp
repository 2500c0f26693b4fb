#include "platform/postscript/PostScriptEngine.h"

#include "platform/postscript/PostScriptEngineMessages.h"

namespace kelvo {
namespace {

EngineDescription description() {
    EngineDescription description;
    description.programName = postscriptengine::programName;
    description.title = u"PostScript engine";
    // What a program has done to the interpreter ends with it; the next is ready before it is asked for.
    description.mostMessages = 1;
    // The second thread would reserve more addresses than an interpreter may have.
    description.environment = {{"MALLOC_ARENA_MAX", "1"}};
    return description;
}

} // namespace

PostScriptEngine::PostScriptEngine() : process_(description()) {}

PostScriptEngine& PostScriptEngine::sharedEngine() {
    // Never destroyed, because the run loop that it stands on goes first: it ends with the process.
    static PostScriptEngine* const engine = new PostScriptEngine;
    return *engine;
}

} // namespace kelvo
