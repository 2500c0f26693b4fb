#include "platform/webkit/engine/PageReader.h"

#include "PageScripts.h"

#include <gtk/gtk.h>

#include <algorithm>

namespace kelvo {
namespace {

/// The page's own address: as a local file it may show local pictures, and by the settings read nothing
/// local.
constexpr char pageAddress[] = "file:///";
constexpr char isolatedWorld[] = "plumwick";
constexpr int viewWidth = 1024;
constexpr int viewHeight = 1024;
/// Of the time for a page, what is kept for describing it.
constexpr double shareForDescription = 0.1;
constexpr double mostSecondsForDescription = 1;
constexpr gint64 microsecondsToRest = 2 * G_USEC_PER_SEC;
/// A web process keeps some memory of each page.
constexpr int pagesPerProcess = 60;

gint64 microseconds(double seconds) {
    return static_cast<gint64>(seconds * G_USEC_PER_SEC);
}

void setFeatures(WebKitSettings* settings) {
    // On: all of a page is described, whether it would have been scrolled to or not, and what it navigates to
    // is not. Off: what connects without the question of the request gate, what stores, and what plays.
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
                   {"ProcessSwapOnCrossSiteNavigation", FALSE},
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

WebKitSettings* newSettings() {
    WebKitSettings* settings = webkit_settings_new();
    // So that a page without styles is Times 12, as in rich text.
    webkit_settings_set_default_font_family(settings, "Times");
    webkit_settings_set_serif_font_family(settings, "Times");
    webkit_settings_set_sans_serif_font_family(settings, "Helvetica");
    webkit_settings_set_monospace_font_family(settings, "Courier");
    webkit_settings_set_default_font_size(settings, 12);
    webkit_settings_set_default_monospace_font_size(settings, 10);
    webkit_settings_set_enable_webgl(settings, FALSE);
    webkit_settings_set_enable_webaudio(settings, FALSE);
    webkit_settings_set_enable_media(settings, FALSE);
    webkit_settings_set_enable_media_stream(settings, FALSE);
    webkit_settings_set_media_playback_requires_user_gesture(settings, TRUE);
    webkit_settings_set_enable_html5_local_storage(settings, FALSE);
    webkit_settings_set_enable_html5_database(settings, FALSE);

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

void cancelDownload(WebKitWebContext*, WebKitDownload* download, gpointer) {
    webkit_download_cancel(download);
}

} // namespace

PageReader::PageReader(const std::string& extensionFolder, bool sandboxed)
    : gate_([this](const GateQuestion& question) { return decide(question); }) {
    context_ = webkit_web_context_new_ephemeral();
    webkit_web_context_set_cache_model(context_, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
    webkit_web_context_set_sandbox_enabled(context_, sandboxed);
    if (sandboxed) {
        webkit_web_context_add_path_to_sandbox(context_, extensionFolder.c_str(), TRUE);
        webkit_web_context_add_path_to_sandbox(context_, gate_.folder().c_str(), FALSE);
    }
    webkit_web_context_set_web_extensions_directory(context_, extensionFolder.c_str());
    webkit_web_context_set_web_extensions_initialization_user_data(
        context_, g_variant_new_string(gate_.socketPath().c_str()));
    g_signal_connect(context_, "download-started", G_CALLBACK(cancelDownload), nullptr);
    settings_ = newSettings();
    openView();
    rest();
}

PageReader::~PageReader() {
    closeView();
    g_object_unref(settings_);
    g_object_unref(context_);
}

void PageReader::openView() {
    gate_.openForOne();
    WebKitUserContentManager* content = webkit_user_content_manager_new();
    // The page that was given is the page that is read: leaving it for another is prevented, from this world,
    // where the page cannot take that back.
    WebKitUserScript* script = webkit_user_script_new_for_world(
        stayScript, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME, WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START,
        isolatedWorld, nullptr, nullptr);
    webkit_user_content_manager_add_script(content, script);
    webkit_user_script_unref(script);
    view_ = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context_, "settings", settings_,
                                         "user-content-manager", content, nullptr));
    g_object_unref(content);
    window_ = gtk_offscreen_window_new();
    gtk_window_set_default_size(GTK_WINDOW(window_), viewWidth, viewHeight);
    gtk_container_add(GTK_CONTAINER(window_), GTK_WIDGET(view_));
    gtk_widget_show_all(window_);

    g_signal_connect(view_, "load-changed", G_CALLBACK(onLoadChanged), this);
    g_signal_connect(view_, "load-failed", G_CALLBACK(onLoadFailed), this);
    g_signal_connect(view_, "web-process-terminated", G_CALLBACK(onTerminated), this);
    g_signal_connect(view_, "resource-load-started", G_CALLBACK(onResource), this);
    g_signal_connect(view_, "decide-policy", G_CALLBACK(onPolicy), nullptr);
    g_signal_connect(view_, "permission-request", G_CALLBACK(refusePermission), nullptr);
    g_signal_connect(view_, "authenticate", G_CALLBACK(cancelAuthentication), nullptr);
    g_signal_connect(view_, "run-file-chooser", G_CALLBACK(cancelFileChooser), nullptr);
    for (const char* signal : {"script-dialog", "print", "context-menu", "show-notification",
                               "enter-fullscreen", "show-option-menu", "run-color-chooser"})
        g_signal_connect(view_, signal, G_CALLBACK(showNothing), nullptr);
    pagesOfProcess_ = 0;
}

void PageReader::closeView() {
    for (const Resource& held : resources_)
        g_object_unref(held.resource);
    resources_.clear();
    if (!window_)
        return;
    g_signal_handlers_disconnect_by_data(view_, this);
    gtk_widget_destroy(window_);
    window_ = nullptr;
    view_ = nullptr;
}

bool PageReader::runUntil(const std::function<bool()>& condition, gint64 end) {
    GMainContext* loop = g_main_context_default();
    // Wakes the loop at the end, whether anything happens or not.
    bool isOver = g_get_monotonic_time() >= end;
    if (isOver)
        return condition();
    const auto milliseconds = static_cast<guint>((end - g_get_monotonic_time()) / 1000 + 1);
    const guint alarm = g_timeout_add(
        milliseconds,
        [](gpointer over) -> gboolean {
            *static_cast<bool*>(over) = true;
            return G_SOURCE_CONTINUE;
        },
        &isOver);
    while (!condition() && !isOver)
        g_main_context_iteration(loop, TRUE);
    g_source_remove(alarm);
    return condition();
}

void PageReader::onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageReader* self) {
    if (event == WEBKIT_LOAD_COMMITTED)
        self->isCommitted_ = true;
    else if (event == WEBKIT_LOAD_FINISHED && self->isCommitted_ && self->phase_ == Phase::loading)
        self->phase_ = Phase::finished;
}

gboolean PageReader::onLoadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError*, PageReader*) {
    // What there is of the page is read all the same; no page of errors takes its place.
    return TRUE;
}

void PageReader::onTerminated(WebKitWebView*, WebKitWebProcessTerminationReason, PageReader* self) {
    self->phase_ = Phase::gone;
}

void PageReader::onResource(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest* request,
                            PageReader* self) {
    if (!self->request_)
        return;
    const char* url = webkit_uri_request_get_uri(request);
    g_object_ref(resource);
    self->resources_.push_back({url ? url : "", resource});
}

std::string PageReader::decide(const GateQuestion& question) {
    if (question.url.rfind("about:", 0) == 0)
        return question.url;
    if (!request_ || phase_ != Phase::loading)
        return {};
    if (question.url == pageAddress)
        return isCommitted_ ? std::string() : question.url;
    return request_->decide(question);
}

std::optional<PageDescription> PageReader::read(const PageRequest& request) {
    const gint64 end = microseconds(request.deadlineSeconds);
    const gint64 forDescription = std::clamp<gint64>(
        static_cast<gint64>(static_cast<double>(end - g_get_monotonic_time()) * shareForDescription), 0,
        microseconds(mostSecondsForDescription));
    if (!view_)
        openView();
    request_ = &request;
    phase_ = Phase::loading;
    isCommitted_ = false;
    ++pagesOfProcess_;
    // Where nobody says what the bytes are, they are UTF-8 if they can be.
    const bool isUnicode = g_utf8_validate_len(request.bytes.data(), request.bytes.size(), nullptr);
    webkit_settings_set_default_charset(settings_, isUnicode ? "UTF-8" : "ISO-8859-1");
    // A null label would be UTF-8; the empty one leaves it to the page.
    GBytes* bytes = g_bytes_new(request.bytes.data(), request.bytes.size());
    webkit_web_view_load_bytes(view_, bytes, "text/html", request.charset.c_str(), pageAddress);
    g_bytes_unref(bytes);
    if (!runUntil([this] { return phase_ != Phase::loading; }, end - forDescription))
        webkit_web_view_stop_loading(view_);
    // Nothing is asked for from here on.
    request_ = nullptr;
    if (phase_ == Phase::gone)
        return std::nullopt;
    PageDescription description;
    const auto fields = describe(end);
    if (!fields)
        return std::nullopt;
    description.fields = *fields;
    description.resources = collectResources(*fields, end);
    return phase_ == Phase::gone ? std::nullopt : std::optional(std::move(description));
}

std::optional<std::string> PageReader::describe(gint64 end) {
    struct Answer {
        bool isThere = false;
        std::optional<std::string> fields;
    };
    // Outlives this call when the answer does.
    const auto answer = std::make_shared<Answer>();
    webkit_web_view_evaluate_javascript(
        view_, walkScript, -1, isolatedWorld, nullptr, nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Answer>> held(static_cast<std::shared_ptr<Answer>*>(data));
            Answer& own = **held;
            own.isThere = true;
            JSCValue* value =
                webkit_web_view_evaluate_javascript_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
            if (!value) {
                return;
            }
            if (jsc_value_is_string(value)) {
                GBytes* bytes = jsc_value_to_string_as_bytes(value);
                gsize size = 0;
                const auto* data_ = static_cast<const char*>(g_bytes_get_data(bytes, &size));
                own.fields.emplace(data_, size);
                g_bytes_unref(bytes);
            }
            g_object_unref(value);
        },
        new std::shared_ptr<Answer>(answer));
    if (runUntil([&] { return answer->isThere || phase_ == Phase::gone; }, end) && answer->fields)
        return answer->fields;
    if (phase_ != Phase::gone) {
        // A script of the page keeps the process to itself.
        webkit_web_view_terminate_web_process(view_);
        phase_ = Phase::gone;
    }
    return std::nullopt;
}

std::vector<PageResource> PageReader::collectResources(const std::string& fields, gint64 end) {
    struct Pending {
        std::size_t left = 0;
        std::vector<PageResource> found;
    };
    struct One {
        std::shared_ptr<Pending> pending;
        PageResource resource;
    };
    const auto pending = std::make_shared<Pending>();
    for (const Resource& held : resources_) {
        WebKitURIResponse* response = webkit_web_resource_get_response(held.resource);
        const char* mimeType = response ? webkit_uri_response_get_mime_type(response) : nullptr;
        // A file that is missing has an empty body and no status; errors of a server have both.
        const guint status = response ? webkit_uri_response_get_status_code(response) : 0;
        if (!mimeType || !g_str_has_prefix(mimeType, "image/") || status >= 400 ||
            fields.find('\0' + held.requestedURL + '\0') == std::string::npos)
            continue;
        ++pending->left;
        webkit_web_resource_get_data(
            held.resource, nullptr,
            [](GObject* source, GAsyncResult* result, gpointer data) {
                const std::unique_ptr<One> one(static_cast<One*>(data));
                gsize size = 0;
                guchar* bytes =
                    webkit_web_resource_get_data_finish(WEBKIT_WEB_RESOURCE(source), result, &size, nullptr);
                --one->pending->left;
                if (bytes && size > 0) {
                    one->resource.bytes.assign(reinterpret_cast<const char*>(bytes), size);
                    one->pending->found.push_back(std::move(one->resource));
                }
                g_free(bytes);
            },
            new One{pending, {held.requestedURL, mimeType, {}}});
    }
    runUntil([&] { return pending->left == 0 || phase_ == Phase::gone; }, end);
    return std::move(pending->found);
}

void PageReader::rest() {
    for (const Resource& held : resources_)
        g_object_unref(held.resource);
    resources_.clear();
    request_ = nullptr;
    if (phase_ == Phase::gone || pagesOfProcess_ >= pagesPerProcess) {
        if (phase_ != Phase::gone)
            webkit_web_view_terminate_web_process(view_);
        closeView();
        openView();
    }
    phase_ = Phase::loading;
    isCommitted_ = false;
    webkit_web_view_load_uri(view_, "about:blank");
    if (!runUntil([this] { return phase_ != Phase::loading; }, g_get_monotonic_time() + microsecondsToRest) ||
        phase_ == Phase::gone) {
        webkit_web_view_terminate_web_process(view_);
        closeView();
    }
    phase_ = Phase::idle;
}

} // namespace kelvo
