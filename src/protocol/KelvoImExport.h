#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/Visibility.h"

namespace KELVO_PUBLIC kelvo {

/// The nine operations of the service, in the order of their declaration. The root object does the work; the
/// proxy of a client sends it there and returns copies.
///
/// Paths are absolute. Failure is told by the result alone: nil for objects, false for the boolean. What an
/// operation throws (NSException) reaches a client as a failed request, and the service goes on.
class KelvoImExport {
public:
    /// The name under which the service is published.
    static constexpr const char16_t* registeredName = u"PlumwickHelper_2.0pb8build4";
    /// How long a request waits for its answer, in seconds, unless a caller asks for another time.
    static constexpr double timeoutSeconds = 15.0;

    virtual ~KelvoImExport();

    /// The importer's metadata of the file, by attribute name and without null values, or nil.
    virtual NSDictionary metaDataForFile(const NSString& file) = 0;
    /// The page as RTFD bytes, or nil. Without leave for remote requests only files, embedded data and hosts
    /// of the local network are loaded.
    virtual NSData RTFDWithHTML_baseURL_allowRemoteRequest(const NSData& html, const NSURL& baseURL,
                                                           bool allowRemoteRequest) = 0;
    /// Writes RTFD bytes as an RTFD package; whether all of it was written.
    virtual bool writeRTFDData_toFile(const NSData& data, const NSString& file) = 0;
    /// "String", "Source" and "URL" of a web archive, each where known; never nil.
    virtual NSDictionary searchableTextOfWebArchive(const NSString& file) = 0;
    /// "Rtfd" and "DocumentAttributes" of a document, or nil.
    virtual NSDictionary attributedStringWithContentsOfFile(const NSString& file) = 0;
    /// "Thumbnail", "Size" and "Duration" of a movie, or nil.
    virtual NSDictionary posterImageForMovieWithFile(const NSString& file) = 0;
    /// Text and facts of a PDF, or nil; "String" is an attributed string when that was asked for.
    virtual NSDictionary attributed_stringWithPDF(bool attributed, const NSData& pdf) = 0;
    /// Thumbnail and facts of an image or PDF file, or nil, with a PDF's text when that was asked for.
    virtual NSDictionary imageWithContentsOfFile_stringFromPDF_canUseSpotlight(const NSString& file,
                                                                               bool stringFromPDF,
                                                                               bool canUseSpotlight) = 0;
    /// The image as PDF bytes, or nil.
    virtual NSData PDFImageRepOfFile(const NSString& file) = 0;
};

} // namespace kelvo
