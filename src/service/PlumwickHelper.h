#pragma once

#include "mdimport/MetaDataImporter.h"
#include "platform/foundation/NSObject.h"
#include "platform/webkit/WebResourceLoadDelegate.h"
#include "protocol/KelvoImExport.h"

#include <memory>

namespace kelvo {

/// The root object of the service. The only state that it keeps between requests is its own importer host.
class PlumwickHelper final : public NSObject, public KelvoImExport, public WebResourceLoadDelegate {
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

    /// Names are looked up side by side; what needs no name, or one that is known, can be decided at once.
    bool webView_canDecideRequest(const Value& webView, const NSURLRequest& request) override;
    /// Lets files, what has no host, and hosts that are this machine or need no gateway go; refuses the rest.
    NSURLRequest webView_resource_willSendRequest_redirectResponse_fromDataSource(
        const Value& webView, const Value& resource, const NSURLRequest& request,
        const Value& redirectResponse, const Value& dataSource) override;

private:
    /// Made with the root object and never replaced. Private to it: not the shared importer.
    std::shared_ptr<MetaDataImporter> _mdimporter;
};

} // namespace kelvo
