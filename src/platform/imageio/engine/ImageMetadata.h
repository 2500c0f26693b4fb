#pragma once

#include "platform/foundation/Value.h"
#include "platform/imageio/engine/DecodedImage.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// What Exiv2 reads of a file: Exif, IPTC and XMP, and the pictures in them.
class ImageMetadata {
public:
    /// Empty when there is nothing that can be read. The bytes are read in place.
    explicit ImageMetadata(std::string_view bytes);
    ~ImageMetadata();

    /// Whether it is empty because what there is cannot be read.
    bool isDamaged() const noexcept { return isDamaged_; }
    /// 1 to 8; 0 when the file does not say.
    int orientation() const;
    /// Whether it holds what a sensor has seen.
    bool isOfSensor() const;
    bool isDigitalNegative() const;
    std::string maker() const;
    /// Of the image, as the file states it, and of a camera's what the sensor has seen; 0 by 0 when it does not.
    ImageSize size() const;
    /// The embedded thumbnail as a file of its own; nil when there is none.
    NSData thumbnail() const;
    /// The smallest preview whose longer side has so many pixels, or else the largest; nil when there is none.
    NSData preview(std::size_t leastPixels) const;
    /// Of the whole; empty when there is none.
    std::string profile() const;
    /// What stands in the XMP under a key ("Xmp.dc.subject"): one text or many; of texts in several languages the one for
    /// all. Empty when there is none.
    std::vector<NSString> textsOfXMP(const char* key) const;
    /// A text of the image group of Exif that is in UTF-16, as file managers write it; nil when there is none.
    NSString wideText(std::uint16_t tag) const;
    /// What is written beside the image (COM in a JPEG); nil when there is nothing.
    NSString comment() const;

    /// Adds the groups that there are by the keys of CGImageProperties.h.
    void addGroups(NSMutableDictionary& properties) const;

private:
    struct Contents;
    std::unique_ptr<Contents> contents_;
    bool isDamaged_ = false;
};

/// Starts the library.
void prepareMetadata();

} // namespace kelvo
