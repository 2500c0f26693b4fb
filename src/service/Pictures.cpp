#include "service/Pictures.h"

#include "images/ImageContents.h"
#include "images/ImageFileTypes.h"
#include "images/ImageFiles.h"
#include "images/ImageSizes.h"
#include "images/PDFRepresentations.h"
#include "images/ScaledImages.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "protocol/RequestOutcome.h"
#include "protocol/ResultKeys.h"

#include <exception>
#include <optional>

namespace kelvo {
namespace {

/// In pixels.
constexpr int longestSideOfThumbnail = 256;

void note(const RequestOutcome& outcome) {
    noteOutcome(outcome.outcome, outcome.sentence);
}

/// Whether an engine was lost or late over the file already. It is not given to another: who waits would wait in vain.
bool hasCostAnEngine() {
    const RequestNotes* const notes = RequestNotes::current();
    const std::optional<Outcome> outcome = notes ? notes->outcome() : std::nullopt;
    return outcome == Outcome::crashed || outcome == Outcome::timedOut || outcome == Outcome::outOfMemory;
}

/// Made from pairs: nothing at all when the image has no properties.
NSDictionary thumbnailOfFile(const NSString& file) {
    NSDictionary properties;
    const auto thumbnail =
        NSImageKelvoExtensions::thumbnailForFile_maxSize_alwaysFromImage_withTransform_properties(
            file, longestSideOfThumbnail, false, true, &properties);
    if (!thumbnail)
        return nullptr;
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{properties, ResultPropertiesKey}, {thumbnail->TIFFRepresentation(), ResultThumbnailKey}});
}

/// What can be drawn of the file; else null.
std::shared_ptr<NSImage> imageOfFile(const NSString& file) {
    auto image = NSImage::initByReferencingFile(NSImageKelvoExtensions::pathToPDF(file));
    if ((!image || !isReallyValid(*image)) && !hasCostAnEngine())
        image = NSImage::initWithData(NSData::dataWithContentsOfFileWhenNeeded(file));
    return image && isReallyValid(*image) ? image : nullptr;
}

/// The PDF that the image is, or becomes.
std::shared_ptr<NSPDFImageRep> PDFOfImage(const NSImage& image) {
    if (auto pdf = PDFImageRep(image))
        return pdf;
    const auto eps = EPSImageRep(image);
    return eps ? initPDFImageRep(*eps) : nullptr;
}

NSDictionary factsOfImage(NSImage& image, const NSString& file, bool wantsPDFText, bool mayUseImporters,
                          const TextContentOfFileAtPath& textContentOfFileAtPath) {
    const NSSize size = image.size();
    const NSSize pixels = pixelSize(image);
    NSDictionary text;
    if (wantsPDFText) {
        const bool isPDF = PDFImageRep(image) != nullptr;
        if (const auto pdf = PDFOfImage(image); pdf && !pdf->PDFRepresentation().isNil())
            text = _attributed_stringWithPDF_file_size(false, pdf->PDFRepresentation(),
                                                       mayUseImporters && isPDF ? file : NSString(), false,
                                                       textContentOfFileAtPath);
    }
    image.setScalesWhenResized(true);
    image.setSize(pixels);
    auto result = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSStringFromSize(size), ResultSizeKey},
         {NSStringFromSize(pixels), ResultPixelSizeKey},
         {NSNumber::numberWithBool(hasAlpha(image)), ResultAlphaKey}});
    const auto side = static_cast<float>(longestSideOfThumbnail);
    const NSData thumbnail = TIFFRepresentationWithSize_shouldAntialias_interpolation_cachedSeparately(
        image, thumbSize(image, {side, side}), true, NSImageInterpolationHigh, false);
    if (thumbnail.isNil())
        throw NSException(NSInvalidArgumentException, u"The image cannot be drawn.");
    result.setObject_forKey(thumbnail, ResultThumbnailKey);
    for (const Value& key : text.isNil() ? NSArray() : text.allKeys())
        result.setObject_forKey(text.objectForKey(key), key.string());
    return result;
}

} // namespace

NSDictionary imageWithContentsOfFile(const NSString& file, bool wantsPDFText, bool mayUseImporters,
                                     const TextContentOfFileAtPath& textContentOfFileAtPath) {
    try {
        if (!wantsPDFText) {
            if (NSDictionary result = thumbnailOfFile(file); !result.isNil())
                return result;
            if (hasCostAnEngine())
                return nullptr;
        }
        if (const auto image = imageOfFile(file))
            return factsOfImage(*image, file, wantsPDFText, mayUseImporters, textContentOfFileAtPath);
        if (wantsPDFText && NSImageKelvoExtensions::isRealPDFFile(file))
            return _attributed_stringWithPDF_file_size(false, NSData::dataWithContentsOfFileWhenNeeded(file),
                                                       mayUseImporters ? file : NSString(), true,
                                                       textContentOfFileAtPath);
    } catch (const std::exception& exception) {
        note(outcomeOfFailure(exception));
    }
    return nullptr;
}

NSData PDFImageRepOfFile(const NSString& file) {
    try {
        const auto image = NSImage::initByReferencingFile(NSImageKelvoExtensions::pathToPDF(file));
        if (!image || !isReallyValid(*image))
            return nullptr;
        const auto pdf = PDFOfImage(*image);
        if (pdf)
            return pdf->PDFRepresentation();
        noteOutcome(Outcome::nothing, u"it is neither a PDF nor PostScript");
    } catch (const std::exception& exception) {
        note(outcomeOfFailure(exception));
    }
    return nullptr;
}

} // namespace kelvo
