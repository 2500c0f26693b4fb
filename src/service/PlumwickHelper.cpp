#include "service/PlumwickHelper.h"

namespace kelvo {

PlumwickHelper::PlumwickHelper() : _mdimporter(std::make_shared<MetaDataImporter>()) {}

NSString PlumwickHelper::className() const {
    return u"PlumwickHelper";
}

// None of the engines behind the operations is in place yet (hasEngine says so to clients): each answers as
// it does for a file that it cannot read.

NSDictionary PlumwickHelper::metaDataForFile(const NSString&) {
    return nullptr;
}

NSData PlumwickHelper::RTFDWithHTML_baseURL_allowRemoteRequest(const NSData&, const NSURL&, bool) {
    return nullptr;
}

bool PlumwickHelper::writeRTFDData_toFile(const NSData&, const NSString&) {
    return false;
}

NSDictionary PlumwickHelper::searchableTextOfWebArchive(const NSString&) {
    return nullptr;
}

NSDictionary PlumwickHelper::attributedStringWithContentsOfFile(const NSString&) {
    return nullptr;
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
