#include "platform/webkit/WebEngine.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/connections/SCNetworkReachability.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/webkit/EngineURL.h"
#include "platform/webkit/PageBase.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <unordered_map>

namespace kelvo {
namespace {

/// Who asks waits no longer than the page may take, and what the engine gives has to be handed on and made
/// text of.
constexpr double secondsToHandOn = 0.3;
constexpr double mostShareToHandOn = 0.1;
/// So that the path of a socket below the engine's folder is not too long for one.
constexpr std::size_t mostBytesInFolder = 95;
/// After the engine should have ended a page by itself, how long until it is ended.
constexpr double secondsOfGrace = 0.2;

constexpr int httpsPort = 443;

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

EngineDescription description() {
    EngineDescription description;
    description.programName = "plumwick-web-engine";
    description.title = u"web engine";
    const char* const users = std::getenv("XDG_RUNTIME_DIR");
    description.folderParents = {users ? users : "", "/tmp"};
    description.longestFolderPath = mostBytesInFolder;
    return description;
}

void noteRefusal(const NSString& address) {
    if (RequestNotes* const notes = RequestNotes::current())
        notes->noteRefusedLoad(address);
}

/// What has not been decided yet.
Value pending() {
    return NSNumber::numberWithBool(true);
}

/// The address to send to, nil, or that it is pending.
Value decision(const NSDictionary& fields, WebResourceLoadDelegate& delegate) {
    const NSString address = fields.objectForKey(u"url").string();
    const NSURL url = URLOfEngine(address);
    if (url.isNil())
        return {};
    Value redirectResponse;
    if (const NSString redirectedFrom = fields.objectForKey(u"redirectedFrom").string();
        !redirectedFrom.isNil())
        redirectResponse = NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{URLOfEngine(redirectedFrom), u"URL"}, {fields.objectForKey(u"statusCode"), u"StatusCode"}});
    const NSURLRequest request = NSURLRequest::requestWithURL(url);
    try {
        if (!delegate.webView_canDecideRequest({}, request))
            return pending();
        const NSURLRequest decided =
            delegate.webView_resource_willSendRequest_redirectResponse_fromDataSource({}, {}, request,
                                                                                      redirectResponse, {});
        if (decided.isNil())
            return {};
        // The engine's own spelling, unless it is to be another address.
        return decided.URL() == url ? address : decided.URL().absoluteString();
    } catch (const std::exception& exception) {
        NSLog(u"A request of a page was refused: %@",
              NSString::stringByRepairingUTF8String(exception.what()));
        return {};
    }
}

/// The addresses to connect to, nil, or that it is pending. The delegate judges the answer that the resolver
/// gave and that is still held, and these are the addresses of that very answer.
Value connectionDecision(const NSDictionary& fields, WebResourceLoadDelegate* delegate) {
    const std::string host = fields.objectForKey(u"host").string().UTF8String();
    if (!SCNetworkPrepareReachabilityByName(host))
        return pending();
    if (delegate) {
        const NSNumber* number = fields.objectForKey(u"port").numberIfAny();
        const int port = number ? number->intValue() : 0;
        const NSString name = host.find(':') == std::string::npos
                                  ? fields.objectForKey(u"host").string()
                                  : stringWithFormat(u"[%@]", fields.objectForKey(u"host"));
        const NSString root = stringWithFormat(u"http://%@:%d/", name, port);
        auto asked = NSMutableDictionary::dictionary();
        asked.setObject_forKey(root, u"url");
        const Value decided = decision(asked, *delegate);
        if (decided.isNil())
            noteRefusal(port == httpsPort ? stringWithFormat(u"https://%@/", name) : root);
        if (decided != Value(root))
            return decided.numberIfAny() ? decided : Value();
    }
    auto addresses = NSMutableArray::array();
    for (const std::string& address : SCNetworkAddressesByName(host))
        addresses.addObject(NSString::stringByRepairingUTF8String(address));
    return addresses.count() > 0 ? Value(addresses) : Value();
}

void placeData(RenderedPage& page, const NSArray& resources) {
    std::unordered_map<std::string, const Value*> byAddress;
    for (const Value& resource : resources)
        byAddress.emplace(resource.dictionary().objectForKey(u"url").string().UTF8String(), &resource);
    for (RenderedPage::Image& image : page.images) {
        const auto found = image.url.length() == 0 ? byAddress.end() : byAddress.find(image.url.UTF8String());
        if (found == byAddress.end())
            continue;
        const NSDictionary fields = found->second->dictionary();
        image.data = fields.objectForKey(u"data").data();
        image.mimeType = fields.objectForKey(u"mimeType").string();
    }
}

/// The files that a delegate has put in the place of what a page asked for: paths by the address that the
/// page knows. The engine does not give their contents back.
using Substitutes = std::unordered_map<std::string, NSString>;

void noteSubstitute(Substitutes& substitutes, const NSString& address, const NSString& decided) {
    const NSURL url = decided.isNil() || decided == address ? NSURL() : URLOfEngine(decided);
    if (url.isFileURL())
        substitutes[address.UTF8String()] = url.path();
}

void placeSubstitutes(RenderedPage& page, const Substitutes& substitutes) {
    for (RenderedPage::Image& image : page.images) {
        const auto found = substitutes.find(image.url.UTF8String());
        if (found != substitutes.end())
            image.data = NSData::dataWithContentsOfFile(found->second);
    }
}

} // namespace

WebResourceLoadDelegate::~WebResourceLoadDelegate() = default;

bool WebResourceLoadDelegate::webView_canDecideRequest(const Value&, const NSURLRequest&) {
    return true;
}

WebEngine::WebEngine() : process_(description()) {}

WebEngine& WebEngine::sharedEngine() {
    // Never taken apart: the run loop of its thread may be gone by then. The engine sees the end by itself.
    static auto& engine = *new WebEngine;
    return engine;
}

std::optional<RenderedPage> WebEngine::render(const NSData& page, const Options& options) {
    if (page.isNil())
        return std::nullopt;
    auto message = NSMutableDictionary::dictionary();
    message.setObject_forKey(pageByPlacingBase(page, options.textEncodingName, options.baseURL), u"page");
    if (!options.textEncodingName.isNil())
        message.setObject_forKey(options.textEncodingName, u"charset");
    if (!options.baseURL.isNil())
        message.setObject_forKey(options.baseURL.absoluteString(), u"base");
    const double seconds =
        options.timeoutSeconds - std::min(secondsToHandOn, mostShareToHandOn * options.timeoutSeconds);
    const double deadline = monotonicSeconds() + seconds;
    message.setObject_forKey(NSNumber::numberWithDouble(deadline), u"deadline");
    message.setObject_forKey(NSNumber::numberWithBool(options.delegate != nullptr), u"asks");

    Substitutes substitutes;
    EngineConversation conversation;
    conversation.questions = [&](const Value& question) {
        // What is decided too late is of no use to this page.
        if (monotonicSeconds() >= deadline)
            return Value();
        const NSDictionary asked = question.dictionary();
        if (const NSString refused = asked.objectForKey(u"refused").string(); !refused.isNil()) {
            noteRefusal(refused);
            return Value();
        }
        if (!asked.objectForKey(u"host").isNil())
            return connectionDecision(asked, options.delegate);
        if (!options.delegate)
            return Value();
        Value decided = decision(asked, *options.delegate);
        if (decided.isNil())
            noteRefusal(asked.objectForKey(u"url").string());
        noteSubstitute(substitutes, asked.objectForKey(u"url").string(), decided.string());
        return decided;
    };
    const auto ask = [&] {
        return process_.ask(message, deadline - monotonicSeconds() + secondsOfGrace, conversation);
    };
    Value answer;
    try {
        answer = ask();
    } catch (const NSException& exception) {
        // An engine that ended under a page, or shortly before, need not be the page's fault.
        const bool hasEnded =
            exception.name() == EngineCrashedException || exception.name() == EngineOutOfMemoryException;
        if (!hasEnded || deadline - monotonicSeconds() < options.timeoutSeconds / 2)
            throw;
        answer = ask();
    }
    const NSDictionary fields = answer.dictionary();
    auto rendered = renderedPageWithFields(fields.objectForKey(u"fields").data());
    if (rendered) {
        if (rendered->isCut)
            noteOutcome(Outcome::answered,
                        u"it is larger or deeper than what is read of a page, and the rest was left out");
        placeData(*rendered, fields.objectForKey(u"resources").array());
        placeSubstitutes(*rendered, substitutes);
    }
    return rendered;
}

} // namespace kelvo
