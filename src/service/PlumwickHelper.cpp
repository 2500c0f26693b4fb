#include "service/PlumwickHelper.h"

#include "markup/WebArchiveSearchableText.h"
#include "platform/appkit/DocumentReading.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/NSTextStorage.h"
#include "platform/appkit/RTFWriting.h"
#include "platform/foundation/Value.h"
#include "protocol/ResultKeys.h"

#include <exception>
#include <utility>

namespace kelvo {

PlumwickHelper::PlumwickHelper() : _mdimporter(std::make_shared<MetaDataImporter>()) {}

NSString PlumwickHelper::className() const {
    return u"PlumwickHelper";
}

// Operations whose engine is not in place yet (hasEngine says so to clients) answer as they do for a file
// that they cannot read.

NSDictionary PlumwickHelper::metaDataForFile(const NSString&) {
    return nullptr;
}

NSData PlumwickHelper::RTFDWithHTML_baseURL_allowRemoteRequest(const NSData&, const NSURL&, bool) {
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
    } catch (const std::exception&) {
        return false;
    }
}

NSDictionary PlumwickHelper::searchableTextOfWebArchive(const NSString& file) {
    NSURL baseURL;
    NSString source;
    const NSString text = SearchableText::searchableTextOfFile_baseURL_source(file, &baseURL, &source);
    NSMutableDictionary result = NSMutableDictionary::dictionaryWithObjectsAndKeys({{text, ResultStringKey}});
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
    } catch (const std::exception&) {
        return nullptr;
    }
    if (rtfd.isNil())
        return nullptr;
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{rtfd, ResultRtfdKey}, {documentAttributes, ResultDocumentAttributesKey}});
}

NSDictionary PlumwickHelper::posterImageForMovieWithFile(const NSString&) {
    return nullptr;
}

NSDictionary PlumwickHelper::attributed_stringWithPDF(bool, const NSData&) {
    return nullptr;
}

NSDictionary PlumwickHelper::imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString&, bool,
                                                                                   bool) {
    return nullptr;
}

NSData PlumwickHelper::PDFImageRepOfFile(const NSString&) {
    return nullptr;
}

} // namespace kelvo
