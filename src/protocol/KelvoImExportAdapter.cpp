#include "protocol/KelvoImExportAdapter.h"

#include "platform/foundation/connections/NSConnectionInternals.h"
#include "protocol/KelvoImExport.capnp.h"
#include "protocol/RequestScope.h"
#include "protocol/WireValues.h"

#include <exception>
#include <tuple>
#include <utility>

namespace kelvo {
namespace {

// A field whose pointer is absent is nil.
template <typename Parameters>
NSString fileOf(Parameters parameters) {
    return parameters.hasFile() ? decodeString(parameters.getFile()) : NSString();
}

const auto putDictionary = [](auto& context, const NSDictionary& result) {
    if (!result.isNil())
        encodeDictionary(result, context.getResults().initResult());
};

const auto putData = [](auto& context, const NSData& result) {
    if (!result.isNil())
        context.getResults().setResult(wireData(result));
};

const auto takeFile = [](auto parameters) { return std::tuple(fileOf(parameters)); };

/// Of an operation's arguments those that a record tells of.
struct Given {
    NSString file;
    NSData bytes;

    void add(const NSString& argument) { file = argument; }
    void add(const NSData& argument) { bytes = argument; }
    void add(const NSURL&) {}
    void add(bool) {}
};

/// The scope stands until the result is on the wire.
template <typename Result>
struct Performed {
    std::unique_ptr<RequestScope> scope;
    Result result;
};

class Adapter final : public wire::KelvoImExport::Server {
public:
    Adapter(std::shared_ptr<KelvoImExport> root, std::shared_ptr<RequestLedger> ledger,
            std::shared_ptr<Conversation> conversation)
        : root_(std::move(root)), ledger_(std::move(ledger)), conversation_(std::move(conversation)) {}

    kj::Promise<void> metaDataForFile(MetaDataForFileContext context) override {
        return answerWithDictionaryOfFile(kj::mv(context), Operation::metaDataForFile,
                                          &KelvoImExport::metaDataForFile);
    }

    kj::Promise<void>
    rtfdWithHTMLBaseURLAllowRemoteRequest(RtfdWithHTMLBaseURLAllowRemoteRequestContext context) override {
        return answer(
            kj::mv(context), Operation::RTFDWithHTML,
            [](auto parameters) {
                return std::tuple(parameters.hasHtml() ? decodeData(parameters.getHtml()) : NSData(),
                                  parameters.hasBaseURL() ? decodeURL(parameters.getBaseURL()) : NSURL(),
                                  parameters.getAllowRemoteRequest());
            },
            [root = root_](const NSData& html, const NSURL& baseURL, bool allowRemoteRequest) {
                return root->RTFDWithHTML_baseURL_allowRemoteRequest(html, baseURL, allowRemoteRequest);
            },
            putData);
    }

    kj::Promise<void> writeRTFDDataToFile(WriteRTFDDataToFileContext context) override {
        return answer(
            kj::mv(context), Operation::writeRTFDData,
            [](auto parameters) {
                return std::tuple(parameters.hasData() ? decodeData(parameters.getData()) : NSData(),
                                  fileOf(parameters));
            },
            [root = root_](const NSData& data, const NSString& file) {
                return root->writeRTFDData_toFile(data, file);
            },
            [](auto& answered, bool result) { answered.getResults().setResult(result); });
    }

    kj::Promise<void> searchableTextOfWebArchive(SearchableTextOfWebArchiveContext context) override {
        return answerWithDictionaryOfFile(kj::mv(context), Operation::searchableTextOfWebArchive,
                                          &KelvoImExport::searchableTextOfWebArchive);
    }

    kj::Promise<void>
    attributedStringWithContentsOfFile(AttributedStringWithContentsOfFileContext context) override {
        return answerWithDictionaryOfFile(kj::mv(context), Operation::attributedStringWithContentsOfFile,
                                          &KelvoImExport::attributedStringWithContentsOfFile);
    }

    kj::Promise<void> posterImageForMovieWithFile(PosterImageForMovieWithFileContext context) override {
        return answerWithDictionaryOfFile(kj::mv(context), Operation::posterImageForMovieWithFile,
                                          &KelvoImExport::posterImageForMovieWithFile);
    }

    kj::Promise<void> attributedStringWithPDF(AttributedStringWithPDFContext context) override {
        return answer(
            kj::mv(context), Operation::stringWithPDF,
            [](auto parameters) {
                return std::tuple(parameters.getAttributed(),
                                  parameters.hasPdf() ? decodeDataForEngines(parameters.getPdf()) : NSData());
            },
            [root = root_](bool attributed, const NSData& pdf) {
                return root->attributed_stringWithPDF(attributed, pdf);
            },
            putDictionary);
    }

    kj::Promise<void> imageWithContentsOfFileStringFromPDFCanUseSpotlight(
        ImageWithContentsOfFileStringFromPDFCanUseSpotlightContext context) override {
        return answer(
            kj::mv(context), Operation::imageWithContentsOfFile,
            [](auto parameters) {
                return std::tuple(fileOf(parameters), parameters.getStringFromPDF(),
                                  parameters.getCanUseSpotlight());
            },
            [root = root_](const NSString& file, bool stringFromPDF, bool canUseSpotlight) {
                return root->imageWithContentsOfFile_stringFromPDF_canUseSpotlight(file, stringFromPDF,
                                                                                   canUseSpotlight);
            },
            putDictionary);
    }

    kj::Promise<void> pdfImageRepOfFile(PdfImageRepOfFileContext context) override {
        return answer(
            kj::mv(context), Operation::PDFImageRepOfFile, takeFile,
            [root = root_](const NSString& file) { return root->PDFImageRepOfFile(file); }, putData);
    }

private:
    /// As Conversation::answer, and writes down what becomes of the request.
    template <typename Context, typename Decode, typename Operate, typename Encode>
    kj::Promise<void> answer(Context&& context, Operation operation, Decode decode, Operate operate,
                             Encode encode) {
        return conversation_->answer(
            kj::mv(context),
            [decode](auto parameters) {
                return std::tuple_cat(std::tuple(parameters.getToken()), decode(parameters));
            },
            [ledger = ledger_, operation, operate](std::uint64_t token, const auto&... arguments) {
                Given given;
                (given.add(arguments), ...);
                auto scope =
                    std::make_unique<RequestScope>(ledger, operation, token, given.file, given.bytes);
                try {
                    auto result = operate(arguments...);
                    scope->complete(result);
                    return Performed<decltype(result)>{std::move(scope), std::move(result)};
                } catch (const std::exception& exception) {
                    scope->fail(exception);
                    throw;
                }
            },
            [encode](auto& answered, const auto& performed) {
                try {
                    encode(answered, performed.result);
                } catch (const std::exception& exception) {
                    performed.scope->fail(exception);
                    throw;
                }
            });
    }

    template <typename Context>
    kj::Promise<void> answerWithDictionaryOfFile(Context&& context, Operation operation,
                                                 NSDictionary (KelvoImExport::*method)(const NSString&)) {
        return answer(
            kj::mv(context), operation, takeFile,
            [root = root_, method](const NSString& file) { return (*root.*method)(file); }, putDictionary);
    }

    std::shared_ptr<KelvoImExport> root_;
    std::shared_ptr<RequestLedger> ledger_;
    std::shared_ptr<Conversation> conversation_;
};

class VendedRoot final : public NSVendedObject {
public:
    VendedRoot(std::shared_ptr<KelvoImExport> root, std::shared_ptr<RequestLedger> ledger)
        : root_(std::move(root)), ledger_(std::move(ledger)) {}

    capnp::Capability::Client capabilityFor(std::shared_ptr<Conversation> conversation) override {
        return wire::KelvoImExport::Client(kj::heap<Adapter>(root_, ledger_, std::move(conversation)));
    }

private:
    std::shared_ptr<KelvoImExport> root_;
    std::shared_ptr<RequestLedger> ledger_;
};

} // namespace

std::shared_ptr<NSVendedObject> vendedObject(std::shared_ptr<KelvoImExport> rootObject,
                                             std::shared_ptr<RequestLedger> ledger) {
    return std::make_shared<VendedRoot>(std::move(rootObject), std::move(ledger));
}

} // namespace kelvo
