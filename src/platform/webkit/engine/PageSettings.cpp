#include "platform/webkit/engine/PageSettings.h"

#include <initializer_list>

namespace kelvo {
namespace {

void setFeatures(WebKitSettings* settings) {
    // On: all of a page is described, whether it would have been scrolled to or not, and what it navigates to
    // is not. Off: what connects without the question of the request gate, what stores, what plays, and what
    // would spread a page over several processes.
    constexpr struct {
        const char* name;
        gboolean isOn;
    } choices[] = {{"LazyImageLoading", FALSE},
                   {"LazyIframeLoading", FALSE},
                   {"WebSocket", FALSE},
                   {"LinkPreconnect", FALSE},
                   {"LinkPreconnectEarlyHints", FALSE},
                   {"LinkDNSPrefetch", FALSE},
                   {"ServiceWorkers", FALSE},
                   {"SharedWorker", FALSE},
                   {"BeaconAPI", FALSE},
                   {"CacheAPI", FALSE},
                   {"IndexedDBAPI", FALSE},
                   {"LocalStorage", FALSE},
                   {"Notifications", FALSE},
                   {"Media", FALSE},
                   {"MediaSource", FALSE},
                   {"MediaSession", FALSE},
                   {"MediaDevices", FALSE},
                   {"PDFJSViewer", FALSE},
                   {"FullScreen", FALSE},
                   {"HiddenPageDOMTimerThrottling", FALSE},
                   {"HiddenPageDOMTimerThrottlingAutoIncreases", FALSE},
                   {"ProcessSwapOnCrossSiteNavigation", FALSE},
                   {"SiteIsolation", FALSE},
                   {"UsesBackForwardCache", FALSE},
                   {"ThreadedScrolling", FALSE},
                   {"AcceleratedCompositing", FALSE},
                   {"NavigationAPI", TRUE}};
    WebKitFeatureList* features = webkit_settings_get_all_features();
    for (gsize index = 0; index < webkit_feature_list_get_length(features); ++index) {
        WebKitFeature* feature = webkit_feature_list_get(features, index);
        const char* name = webkit_feature_get_identifier(feature);
        for (const auto& choice : choices) {
            if (g_strcmp0(name, choice.name) == 0)
                webkit_settings_set_feature_enabled(settings, feature, choice.isOn);
        }
    }
    webkit_feature_list_unref(features);
}

} // namespace

WebKitSettings* newPageSettings() {
    WebKitSettings* settings = webkit_settings_new();
    // A page without styles is Times 12, as in rich text; the sizes are what pages expect of browsers, in pixels.
    webkit_settings_set_default_font_family(settings, "Times");
    webkit_settings_set_serif_font_family(settings, "Times");
    webkit_settings_set_sans_serif_font_family(settings, "Helvetica");
    webkit_settings_set_monospace_font_family(settings, "Courier");
    webkit_settings_set_default_font_size(settings, 16);
    webkit_settings_set_default_monospace_font_size(settings, 13);
    webkit_settings_set_enable_webgl(settings, FALSE);
    webkit_settings_set_enable_webaudio(settings, FALSE);
    webkit_settings_set_enable_media(settings, FALSE);
    webkit_settings_set_enable_media_stream(settings, FALSE);
    webkit_settings_set_media_playback_requires_user_gesture(settings, TRUE);
    webkit_settings_set_enable_html5_local_storage(settings, FALSE);
    webkit_settings_set_enable_html5_database(settings, FALSE);
    webkit_settings_set_enable_webrtc(settings, FALSE);
    webkit_settings_set_enable_page_cache(settings, FALSE);
    webkit_settings_set_enable_fullscreen(settings, FALSE);
    webkit_settings_set_javascript_can_open_windows_automatically(settings, FALSE);
    webkit_settings_set_allow_modal_dialogs(settings, FALSE);
    webkit_settings_set_allow_file_access_from_file_urls(settings, FALSE);
    webkit_settings_set_allow_universal_access_from_file_urls(settings, FALSE);
    webkit_settings_set_hardware_acceleration_policy(settings, WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
    setFeatures(settings);
    return settings;
}

namespace {

gboolean onPolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type, gpointer) {
    if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION)
        return FALSE;
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE &&
        webkit_response_policy_decision_is_mime_type_supported(WEBKIT_RESPONSE_POLICY_DECISION(decision)))
        return FALSE;
    // New windows, and what would become a download.
    webkit_policy_decision_ignore(decision);
    return TRUE;
}

gboolean refusePermission(WebKitWebView*, WebKitPermissionRequest* request, gpointer) {
    webkit_permission_request_deny(request);
    return TRUE;
}

gboolean cancelAuthentication(WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) {
    webkit_authentication_request_cancel(request);
    return TRUE;
}

gboolean cancelFileChooser(WebKitWebView*, WebKitFileChooserRequest* request, gpointer) {
    webkit_file_chooser_request_cancel(request);
    return TRUE;
}

/// For the signals whose default would show something.
gboolean showNothing() {
    return TRUE;
}

} // namespace

void keepToThePage(WebKitWebView* view) {
    g_signal_connect(view, "decide-policy", G_CALLBACK(onPolicy), nullptr);
    g_signal_connect(view, "permission-request", G_CALLBACK(refusePermission), nullptr);
    g_signal_connect(view, "authenticate", G_CALLBACK(cancelAuthentication), nullptr);
    g_signal_connect(view, "run-file-chooser", G_CALLBACK(cancelFileChooser), nullptr);
    for (const char* signal : {"script-dialog", "print", "context-menu", "show-notification",
                               "enter-fullscreen", "show-option-menu", "run-color-chooser"})
        g_signal_connect(view, signal, G_CALLBACK(showNothing), nullptr);
}

} // namespace kelvo
