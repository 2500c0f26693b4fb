#include "platform/webkit/engine/PageReader.h"

#include "platform/foundation/NSLog.h"
#include "platform/foundation/processes/ProcessFacts.h"
#include "platform/webkit/EngineURL.h"
#include "platform/webkit/PageBase.h"
#include "platform/webkit/engine/PageScripts.h"
#include "platform/webkit/engine/PageSettings.h"
#include "platform/webkit/engine/PageWords.h"
#include "platform/webkit/engine/PageWorld.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <string_view>
#include <unordered_set>
#include <utility>

#include <csignal>

#include <unistd.h>

namespace kelvo {
namespace {

/// The page's own address: as a local file it may show local pictures, and by the settings read nothing
/// local.
constexpr char pageAddress[] = "file:///";
/// In pixels: about what a printed page holds, and what pages made for large screens still stand.
constexpr int viewWidth = 800;
constexpr int viewHeight = 1024;
/// The parts of a page's time that are kept for describing it, and before that for loading it once more.
constexpr double shareForDescription = 0.1;
constexpr double mostSecondsForDescription = 1;
constexpr double shareForSecondLoad = 0.2;
constexpr double mostSecondsForSecondLoad = 2;
/// The part of the time left for describing it that the walk may take: what it has not seen by then is left
/// out.
constexpr double shareForWalk = 0.6;
constexpr double secondsForState = 0.2;
/// How long the script of a page may hold up the leaving of it.
constexpr double secondsToLeave = 0.5;
constexpr double secondsToStart = 5;
constexpr double secondsToConnect = 1;
constexpr guint millisecondsBetweenLooks = 100;
/// The largest a web process may become. A page that needs more is no page.
constexpr std::size_t mostResidentBytes = std::size_t{3} << 29;
/// A web process keeps some memory of each page.
constexpr int pagesPerProcess = 60;
/// For all that a page loads, frames too; our own scripts do not come under it.
constexpr char withoutScriptsPolicy[] = "script-src 'none'";

gint64 microseconds(double seconds) {
    return static_cast<gint64>(seconds * G_USEC_PER_SEC);
}

double secondsUntil(gint64 end) {
    return std::max(0.0,
                    static_cast<double>(end - g_get_monotonic_time()) / static_cast<double>(G_USEC_PER_SEC));
}

/// What all frames of a page share: the nodes, the UTF-16 units of text, the depth of elements and that of
/// frames, the length of a link and of a drawing, and the pixels below which a drawing is but the sign of a
/// button.
std::string walkBounds(double seconds, bool mayBeBlank) {
    return "({nodes: 1000000, units: 20000000, depth: 2000, frames: 12, link: 8192, drawing: 1000000,"
           " leastDrawing: 32, mayBeBlank: " +
           std::string(mayBeBlank ? "true" : "false") + ", nowhere: '" + std::string(nowhereURL) +
           "', milliseconds: " + std::to_string(static_cast<int>(seconds * 1000)) + "})";
}

bool needsNetwork(const std::string& url) {
    return url.rfind("http", 0) == 0 || url.rfind("ftp", 0) == 0;
}

/// The addresses in what the walk wrote down.
std::unordered_set<std::string_view> addressesIn(std::string_view fields) {
    std::unordered_set<std::string_view> addresses;
    for (std::size_t at = 0; at < fields.size();) {
        const std::size_t end = std::min(fields.find('\0', at), fields.size());
        const std::string_view field = fields.substr(at, end - at);
        if (field.substr(0, 5) == "data:" || field.find("://") < 16)
            addresses.insert(field);
        at = end + 1;
    }
    return addresses;
}

void addScript(WebKitUserContentManager* content, const char* source, WebKitUserContentInjectedFrames frames,
               WebKitUserScriptInjectionTime time) {
    WebKitUserScript* script =
        webkit_user_script_new_for_world(source, frames, time, isolatedWorld, nullptr, nullptr);
    webkit_user_content_manager_add_script(content, script);
    webkit_user_script_unref(script);
}

void cancelDownload(WebKitWebContext*, WebKitDownload* download, gpointer) {
    webkit_download_cancel(download);
}

} // namespace

PageReader::PageReader(const std::string& extensionFolder, const std::string& runtimeFolder, bool sandboxed)
    : gate_(runtimeFolder, [this](const GateQuestion& question) { return decide(question); }),
      proxy_([this](const std::string& host, std::uint16_t port) { return decideConnection(host, port); }) {
    context_ = webkit_web_context_new_ephemeral();
    setProxy();
    webkit_web_context_set_cache_model(context_, WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
    webkit_web_context_set_sandbox_enabled(context_, sandboxed);
    if (sandboxed) {
        webkit_web_context_add_path_to_sandbox(context_, extensionFolder.c_str(), TRUE);
        webkit_web_context_add_path_to_sandbox(context_, gate_.folder().c_str(), FALSE);
    }
    webkit_web_context_set_web_extensions_directory(context_, extensionFolder.c_str());
    webkit_web_context_set_web_extensions_initialization_user_data(
        context_, g_variant_new_string(gate_.socketPath().c_str()));
    webkit_cookie_manager_set_accept_policy(webkit_web_context_get_cookie_manager(context_),
                                            WEBKIT_COOKIE_POLICY_ACCEPT_NEVER);
    g_signal_connect(context_, "download-started", G_CALLBACK(cancelDownload), nullptr);
    settings_ = newPageSettings();
    open(Without::nothing, secondsToStart);
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
    addScript(content, stayScript, WEBKIT_USER_CONTENT_INJECT_TOP_FRAME,
              WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START);
    const bool hasScripts = without_ != Without::scripts;
    if (!hasScripts)
        addScript(content, noscriptScript, WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                  WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_END);
    view_ = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context_, "settings", settings_,
                                         "user-content-manager", content, "default-content-security-policy",
                                         hasScripts ? nullptr : withoutScriptsPolicy, nullptr));
    g_object_unref(content);
    // Never shown, so that nothing is painted; it is laid out in the size that it is given.
    window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    gtk_container_add(GTK_CONTAINER(window_), GTK_WIDGET(view_));
    gtk_widget_show(GTK_WIDGET(view_));
    GtkAllocation size{0, 0, viewWidth, viewHeight};
    int leastWidth = 0;
    gtk_widget_get_preferred_width(GTK_WIDGET(view_), &leastWidth, nullptr);
    gtk_widget_size_allocate(GTK_WIDGET(view_), &size);

    g_signal_connect(view_, "load-changed", G_CALLBACK(onLoadChanged), this);
    g_signal_connect(view_, "load-failed", G_CALLBACK(onLoadFailed), this);
    g_signal_connect(view_, "web-process-terminated", G_CALLBACK(onTerminated), this);
    g_signal_connect(view_, "resource-load-started", G_CALLBACK(onResource), this);
    keepToThePage(view_);
    pagesOfProcess_ = 0;
}

void PageReader::closeView() {
    dropResources();
    if (!window_)
        return;
    g_signal_handlers_disconnect_by_data(view_, this);
    gtk_widget_destroy(window_);
    window_ = nullptr;
    view_ = nullptr;
}

bool PageReader::runUntil(const std::function<bool()>& condition, gint64 end) {
    bool isTimeToLook = false;
    const gint64 start = g_get_monotonic_time();
    const auto milliseconds = static_cast<guint>(std::max<gint64>(0, (end - start) / 1000 + 1));
    // Wakes the loop, whether anything happens or not.
    const guint alarm = g_timeout_add(
        std::min(milliseconds, millisecondsBetweenLooks),
        [](gpointer flag) -> gboolean {
            *static_cast<bool*>(flag) = true;
            return G_SOURCE_CONTINUE;
        },
        &isTimeToLook);
    while (!condition() && g_get_monotonic_time() < end) {
        g_main_context_iteration(nullptr, TRUE);
        if (std::exchange(isTimeToLook, false) &&
            residentBytesOfProcess(gate_.peerProcess()) > mostResidentBytes) {
            isTooLarge_ = true;
            giveUp();
        }
    }
    g_source_remove(alarm);
    return condition();
}

void PageReader::giveUp() {
    if (isThere())
        webkit_web_view_terminate_web_process(view_);
    phase_ = Phase::gone;
    replaceNetworkProcess();
}

void PageReader::noteEnd(const PageRequest& request) const {
    if (!view_)
        request.note(Outcome::missingEngine, u"WebKit does not start, or its extension is missing");
    else if (isTooLarge_)
        request.note(Outcome::outOfMemory, u"it takes more memory than a page may");
    else
        request.note(Outcome::crashed, u"reading it ended the program that shows pages");
}

void PageReader::setProxy() {
    // Nothing goes around it: neither the hosts that are ignored by default nor what the system says of
    // proxies.
    WebKitNetworkProxySettings* settings =
        webkit_network_proxy_settings_new(proxy_.renewAddress().c_str(), nullptr);
    webkit_website_data_manager_set_network_proxy_settings(
        webkit_web_context_get_website_data_manager(context_), WEBKIT_NETWORK_PROXY_MODE_CUSTOM, settings);
    webkit_network_proxy_settings_free(settings);
}

void PageReader::replaceNetworkProcess() {
    proxy_.close();
    for (const pid_t process : childProcessesNamed("WebKitNetworkPr"))
        kill(process, SIGKILL);
    setProxy();
}

void PageReader::onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageReader* self) {
    if (event == WEBKIT_LOAD_COMMITTED && self->isCommitted_ && self->phase_ == Phase::loading)
        // Another page has taken its place.
        self->phase_ = Phase::left;
    else if (event == WEBKIT_LOAD_COMMITTED)
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
    const std::string decided = request_->decide(question);
    // What the delegate puts in the place of a request is its own affair.
    if (decided == question.url && decided.rfind("file:", 0) == 0 &&
        !request_->files.mayLoad(URLOfEngine(NSString::stringByRepairingUTF8String(decided)))) {
        request_->noteRefusal(decided);
        return {};
    }
    return without_ == Without::network && needsNetwork(decided) ? std::string() : decided;
}

ConnectionDecision PageReader::decideConnection(const std::string& host, std::uint16_t port) {
    return request_ && phase_ == Phase::loading && without_ != Without::network
               ? request_->decideConnection(host, port)
               : ConnectionDecision();
}

void PageReader::load(const PageRequest& request, Without without, gint64 end) {
    // It may have ended since.
    const bool isDead = !view_ || phase_ == Phase::gone || gate_.peerProcess() == 0;
    if (isDead || without == Without::scripts) {
        if (!isDead)
            giveUp();
        closeView();
        open(without, std::min(secondsToStart, secondsUntil(end)));
    }
    if (!view_)
        return;
    ++pagesOfProcess_;
    without_ = without;
    request_ = &request;
    phase_ = Phase::loading;
    isCommitted_ = false;
    dropResources();
    proxy_.open();
    // Where nobody says what the bytes are, they are UTF-8 if they can be.
    const bool isUnicode = g_utf8_validate_len(request.bytes.data(), request.bytes.size(), nullptr);
    webkit_settings_set_default_charset(settings_, isUnicode ? "UTF-8" : "ISO-8859-1");
    // A null label would be UTF-8; the empty one leaves it to the page.
    GBytes* bytes = g_bytes_new(request.bytes.data(), request.bytes.size());
    webkit_web_view_load_bytes(view_, bytes, "text/html", request.charset.c_str(), pageAddress);
    g_bytes_unref(bytes);
    runUntil([this] { return phase_ != Phase::loading; }, end);
}

PageReader::Without PageReader::whatToDoWithout(gint64 end) {
    if (phase_ == Phase::left || !isCommitted_)
        return Without::scripts;
    const auto state = ask(stateMessage, nullptr, end);
    // A script keeps the process to itself, or has ended the page half-read.
    if (!state || (phase_ == Phase::finished && *state != "loaded"))
        return Without::scripts;
    // A page that waits for the scripts or style sheets of a server has no text yet.
    return *state == "loading" ? Without::network : Without::nothing;
}

std::optional<PageDescription> PageReader::read(const PageRequest& request) {
    const gint64 end = microseconds(request.deadlineSeconds);
    const double seconds = secondsUntil(end);
    const double secondsForSecondLoad = std::min(seconds * shareForSecondLoad, mostSecondsForSecondLoad);
    const gint64 endOfLoad =
        end - microseconds(std::min(seconds * shareForDescription, mostSecondsForDescription));
    const gint64 endOfFirstLoad = endOfLoad - microseconds(secondsForSecondLoad);

    isTooLarge_ = false;
    load(request, Without::nothing, endOfFirstLoad);
    if (!isThere()) {
        noteEnd(request);
        return std::nullopt;
    }
    std::optional<std::string> fields;
    const bool isWordy = holdsWords(request.bytes);
    bool hidesWords = false;
    bool isLate = false;
    Without without =
        whatToDoWithout(std::max(endOfFirstLoad, g_get_monotonic_time() + microseconds(secondsForState)));
    if (without == Without::nothing) {
        isLate = !runUntil([this] { return phase_ != Phase::loading; }, endOfLoad);
        // A script may still begin that does not end.
        const bool isEarly = secondsUntil(endOfFirstLoad) > secondsForSecondLoad;
        // A page that shows none of its words went wrong, as a rule by its scripts.
        fields = walk(isEarly ? endOfFirstLoad : end, !isEarly || !isWordy);
        if (!fields && isEarly)
            without = Without::scripts;
    }
    if (without != Without::nothing && isThere()) {
        load(request, without, endOfLoad);
        isLate = phase_ == Phase::loading;
        // Until then the page before is there.
        if (isThere() && isCommitted_)
            fields = walk(end, !isWordy);
        hidesWords = !fields && isThere() && isCommitted_ && isWordy;
        if (hidesWords)
            fields = walk(end, true);
    }
    request_ = nullptr;
    if (!isThere()) {
        noteEnd(request);
        return std::nullopt;
    }
    if (!fields) {
        request.note(Outcome::timedOut, u"it was not read in the time that a page may take");
        giveUp();
        return std::nullopt;
    }
    if (hidesWords)
        request.note(Outcome::answered, u"it shows none of its text, with its scripts and without");
    else if (without == Without::scripts)
        request.note(Outcome::answered, u"its scripts were stopped, and it was read without them");
    else if (without == Without::network)
        request.note(Outcome::answered, u"it was read without what the network did not send in time");
    else if (isLate)
        request.note(Outcome::answered, u"what had not come in time was left out");
    PageDescription description;
    description.fields = std::move(*fields);
    description.resources = collectResources(description.fields, end);
    // What goes on all the same (a request may outlive its page) comes to its end before the answer is out.
    proxy_.close();
    if (phase_ == Phase::gone) {
        noteEnd(request);
        return std::nullopt;
    }
    return description;
}

std::optional<std::string> PageReader::walk(gint64 end, bool mayBeBlank) {
    // Nothing is asked for from here on.
    request_ = nullptr;
    if (phase_ == Phase::loading)
        webkit_web_view_stop_loading(view_);
    const std::string bounds = walkBounds(shareForWalk * secondsUntil(end), mayBeBlank);
    return ask(walkMessage, g_variant_new_string(bounds.c_str()), end);
}

std::optional<std::string> PageReader::ask(const char* message, GVariant* parameter, gint64 end) {
    struct Answer {
        bool isThere = false;
        std::optional<std::string> text;
    };
    // Outlives this call when the answer does.
    const auto answer = std::make_shared<Answer>();
    webkit_web_view_send_message_to_page(
        view_, webkit_user_message_new(message, parameter), nullptr,
        [](GObject* view, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Answer>> held(static_cast<std::shared_ptr<Answer>*>(data));
            Answer& own = **held;
            own.isThere = true;
            WebKitUserMessage* reply =
                webkit_web_view_send_message_to_page_finish(WEBKIT_WEB_VIEW(view), result, nullptr);
            if (!reply)
                return;
            GVariant* variant = webkit_user_message_get_parameters(reply);
            if (variant && g_variant_is_of_type(variant, G_VARIANT_TYPE_BYTESTRING)) {
                gsize size = 0;
                const void* bytes = g_variant_get_fixed_array(variant, &size, 1);
                own.text.emplace(static_cast<const char*>(bytes), size);
            }
            g_object_unref(reply);
        },
        new std::shared_ptr<Answer>(answer));
    runUntil([&] { return answer->isThere || phase_ == Phase::gone; }, end);
    return std::move(answer->text);
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
    const auto addresses = addressesIn(fields);
    const auto pending = std::make_shared<Pending>();
    for (const Resource& held : resources_) {
        WebKitURIResponse* response = webkit_web_resource_get_response(held.resource);
        const char* mimeType = response ? webkit_uri_response_get_mime_type(response) : nullptr;
        // A file that is missing has an empty body and no status; errors of a server have both.
        const guint status = response ? webkit_uri_response_get_status_code(response) : 0;
        if (!mimeType || !g_str_has_prefix(mimeType, "image/") || status >= 400 ||
            addresses.count(held.requestedURL) == 0)
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

bool PageReader::goBlank(double secondsToWait) {
    phase_ = Phase::loading;
    isCommitted_ = false;
    webkit_web_view_load_uri(view_, "about:blank");
    return runUntil([this] { return phase_ != Phase::loading; },
                    g_get_monotonic_time() + microseconds(secondsToWait)) &&
           phase_ == Phase::finished &&
           // Whose requests nobody is asked about loads nothing.
           runUntil([this] { return gate_.peerProcess() != 0; },
                    g_get_monotonic_time() + microseconds(secondsToConnect));
}

void PageReader::rest() {
    dropResources();
    // A page that was in the network may have requests that outlive it. They end with the network process,
    // and a web process is of no use without the one that it started with.
    if (!isThere() || without_ == Without::scripts || proxy_.wasUsed() ||
        pagesOfProcess_ >= pagesPerProcess || !goBlank(secondsToLeave)) {
        giveUp();
        closeView();
        open(Without::nothing, secondsToStart);
    }
    phase_ = Phase::idle;
}

void PageReader::open(Without without, double secondsToWait) {
    without_ = without;
    openView();
    if (!goBlank(secondsToWait)) {
        NSLog(u"No page can be read: WebKit does not start, or its extension is missing.");
        giveUp();
        closeView();
        gate_.close();
    }
    phase_ = Phase::idle;
}

void PageReader::dropResources() {
    for (const Resource& held : resources_)
        g_object_unref(held.resource);
    resources_.clear();
}

} // namespace kelvo
