#include "platform/webkit/engine/extension/FrameWalk.h"

#include "platform/webkit/engine/PageScripts.h"
#include "platform/webkit/engine/PageWorld.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {
namespace {

/// More are left out.
constexpr std::size_t mostFrames = 256;

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Context = std::unique_ptr<JSCContext, Unref>;
using Script = std::unique_ptr<JSCValue, Unref>;

/// The frames of the one page that this web process shows, the main frame first, each in the isolated world. A
/// context stays valid when its frame has gone or shows another document.
std::vector<Context>& contexts() {
    static auto& contexts = *new std::vector<Context>;
    return contexts;
}

Script evaluate(const Context& context, const char* source) {
    return Script(jsc_context_evaluate(context.get(), source, -1));
}

/// Pages make frames and throw them away again.
void forgetFramesThatAreGone() {
    const auto firstGone =
        std::remove_if(contexts().begin() + 1, contexts().end(), [](const Context& context) {
            return jsc_value_to_boolean(evaluate(context, "closed").get()) != FALSE;
        });
    contexts().erase(firstGone, contexts().end());
    if (contexts().size() > mostFrames)
        contexts().resize(mostFrames);
}

void onWindowCleared(WebKitScriptWorld* world, WebKitWebPage*, WebKitFrame* frame, gpointer) {
    if (webkit_frame_is_main_frame(frame))
        contexts().clear();
    else if (contexts().empty())
        return;
    contexts().emplace_back(webkit_frame_get_js_context_for_script_world(frame, world));
    if (contexts().size() == 2 * mostFrames)
        forgetFramesThatAreGone();
}

GVariant* answerWith(const Script& text) {
    if (!jsc_value_is_string(text.get()))
        return nullptr;
    GBytes* bytes = jsc_value_to_string_as_bytes(text.get());
    GVariant* variant = g_variant_new_from_bytes(G_VARIANT_TYPE_BYTESTRING, bytes, TRUE);
    g_bytes_unref(bytes);
    return variant;
}

GVariant* state(const Context& main) {
    // A page that one of its scripts has ended is complete as well, but was never told that it has loaded.
    return answerWith(
        evaluate(main, "performance.timing.loadEventStart > 0 ? 'loaded' : document.readyState"));
}

GVariant* walk(const Context& main, const char* bounds) {
    forgetFramesThatAreGone();
    // By the window of the frame, which is what its element in the page has as well.
    const Script walks = evaluate(main, "new Map()");
    Script walkOfMain;
    for (const Context& context : contexts()) {
        Script walk = evaluate(context, walkScript);
        const Script window = evaluate(context, "self");
        const Script ignored(jsc_value_object_invoke_method(walks.get(), "set", JSC_TYPE_VALUE, window.get(),
                                                            JSC_TYPE_VALUE, walk.get(), G_TYPE_NONE));
        if (!walkOfMain)
            walkOfMain = std::move(walk);
    }
    return answerWith(
        Script(jsc_value_function_call(walkOfMain.get(), JSC_TYPE_VALUE, evaluate(main, bounds).get(),
                                       JSC_TYPE_VALUE, walks.get(), G_TYPE_NONE)));
}

gboolean onMessage(WebKitWebPage*, WebKitUserMessage* message, gpointer) {
    const std::string_view name = webkit_user_message_get_name(message);
    GVariant* parameter = webkit_user_message_get_parameters(message);
    GVariant* answer = nullptr;
    if (!contexts().empty() && name == stateMessage)
        answer = state(contexts().front());
    else if (!contexts().empty() && name == walkMessage && parameter &&
             g_variant_is_of_type(parameter, G_VARIANT_TYPE_STRING))
        answer = walk(contexts().front(), g_variant_get_string(parameter, nullptr));
    webkit_user_message_send_reply(message, webkit_user_message_new(name.data(), answer));
    return TRUE;
}

void onPageCreated(WebKitWebExtension*, WebKitWebPage* page, gpointer) {
    g_signal_connect(page, "user-message-received", G_CALLBACK(onMessage), nullptr);
}

} // namespace

void answerWalks(WebKitWebExtension* extension) {
    // Stays as long as the process.
    WebKitScriptWorld* world = webkit_script_world_new_with_name(isolatedWorld);
    g_signal_connect(world, "window-object-cleared", G_CALLBACK(onWindowCleared), nullptr);
    g_signal_connect(extension, "page-created", G_CALLBACK(onPageCreated), nullptr);
}

} // namespace kelvo
