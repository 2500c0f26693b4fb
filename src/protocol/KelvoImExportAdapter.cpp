#include "protocol/KelvoImExportAdapter.h"

#include "platform/foundation/connections/NSConnectionInternals.h"
#include "protocol/KelvoImExport.capnp.h"
#include "protocol/WireValues.h"

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

class Adapter final : public wire::KelvoImExport::Server {
public:
    Adapter(std::shared_ptr<KelvoImExport> root, std::shared_ptr<Conversation> conversation)
        : root_(std::move(root)), conversation_(std::move(conversation)) {}

    kj::Promise<void> metaDataForFile(MetaDataForFileContext context) override {
        return answerWithDictionaryOfFile(kj::mv(context), &KelvoImExport::metaDataForFile);
    }

    kj::Promise<void>
    rtfdWithHTMLBaseURLAllowRemoteRequest(RtfdWithHTMLBaseURLAllowRemoteRequestContext context) override {
        return conversation_->answer(
            kj::mv(context),
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
        return conversation_->answer(
            kj::mv(context),
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
        return answerWithDictionaryOfFile(kj::mv(context), &KelvoImExport::searchableTextOfWebArchive);
    }

    kj::Promise<void>
    attributedStringWithContentsOfFile(AttributedStringWithContentsOfFileContext context) override {
        return answerWithDictionaryOfFile(kj::mv(context),
                                          &KelvoImExport::attributedStringWithContentsOfFile);
    }

    kj::Promise<void> posterImageForMovieWithFile(PosterImageForMovieWithFileContext context) override {
        return answerWithDictionaryOfFile(kj::mv(context), &KelvoImExport::posterImageForMovieWithFile);
    }

    kj::Promise<void> attributedStringWithPDF(AttributedStringWithPDFContext context) override {
        return conversation_->answer(
            kj::mv(context),
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
        return conversation_->answer(
            kj::mv(context),
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
        return conversation_->answer(
            kj::mv(context), takeFile,
            [root = root_](const NSString& file) { return root->PDFImageRepOfFile(file); }, putData);
    }

private:
    template <typename Context>
    kj::Promise<void> answerWithDictionaryOfFile(Context&& context,
                                                 NSDictionary (KelvoImExport::*operation)(const NSString&)) {
        return conversation_->answer(
            kj::mv(context), takeFile,
            [root = root_, operation](const NSString& file) { return (*root.*operation)(file); },
            putDictionary);
    }

    std::shared_ptr<KelvoImExport> root_;
    std::shared_ptr<Conversation> conversation_;
};

class VendedRoot final : public NSVendedObject {
public:
    explicit VendedRoot(std::shared_ptr<KelvoImExport> root) : root_(std::move(root)) {}

    capnp::Capability::Client capabilityFor(std::shared_ptr<Conversation> conversation) override {
        return wire::KelvoImExport::Client(kj::heap<Adapter>(root_, std::move(conversation)));
    }

private:
    std::shared_ptr<KelvoImExport> root_;
};

} // namespace

std::shared_ptr<NSVendedObject> vendedObject(std::shared_ptr<KelvoImExport> rootObject) {
    return std::make_shared<VendedRoot>(std::move(rootObject));
}

} // namespace kelvo
