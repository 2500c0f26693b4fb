#include "platform/appkit/documents/PageReading.h"

#include "platform/appkit/html/HTMLReading.h"
#include "platform/foundation/encodings/PlainTextReading.h"
#include "platform/foundation/files/PrivateFolder.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/webkit/PageBase.h"
#include "platform/webkit/WebResourceLoadDelegate.h"

#include <algorithm>
#include <memory>
#include <string>
#include <unordered_map>

namespace kelvo {
namespace {

/// Who asks waits 15 s, in which the engine may have to start first, and what was read has to be written and
/// sent.
constexpr float secondsToLoad = 10;
/// Contents that are given out within an address are copied several times on their way, and the web engine
/// takes no address of more than 1 MiB.
constexpr std::size_t mostBytesInAddress = 256 << 10;

class LocalResources final : public NSObject, public WebResourceLoadDelegate {
public:
    NSString className() const override { return u"LocalResources"; }

    NSURLRequest webView_resource_willSendRequest_redirectResponse_fromDataSource(const Value&, const Value&,
                                                                                  const NSURLRequest& request,
                                                                                  const Value&,
                                                                                  const Value&) override {
        const NSURL& url = request.URL();
        return url.isFileURL() || url.host().isEmpty() ? request : nullptr;
    }
};

/// Lets a page have the files that were saved with it, under the addresses that they had: style sheets and
/// the like within the answer, pictures and what is large from a folder of mode 0700 that lasts as long as
/// this object.
class ArchivedResources final : public NSObject, public WebResourceLoadDelegate {
public:
    explicit ArchivedResources(const WebArchive& archive) { add(archive); }

    NSString className() const override { return u"ArchivedResources"; }

    NSURLRequest webView_resource_willSendRequest_redirectResponse_fromDataSource(const Value&, const Value&,
                                                                                  const NSURLRequest& request,
                                                                                  const Value&,
                                                                                  const Value&) override {
        const NSURL& url = request.URL();
        const auto found = definitions_.find(key(url));
        if (found != definitions_.end())
            return NSURLRequest::requestWithURL(urlWithContents(standingWhereItWas(found->second)));
        return !url.isFileURL() && url.host().isEmpty() ? request : nullptr;
    }

private:
    /// The fragment is the page's own business.
    static std::string key(const NSURL& url) {
        const std::string address = url.absoluteString().UTF8String();
        return address.substr(0, address.find('#'));
    }

    /// A frame's page loses its address; what it refers to is to be found all the same.
    static WebResource standingWhereItWas(const WebResource& resource) {
        if (resource.MIMEType() != u"text/html")
            return resource;
        return WebResource(pageByPlacingBase(resource.data(), resource.textEncodingName(), resource.URL()),
                           resource.URL(), resource.MIMEType(), resource.textEncodingName(),
                           resource.frameName());
    }

    /// Pictures always become files: the web engine returns where a picture came from, and it is read from
    /// there.
    NSURL urlWithContents(const WebResource& resource) {
        const bool isSmallText = resource.data().length() <= mostBytesInAddress &&
                                 !resource.MIMEType().characters().starts_with(u"image/");
        return isSmallText ? urlOfData(resource) : urlOfFile(resource);
    }

    static NSURL urlOfData(const WebResource& resource) {
        std::string url = "data:" + resource.MIMEType().UTF8String();
        if (!resource.textEncodingName().isEmpty())
            url += ";charset=" + resource.textEncodingName().UTF8String();
        url += ";base64," + resource.data().base64EncodedString().UTF8String();
        return NSURL::URLWithTolerantString(NSString::stringWithUTF8String(url));
    }

    /// Nil, which refuses the request, when there is no room for it.
    NSURL urlOfFile(const WebResource& resource) {
        if (folder_.path().empty())
            return nullptr;
        const NSString path =
            NSString::stringWithUTF8String(folder_.path() + '/' + std::to_string(fileCount_++) + '.' +
                                           extensionOfMIMEType(resource.MIMEType()));
        return resource.data().writeToFile_atomically(path, false) ? NSURL::fileURLWithPath(path) : NSURL();
    }

    /// The second part of a picture's type is an extension that readers know.
    static std::string extensionOfMIMEType(const NSString& type) {
        const std::string text = type.UTF8String();
        const std::string subtype = asciiLowerCased(text.substr(text.find('/') + 1));
        const auto end = std::ranges::find_if_not(
            subtype, [](char letter) { return isASCIILetter(letter) || isASCIIDigit(letter); });
        return {subtype.begin(), end};
    }

    void add(const WebResource& resource) {
        if (!resource.data().isNil() && !resource.URL().isNil())
            definitions_.try_emplace(key(resource.URL()), resource);
    }

    /// Archives are bounded in depth.
    void add(const WebArchive& archive) {
        for (const WebResource& resource : archive.subresources())
            add(resource);
        for (const WebArchive& frame : archive.subframeArchives()) {
            add(frame.mainResource());
            add(frame);
        }
    }

    std::unordered_map<std::string, WebResource> definitions_;
    PrivateFolder folder_{"plumwick-page"};
    int fileCount_ = 0;
};

NSMutableDictionary optionsWithDelegate(std::shared_ptr<NSObject> delegate) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithBool(true), NSUseWebKitDocumentOption},
         {NSNumber::numberWithFloat(secondsToLoad), NSTimeoutDocumentOption},
         {std::move(delegate), NSWebResourceLoadDelegateDocumentOption}});
}

} // namespace

NSAttributedString attributedStringWithPage(const NSData& page, const NSURL& fileURL,
                                            NSDictionary* documentAttributes) {
    NSMutableDictionary options = optionsWithDelegate(std::make_shared<LocalResources>());
    options.setObject_forKey(fileURL, NSBaseURLDocumentOption);
    return NSAttributedStringKitAdditions::initWithHTML_options_documentAttributes(page, options.copy(),
                                                                                   documentAttributes);
}

NSAttributedString attributedStringWithSavedPage(const WebArchive& archive,
                                                 NSDictionary* documentAttributes) {
    const WebResource& page = archive.mainResource();
    if (page.MIMEType() == u"text/plain") {
        NSStringEncoding encoding = 0;
        *documentAttributes = NSDictionary::dictionary();
        return NSAttributedString(stringWithPlainText(page.data(), &encoding));
    }
    NSMutableDictionary options = optionsWithDelegate(std::make_shared<ArchivedResources>(archive));
    if (!page.URL().isNil())
        options.setObject_forKey(page.URL(), NSBaseURLDocumentOption);
    if (!page.textEncodingName().isEmpty())
        options.setObject_forKey(page.textEncodingName(), NSTextEncodingNameDocumentOption);
    return NSAttributedStringKitAdditions::initWithHTML_options_documentAttributes(
        page.data(), options.copy(), documentAttributes);
}

} // namespace kelvo
