#include "cli/Request.h"

#include "cli/KindFacts.h"
#include "protocol/KelvoImExport.h"
#include "protocol/ResultKeys.h"

#include <array>

namespace kelvo::cli {
namespace {

/// The longest budget within the service is the 60 s of a walk through a PDF; a page has 15 s to load and
/// then has to be turned into text.
constexpr double slowTimeoutSeconds = KelvoImExport::timeoutSeconds + 60;

} // namespace

std::string_view subcommandOfOperation(Operation operation) {
    constexpr std::array<std::string_view, operationCount> names{
        "metadata",     "html-to-rtfd", "write-rtfd", "web-archive", "read-document",
        "movie-poster", "pdf-text",     "image",      "pdf-of"};
    return names[static_cast<std::size_t>(operation)];
}

double defaultTimeout(Operation operation, FileKind kind) {
    const bool isSlow =
        operation == Operation::RTFDWithHTML || operation == Operation::stringWithPDF || isSlowKind(kind);
    return isSlow ? slowTimeoutSeconds : KelvoImExport::timeoutSeconds;
}

Value perform(KelvoImExport& service, const Request& request) {
    switch (request.operation) {
    case Operation::metaDataForFile:
        return service.metaDataForFile(request.file);
    case Operation::RTFDWithHTML:
        return service.RTFDWithHTML_baseURL_allowRemoteRequest(request.data, request.baseURL,
                                                               request.allowsRemoteRequest);
    case Operation::writeRTFDData:
        return NSNumber::numberWithBool(service.writeRTFDData_toFile(request.data, request.file));
    case Operation::searchableTextOfWebArchive:
        return service.searchableTextOfWebArchive(request.file);
    case Operation::attributedStringWithContentsOfFile:
        return service.attributedStringWithContentsOfFile(request.file);
    case Operation::posterImageForMovieWithFile:
        return service.posterImageForMovieWithFile(request.file);
    case Operation::stringWithPDF:
        return service.attributed_stringWithPDF(request.wantsRichText, request.data);
    case Operation::imageWithContentsOfFile:
        return service.imageWithContentsOfFile_stringFromPDF_canUseSpotlight(
            request.file, request.wantsPDFText, request.mayUseImporters);
    case Operation::PDFImageRepOfFile:
        return service.PDFImageRepOfFile(request.file);
    }
    return nullptr;
}

bool isNoAnswer(const Value& result) {
    const NSNumber* const number = result.numberIfAny();
    return result.isNil() || (number && !number->boolValue());
}

NSData bytesOfResult(Operation operation, const Value& result) {
    switch (operation) {
    case Operation::RTFDWithHTML:
    case Operation::PDFImageRepOfFile:
        return result.data();
    case Operation::attributedStringWithContentsOfFile:
        return result.dictionary().objectForKey(ResultRtfdKey).data();
    case Operation::posterImageForMovieWithFile:
    case Operation::imageWithContentsOfFile:
        return result.dictionary().objectForKey(ResultThumbnailKey).data();
    default:
        return nullptr;
    }
}

} // namespace kelvo::cli
