#include "platform/webkit/engine/GateMessages.h"
#include "platform/webkit/engine/extension/FrameWalk.h"

#include <webkit2/webkit-web-extension.h>

#include <algorithm>
#include <string>

#include <unistd.h>

namespace {

/// The web process connects once, when it starts.
int gateDescriptor = -1;

int connectToGate(const std::string& path) {
    const auto address = kelvo::gate::addressOfSocket(path);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (address && descriptor >= 0 &&
        connect(descriptor, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) == 0)
        return descriptor;
    if (descriptor >= 0)
        close(descriptor);
    return -1;
}

/// Embedded data can be megabytes, of which only the beginning is of interest, up to where the contents
/// stand.
std::string addressInQuestion(const std::string& url) {
    constexpr std::size_t mostBytes = 1024;
    if (url.size() <= mostBytes || url.rfind("data:", 0) != 0)
        return url;
    return url.substr(0, std::min(url.find(','), mostBytes - 1) + 1);
}

/// Whatever goes wrong refuses the request.
std::string askGate(const std::string& url, const std::string& redirectedFrom, unsigned statusCode) {
    using namespace kelvo::gate;
    if (url.size() > maximumLength || redirectedFrom.size() > maximumLength)
        return {};
    if (!sendText(gateDescriptor, url) || !sendText(gateDescriptor, redirectedFrom) ||
        !sendText(gateDescriptor, std::to_string(statusCode)))
        return {};
    return receiveText(gateDescriptor).value_or(std::string());
}

gboolean onSendRequest(WebKitWebPage*, WebKitURIRequest* request, WebKitURIResponse* redirectResponse,
                       gpointer) {
    const char* address = webkit_uri_request_get_uri(request);
    if (!address)
        return TRUE;
    const std::string url = addressInQuestion(address);
    std::string redirectedFrom;
    unsigned statusCode = 0;
    if (redirectResponse) {
        redirectedFrom = addressInQuestion(webkit_uri_response_get_uri(redirectResponse));
        statusCode = webkit_uri_response_get_status_code(redirectResponse);
    }
    const std::string decided = askGate(url, redirectedFrom, statusCode);
    if (!decided.empty() && decided != url)
        webkit_uri_request_set_uri(request, decided.c_str());
    return decided.empty();
}

void onPageCreated(WebKitWebExtension*, WebKitWebPage* page, gpointer) {
    g_signal_connect(page, "send-request", G_CALLBACK(onSendRequest), nullptr);
}

} // namespace

extern "C" G_MODULE_EXPORT void webkit_web_extension_initialize_with_user_data(WebKitWebExtension* extension,
                                                                               const GVariant* userData) {
    if (userData && g_variant_is_of_type(const_cast<GVariant*>(userData), G_VARIANT_TYPE_STRING))
        gateDescriptor = connectToGate(g_variant_get_string(const_cast<GVariant*>(userData), nullptr));
    g_signal_connect(extension, "page-created", G_CALLBACK(onPageCreated), nullptr);
    kelvo::answerWalks(extension);
}
