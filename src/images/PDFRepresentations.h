#pragma once

#include "platform/appkit/images/NSEPSImageRep.h"
#include "platform/appkit/images/NSImage.h"
#include "platform/appkit/images/NSPDFImageRep.h"
#include "platform/appkit/images/NSPICTImageRep.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

#include <memory>

namespace kelvo {

// Which forms an image has. All searches go from the last representation to the first, so that one that was added later
// wins. What there is none of is null, or nil.

/// The last representation of that class, or of one that derives from it.
template <typename Rep>
std::shared_ptr<Rep> imageRepOfClass(const NSImage& image) {
    const auto& reps = image.representations();
    for (auto rep = reps.rbegin(); rep != reps.rend(); ++rep) {
        if (auto found = std::dynamic_pointer_cast<Rep>(*rep))
            return found;
    }
    return nullptr;
}
std::shared_ptr<NSEPSImageRep> EPSImageRep(const NSImage& image);
std::shared_ptr<NSPICTImageRep> PICTImageRep(const NSImage& image);
/// Where there is no PDF, that of the last EPS, which has one when it has been drawn.
std::shared_ptr<NSPDFImageRep> PDFImageRep(const NSImage& image);

/// Whether the last of its representations that are not cached copies, and with it all, are PDFs; or any is EPS.
bool isPDFImage(const NSImage& image);
// Whether all of its representations that are not cached copies are of the kind, and there is one.
bool isEPSImage(const NSImage& image);
bool isBitmapImage(const NSImage& image);
bool isPICTImage(const NSImage& image);

/// "pdf", "eps", "pict" or "tiff": the first of these that the image has, TIFF in any case.
NSString pathExtensionForBestRepresentation(const NSImage& image);
/// The data of that form, TIFF with LZW. `fileExtension` may be null.
NSData bestRepresentationAndFileExtension(const NSImage& image, NSString* fileExtension);

// Category NSEPSImageRep(PDF).

/// Its PDF, which drawing makes: it is drawn where it has none yet. Null when the PostScript cannot be interpreted.
std::shared_ptr<NSPDFImageRep> initPDFImageRep(const NSEPSImageRep& rep);
/// Null when it has not been drawn yet.
std::shared_ptr<NSPDFImageRep> PDFImageRep(const NSEPSImageRep& rep);
/// The data of that one, nil without it.
NSData PDFRepresentation(const NSEPSImageRep& rep);

namespace NSImageKelvoExtensions {

/// Of a folder that holds a PDF (isPDFBundle) the path of that: the one that is called as the folder is, else the first;
/// any other path, and that of such a folder without a PDF, as it is.
NSString pathToPDF(const NSString& path);

} // namespace NSImageKelvoExtensions

} // namespace kelvo
