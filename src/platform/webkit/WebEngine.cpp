#include "platform/webkit/WebEngine.h"

#include "platform/foundation/NSLog.h"
#include "platform/webkit/PageBase.h"

#include <chrono>
#include <exception>
#include <unordered_map>

namespace kelvo {
namespace {

/// After the engine should have ended a page by itself, how long until it is ended.
constexpr double secondsOfGrace = 0.5;

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

NSURL URLOfEngine(const NSString& string) {
    const NSURL strict = NSURL::URLWithString(string);
    return strict.isNil() ? NSURL::URLWithTolerantString(string) : strict;
}

/// The address to send to, or nil.
Value decision(const Value& question, WebResourceLoadDelegate& delegate) {
    const NSDictionary fields = question.dictionary();
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

void noteSubstitute(Substitutes& substitutes, const Value& question, const Value& decided) {
    const NSString address = question.dictionary().objectForKey(u"url").string();
    const NSURL url = decided.isNil() || decided == Value(address) ? NSURL() : URLOfEngine(decided.string());
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
    const double deadline = monotonicSeconds() + options.timeoutSeconds;
    message.setObject_forKey(NSNumber::numberWithDouble(deadline), u"deadline");
    message.setObject_forKey(NSNumber::numberWithBool(options.delegate != nullptr), u"asks");

    Substitutes substitutes;
    const Value answer =
        process_.ask(message, options.timeoutSeconds + secondsOfGrace, [&](const Value& question) {
            // What is decided too late is of no use to this page.
            if (!options.delegate || monotonicSeconds() >= deadline)
                return Value();
            const Value decided = decision(question, *options.delegate);
            noteSubstitute(substitutes, question, decided);
            return decided;
        });
    if (answer.isNil())
        NSLog(u"The web engine gave no answer.");
    const NSDictionary fields = answer.dictionary();
    auto rendered = renderedPageWithFields(fields.objectForKey(u"fields").data());
    if (rendered) {
        placeData(*rendered, fields.objectForKey(u"resources").array());
        placeSubstitutes(*rendered, substitutes);
    }
    return rendered;
}

} // namespace kelvo
