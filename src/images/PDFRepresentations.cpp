#include "images/PDFRepresentations.h"

#include "collections/NSArrayKelvoExtensions.h"
#include "collections/NSObjectKelvoExtensions.h"
#include "files/KelvoFileManagerExtensions.h"
#include "images/ImageFileTypes.h"
#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSCachedImageRep.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"

namespace kelvo {
namespace {

template <typename Rep>
bool isOfKind(const NSImageRep& rep) {
    return dynamic_cast<const Rep*>(&rep) != nullptr;
}

template <typename Rep>
bool isImageOfKind(const NSImage& image) {
    bool isFound = false;
    const auto& reps = image.representations();
    for (auto rep = reps.rbegin(); rep != reps.rend(); ++rep) {
        if (isOfKind<Rep>(**rep))
            isFound = true;
        else if (!isOfKind<NSCachedImageRep>(**rep))
            return false;
    }
    return isFound;
}

} // namespace

std::shared_ptr<NSEPSImageRep> EPSImageRep(const NSImage& image) {
    return imageRepOfClass<NSEPSImageRep>(image);
}

std::shared_ptr<NSPICTImageRep> PICTImageRep(const NSImage& image) {
    return imageRepOfClass<NSPICTImageRep>(image);
}

std::shared_ptr<NSPDFImageRep> PDFImageRep(const NSImage& image) {
    if (auto pdf = imageRepOfClass<NSPDFImageRep>(image))
        return pdf;
    const auto eps = EPSImageRep(image);
    return eps ? PDFImageRep(*eps) : nullptr;
}

bool isPDFImage(const NSImage& image) {
    return isImageOfKind<NSPDFImageRep>(image) || EPSImageRep(image);
}

bool isEPSImage(const NSImage& image) {
    return isImageOfKind<NSEPSImageRep>(image);
}

bool isBitmapImage(const NSImage& image) {
    return isImageOfKind<NSBitmapImageRep>(image);
}

bool isPICTImage(const NSImage& image) {
    return isImageOfKind<NSPICTImageRep>(image);
}

NSString pathExtensionForBestRepresentation(const NSImage& image) {
    if (imageRepOfClass<NSPDFImageRep>(image))
        return u"pdf";
    if (EPSImageRep(image))
        return u"eps";
    return PICTImageRep(image) ? u"pict" : u"tiff";
}

NSData bestRepresentationAndFileExtension(const NSImage& image, NSString* fileExtension) {
    if (fileExtension)
        *fileExtension = pathExtensionForBestRepresentation(image);
    if (const auto pdf = imageRepOfClass<NSPDFImageRep>(image))
        return pdf->PDFRepresentation();
    if (const auto eps = EPSImageRep(image))
        return eps->EPSRepresentation();
    if (const auto pict = PICTImageRep(image))
        return pict->PICTRepresentation();
    return image.TIFFRepresentationUsingCompression_factor(NSTIFFCompressionLZW, 1);
}

std::shared_ptr<NSPDFImageRep> initPDFImageRep(const NSEPSImageRep& rep) {
    // On an image that is thrown away, all that drawing does is this.
    rep.interpret();
    return PDFImageRep(rep);
}

std::shared_ptr<NSPDFImageRep> PDFImageRep(const NSEPSImageRep& rep) {
    return std::dynamic_pointer_cast<NSPDFImageRep>(getSafeValueForKey(rep, u"pdfImageRep").object());
}

NSData PDFRepresentation(const NSEPSImageRep& rep) {
    const auto pdf = PDFImageRep(rep);
    return pdf ? pdf->PDFRepresentation() : NSData();
}

NSString NSImageKelvoExtensions::pathToPDF(const NSString& path) {
    if (!isPDFBundle(path))
        return path;
    const NSFileManager& files = NSFileManager::defaultManager();
    const NSString name =
        stringByAppendingPathExtension(stringByDeletingPathExtension(lastPathComponent(path)), u"pdf");
    if (NSString candidate = stringByAppendingPathComponent(path, name); files.fileExistsAtPath(candidate))
        return candidate;
    const NSString first =
        firstObject(directoryContentsAtPath_matchingExtension(files, path, u"pdf")).string();
    return first.isNil() ? path : stringByAppendingPathComponent(path, first);
}

} // namespace kelvo
