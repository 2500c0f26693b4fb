#include "service/PlumwickHelper.h"

#include "markup/WebArchiveSearchableText.h"
#include "movies/MovieThumbnails.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/documents/DocumentReading.h"
#include "platform/appkit/documents/OpenDocumentConversion.h"
#include "platform/appkit/html/HTMLReading.h"
#include "platform/appkit/rtfreader/NSTextStorage.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/SCNetworkReachability.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/plugins/PlugInQuestions.h"
#include "protocol/RequestOutcome.h"
#include "protocol/ResultKeys.h"
#include "service/PDFText.h"
#include "service/Pictures.h"
#include "text/CharacterSetReps.h"
#include "url/NSURLKelvoExtensions.h"

#include <cstdint>
#include <exception>
#include <utility>

namespace kelvo {
namespace {

/// How long a page may take to load, in the platform's single precision.
constexpr float secondsToLoad = 15.0F;

void note(const RequestOutcome& outcome) {
    noteOutcome(outcome.outcome, outcome.sentence);
}

} // namespace

PlumwickHelper::PlumwickHelper() : _mdimporter(std::make_shared<MetaDataImporter>()) {
    setOfficeDocumentReader(flatOpenDocumentOfDocument);
}

NSString PlumwickHelper::className() const {
    return u"PlumwickHelper";
}

NSDictionary PlumwickHelper::metaDataForFile(const NSString& file) {
    NSMutableDictionary metaData = _mdimporter->metaDataOfFileAtPath(file);
    for (const Value& key : metaData.allKeys()) {
        if (metaData.objectForKey(key).isNull())
            metaData.removeObjectForKey(key);
    }
    return metaData;
}

NSData PlumwickHelper::RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                               bool allowRemoteRequest) {
    const Value delegate = allowRemoteRequest ? Value() : Value(shared_from_this());
    auto options = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithBool(true), NSUseWebKitDocumentOption},
         {NSNumber::numberWithFloat(secondsToLoad), NSTimeoutDocumentOption},
         {delegate, NSWebResourceLoadDelegateDocumentOption}});
    if (const NSURL base = baseURLForWebKit(baseURL); !base.isNil())
        options.setObject_forKey(base, NSBaseURLDocumentOption);

    NSData rtfd;
    try {
        NSAttributedString text;
        if (!html.isNil())
            text = NSAttributedStringKitAdditions::initWithHTML_options_documentAttributes(html, options,
                                                                                           nullptr);
        if (!text.isNil())
            rtfd = RTFDFromRange_documentAttributes(text, {0, text.length()}, nullptr);
    } catch (const std::exception& exception) {
        // Nothing of it reaches the client.
        note(outcomeOfFailure(exception));
    }
    return rtfd;
}

bool PlumwickHelper::webView_canDecideRequest(const Value&, const NSURLRequest& request) {
    const NSURL& url = request.URL();
    const NSString host = url.isFileURL() ? NSString() : url.host();
    return host.isEmpty() || SCNetworkPrepareReachabilityByName(host.UTF8String());
}

NSURLRequest PlumwickHelper::webView_resource_willSendRequest_redirectResponse_fromDataSource(
    const Value&, const Value&, const NSURLRequest& request, const Value&, const Value&) {
    const NSURL& url = request.URL();
    if (url.isFileURL())
        return request;
    const NSString host = url.host();
    if (host.isNil() || host.isEmpty())
        return request;
    std::uint32_t flags = 0;
    if (SCNetworkCheckReachabilityByName(host.UTF8String(), &flags) &&
        (flags & (kSCNetworkFlagsIsLocalAddress | kSCNetworkFlagsIsDirect)) != 0)
        return request;
    return nullptr;
}

bool PlumwickHelper::writeRTFDData_toFile(const NSData& data, const NSString& file) {
    try {
        NSDictionary documentAttributes;
        const auto text = NSTextStorage::initWithRTFD_documentAttributes(data, &documentAttributes);
        if (!text)
            return false;
        const NSAttributedString whole = std::move(*text).copy();
        const auto package =
            RTFDFileWrapperFromRange_documentAttributes(whole, {0, whole.length()}, documentAttributes);
        return package && package->writeToFile_atomically_updateFilenames(file, false, false);
    } catch (const std::exception& exception) {
        note(outcomeOfFailure(exception));
        return false;
    }
}

NSDictionary PlumwickHelper::searchableTextOfWebArchive(const NSString& file) {
    NSURL baseURL;
    NSString source;
    const NSString text = SearchableText::searchableTextOfFile_baseURL_source(file, &baseURL, &source);
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    // What separates pieces without text is no text either.
    if (!text.isNil() && !isWhiteString(text))
        result.setObject_forKey(text, ResultStringKey);
    else if (!source.isNil())
        noteOutcome(Outcome::nothing, u"there is no text in the page");
    if (!source.isNil())
        result.setObject_forKey(source, ResultSourceKey);
    if (!baseURL.isNil())
        result.setObject_forKey(baseURL.absoluteString(), ResultURLKey);
    return result;
}

NSDictionary PlumwickHelper::attributedStringWithContentsOfFile(const NSString& file) {
    NSData rtfd;
    NSDictionary documentAttributes;
    try {
        const NSAttributedString text =
            NSAttributedStringKitAdditions::initWithPath_documentAttributes(file, &documentAttributes);
        if (!text.isNil())
            rtfd = RTFDFromRange_documentAttributes(text, {0, text.length()}, documentAttributes);
    } catch (const std::exception& exception) {
        note(outcomeOfFailure(exception));
        return nullptr;
    }
    if (rtfd.isNil())
        return nullptr;
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{rtfd, ResultRtfdKey}, {documentAttributes, ResultDocumentAttributesKey}});
}

NSDictionary PlumwickHelper::posterImageForMovieWithFile(const NSString& file) {
    NSDictionary attributes;
    const auto poster = KelvoQTMovieExtensions::thumbnailImageForMovieWithFile_attributes(file, &attributes);
    const NSSize* const size = attributes.objectForKey(QTMovieNaturalSizeAttribute).sizeIfAny();
    double seconds = 0;
    if (!QTGetTimeInterval(QTTimeValue(attributes.objectForKey(QTMovieDurationAttribute)), &seconds))
        seconds = 0;
    const NSData picture =
        poster ? poster->TIFFRepresentationUsingCompression_factor(NSTIFFCompressionLZW, 1.0F) : NSData();
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithFloat(static_cast<float>(seconds)), ResultDurationKey},
         {NSStringFromSize(size ? *size : NSSize{}), ResultSizeKey},
         {picture, ResultThumbnailKey}});
}

NSDictionary PlumwickHelper::attributed_stringWithPDF(bool attributed, const NSData& pdf) {
    return _attributed_stringWithPDF_file_size(attributed, pdf, nullptr, false, [this](const NSString& file) {
        return _mdimporter->textContentOfFileAtPath(file);
    });
}

NSDictionary PlumwickHelper::imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file,
                                                                                   bool stringFromPDF,
                                                                                   bool canUseSpotlight) {
    return imageWithContentsOfFile(file, stringFromPDF, canUseSpotlight, [this](const NSString& path) {
        return _mdimporter->textContentOfFileAtPath(path);
    });
}

NSData PlumwickHelper::PDFImageRepOfFile(const NSString& file) {
    return kelvo::PDFImageRepOfFile(file);
}

} // namespace kelvo
