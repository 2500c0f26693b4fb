#include "protocol/KelvoImExportProxy.h"

#include "platform/foundation/connections/NSConnectionInternals.h"
#include "protocol/KelvoImExport.capnp.h"
#include "protocol/Operations.h"
#include "protocol/WireValues.h"

#include <sys/random.h>

#include <cerrno>
#include <utility>

namespace kelvo {
namespace {

/// Of all clients of all times none is likely to have taken it before.
std::uint64_t newToken() {
    std::uint64_t token = 0;
    while (token == 0) {
        if (getrandom(&token, sizeof token, 0) < 0 && errno != EINTR)
            throw NSException(NSGenericException, u"The system gives no random numbers.");
    }
    return token;
}

class Proxy final : public KelvoImExportProxy {
public:
    explicit Proxy(NSConnection& connection)
        : connection_(connection),
          root_(connection.internals().remote->rootProxy().castAs<wire::KelvoImExport>()) {}

    ~Proxy() noexcept override {}

    std::uint64_t latestToken() const override { return token_; }

    NSDictionary metaDataForFile(const NSString& file) override {
        return dictionaryOfFile(Operation::metaDataForFile, root_.metaDataForFileRequest(), file);
    }

    NSData RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                   bool allowRemoteRequest) override {
        auto request = root_.rtfdWithHTMLBaseURLAllowRemoteRequestRequest();
        if (!html.isNil())
            request.setHtml(wireData(html));
        if (!baseURL.isNil())
            encodeURL(baseURL, request.initBaseURL());
        request.setAllowRemoteRequest(allowRemoteRequest);
        return data(send(Operation::RTFDWithHTML, request));
    }

    bool writeRTFDData_toFile(const NSData& rtfd, const NSString& file) override {
        auto request = root_.writeRTFDDataToFileRequest();
        if (!rtfd.isNil())
            request.setData(wireData(rtfd));
        if (!file.isNil())
            request.setFile(wireString(file));
        return send(Operation::writeRTFDData, request).getResult();
    }

    NSDictionary searchableTextOfWebArchive(const NSString& file) override {
        return dictionaryOfFile(Operation::searchableTextOfWebArchive,
                                root_.searchableTextOfWebArchiveRequest(), file);
    }

    NSDictionary attributedStringWithContentsOfFile(const NSString& file) override {
        return dictionaryOfFile(Operation::attributedStringWithContentsOfFile,
                                root_.attributedStringWithContentsOfFileRequest(), file);
    }

    NSDictionary posterImageForMovieWithFile(const NSString& file) override {
        return dictionaryOfFile(Operation::posterImageForMovieWithFile,
                                root_.posterImageForMovieWithFileRequest(), file);
    }

    NSDictionary attributed_stringWithPDF(bool attributed, const NSData& pdf) override {
        auto request = root_.attributedStringWithPDFRequest();
        request.setAttributed(attributed);
        if (!pdf.isNil())
            request.setPdf(wireData(pdf));
        return dictionary(send(Operation::stringWithPDF, request));
    }

    NSDictionary imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file,
                                                                       bool stringFromPDF,
                                                                       bool canUseSpotlight) override {
        auto request = root_.imageWithContentsOfFileStringFromPDFCanUseSpotlightRequest();
        request.setStringFromPDF(stringFromPDF);
        request.setCanUseSpotlight(canUseSpotlight);
        return dictionaryOfFile(Operation::imageWithContentsOfFile, std::move(request), file);
    }

    NSData PDFImageRepOfFile(const NSString& file) override {
        auto request = root_.pdfImageRepOfFileRequest();
        if (!file.isNil())
            request.setFile(wireString(file));
        return data(send(Operation::PDFImageRepOfFile, request));
    }

private:
    template <typename Parameters, typename Results>
    capnp::Response<Results> send(Operation operation, capnp::Request<Parameters, Results>& request) {
        token_ = newToken();
        request.setToken(token_);
        kj::Promise<capnp::Response<Results>> reply = request.send();
        return awaitReply(connection_, kj::mv(reply), selectorOfOperation(operation));
    }

    template <typename Request>
    NSDictionary dictionaryOfFile(Operation operation, Request request, const NSString& file) {
        if (!file.isNil())
            request.setFile(wireString(file));
        return dictionary(send(operation, request));
    }

    template <typename Response>
    static NSDictionary dictionary(const Response& response) {
        return response.hasResult() ? decodeDictionary(response.getResult()) : NSDictionary();
    }

    template <typename Response>
    static NSData data(const Response& response) {
        return response.hasResult() ? decodeData(response.getResult()) : NSData();
    }

    NSConnection& connection_;
    wire::KelvoImExport::Client root_;
    std::uint64_t token_ = 0;
};

} // namespace

std::unique_ptr<KelvoImExportProxy> rootProxyForConnection(NSConnection& connection) {
    return std::make_unique<Proxy>(connection);
}

} // namespace kelvo
