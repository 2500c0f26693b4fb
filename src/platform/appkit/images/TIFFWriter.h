#pragma once

#include "platform/appkit/images/NSTIFFCompression.h"
#include "platform/coregraphics/Bitmap.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"

#include <cstdint>
#include <vector>

namespace kelvo {

/// TIFF 6.0 in the byte order of this machine, page after page: 8 or 16 bits, gray or RGB, with alpha of either kind.
/// Ours, because a library that writes it reads it as well, and the service must not have one that does.
class TIFFWriter {
public:
    /// LZW comes with the differences of neighbouring samples, which halves most photographs again.
    explicit TIFFWriter(NSTIFFCompression compression);

    /// The image must be whole (see NSBitmapImageRep::initWithBitmap). Throws NSException (NSMallocException) when the
    /// file would pass maximumSizeInBytes.
    void addPage(const Bitmap& image, NSSize dotsPerInch);
    /// The file; the writer is of no more use after that.
    NSData takeData();

private:
    struct Strips;
    Strips writeStrips(const Bitmap& image);
    void appendShort(std::uint32_t number);
    void appendLong(std::uint32_t number);
    void putLong(std::size_t at, std::uint32_t number);
    void alignToWord();
    std::uint32_t offset() const;

    NSTIFFCompression compression_;
    std::vector<std::uint8_t> file_;
    /// Where the offset of the next page is to stand.
    std::size_t placeOfNextPage_;
};

} // namespace kelvo
