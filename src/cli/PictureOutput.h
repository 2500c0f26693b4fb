#pragma once

#include "platform/coregraphics/CGImage.h"
#include "platform/foundation/NSData.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::cli {

/// Holds the image engine, of which the command has one of its own. While none is there nothing below can be called.
class PictureEngine {
public:
    PictureEngine();
    PictureEngine(const PictureEngine&) = delete;
    PictureEngine& operator=(const PictureEngine&) = delete;
    ~PictureEngine();
};

enum class PictureForm : std::uint8_t { TIFF, PNG, JPEG };

/// By the ending of a file's name, in letters of either case: .tiff, .tif, .png, .jpeg, .jpg. "-" and devices are TIFF.
/// Absent for others.
std::optional<PictureForm> pictureFormOfName(std::string_view name);

/// The thumbnail of an answer, which is a TIFF. Throws CommandError (noAnswer) with a sentence that begins with the
/// subject when it cannot be read.
CGImage imageOfThumbnail(const NSData& thumbnail, const std::string& subject);
/// The same as a file of that form; of TIFF the service's own bytes. Throws CommandError (noAnswer).
NSData pictureOfThumbnail(const NSData& thumbnail, PictureForm form, const std::string& subject);

} // namespace kelvo::cli
