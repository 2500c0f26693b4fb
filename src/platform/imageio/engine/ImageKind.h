#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

/// By which road the pixels of a file are reached.
enum class ImageReader : std::uint8_t {
    vips,       ///< libvips reads the file
    frames,     ///< one of FFmpeg's decoders reads it
    icons,      ///< a folder of icons, each of which is a file
    iconFamily, ///< the same, of another maker
    preview     ///< by the largest picture that the camera has put into it
};

/// What can be read.
struct ImageKind {
    /// A uniform type identifier.
    const char16_t* type;
    ImageReader reader;
    /// What the reader knows it by: the class of the library's loader, or the name of the decoder.
    const char* loader;
    /// The module of libvips that its loader is in, where it is in one.
    const char* module = nullptr;
    /// Whether several images may be in one file.
    bool mayHaveMany = false;
    /// Whether the metadata library reads it.
    bool hasMetadata = false;
    /// Whether the loader gives rows as they come, in little memory, however large the image is.
    bool isReadInRows = false;
};

/// All that are known, each type once.
std::span<const ImageKind> imageKinds();

/// By the first bytes of a file, and by the hint where these say nothing. Null when no reader is for it. A TIFF may turn
/// out to be a camera's: kindOfCamera().
const ImageKind* kindOfImage(std::string_view bytes, std::u16string_view hint);

/// Of a TIFF that holds what a sensor has seen, by the maker that it names; never null.
const ImageKind* kindOfCamera(std::string_view maker, bool isDigitalNegative);

} // namespace kelvo
