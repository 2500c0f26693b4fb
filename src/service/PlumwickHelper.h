#pragma once

#include "mdimport/MetaDataImporter.h"
#include "platform/foundation/NSObject.h"
#include "protocol/KelvoImExport.h"

#include <memory>

namespace kelvo {

/// The root object of the service. It keeps no state between requests but its own importer host.
class PlumwickHelper final : public NSObject, public KelvoImExport {
public:
    PlumwickHelper();

    NSString className() const override;

    NSDictionary metaDataForFile(const NSString& file) override;
    NSData RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                   bool allowRemoteRequest) override;
    bool writeRTFDData_toFile(const NSData& data, const NSString& file) override;
    NSDictionary searchableTextOfWebArchive(const NSString& file) override;
    NSDictionary attributedStringWithContentsOfFile(const NSString& file) override;
    NSDictionary posterImageForMovieWithFile(const NSString& file) override;
    NSDictionary attributed_stringWithPDF(bool attributed, const NSData& pdf) override;
    NSDictionary imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file,
                                                                       bool stringFromPDF,
                                                                       bool canUseSpotlight) override;
    NSData PDFImageRepOfFile(const NSString& file) override;

private:
    /// Made with the root object and never replaced. Private to it: not the shared importer.
    std::shared_ptr<MetaDataImporter> _mdimporter;
};

} // namespace kelvo
