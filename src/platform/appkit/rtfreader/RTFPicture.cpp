#include "platform/appkit/rtfreader/RTFPicture.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/rtfreader/RTFWords.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvo {
namespace {

constexpr auto hexDigits = [] {
    std::array<int, 256> table{};
    for (std::size_t byte = 0; byte < table.size(); ++byte)
        table[byte] = hexDigitValue(byte);
    return table;
}();

void appendLittleEndian(std::string& bytes, std::uint32_t value, int size) {
    for (int index = 0; index < size; ++index)
        bytes += static_cast<char>(value >> (8 * index));
}

std::uint32_t littleEndian(std::string_view bytes, std::size_t offset, int size) {
    std::uint32_t value = 0;
    for (int index = size - 1; index >= 0; --index)
        value = value << 8 | static_cast<unsigned char>(bytes[offset + static_cast<std::size_t>(index)]);
    return value;
}

/// What stands before a Windows metafile that is a file: its size, which RTF states in words instead.
std::string metafileHeader(std::int32_t widthTwips, std::int32_t heightTwips) {
    std::string header;
    appendLittleEndian(header, 0x9AC6CDD7, 4);
    header.append(6, '\0'); // A handle, and the left upper corner.
    appendLittleEndian(header, static_cast<std::uint32_t>(std::clamp(widthTwips, 1, 0x7FFF)), 2);
    appendLittleEndian(header, static_cast<std::uint32_t>(std::clamp(heightTwips, 1, 0x7FFF)), 2);
    appendLittleEndian(header, 1440, 2);
    appendLittleEndian(header, 0, 4);
    std::uint32_t checksum = 0;
    for (std::size_t offset = 0; offset < header.size(); offset += 2)
        checksum ^= littleEndian(header, offset, 2);
    appendLittleEndian(header, checksum, 2);
    return header;
}

/// What stands before a device-independent bitmap that is a file.
std::string bitmapHeader(std::string_view data) {
    constexpr std::uint32_t fileHeaderSize = 14;
    const std::uint32_t infoSize = data.size() >= 4 ? littleEndian(data, 0, 4) : 0;
    std::uint32_t colors = 0;
    if (data.size() >= 40 && infoSize >= 40) {
        const std::uint32_t bits = littleEndian(data, 14, 2);
        const std::uint32_t used = littleEndian(data, 32, 4);
        const std::uint32_t masks = infoSize == 40 && littleEndian(data, 16, 4) == 3 ? 3 : 0;
        colors = (used != 0 ? std::min(used, 256u) : bits <= 8 ? 1u << bits : 0) + masks;
    }
    const auto size = static_cast<std::uint32_t>(data.size());
    std::string header = "BM";
    appendLittleEndian(header, fileHeaderSize + size, 4);
    appendLittleEndian(header, 0, 4);
    appendLittleEndian(header, fileHeaderSize + std::min(infoSize + colors * 4, size), 4);
    return header;
}

std::int32_t numberOf(const RTFToken& token) {
    return std::clamp(token.parameter, -1000000, 1000000);
}

float pointsOf(std::int32_t goal, std::int32_t crop, std::int32_t scale) {
    const double twips = static_cast<double>(goal) - crop;
    const double points = twips * scale / 2000;
    return points > 0 && points < 100000 ? static_cast<float>(points) : 0;
}

} // namespace

void RTFPicture::apply(const RTFToken& token) {
    static constexpr RTFWord<RTFPicture> words[] = {
        {"pngblip", [](RTFPicture& picture, const RTFToken&) { picture.kind_ = "png"; }},
        {"jpegblip", [](RTFPicture& picture, const RTFToken&) { picture.kind_ = "jpg"; }},
        {"emfblip", [](RTFPicture& picture, const RTFToken&) { picture.kind_ = "emf"; }},
        {"macpict", [](RTFPicture& picture, const RTFToken&) { picture.kind_ = "pict"; }},
        {"dibitmap", [](RTFPicture& picture, const RTFToken&) { picture.kind_ = "bmp"; }},
        {"wmetafile",
         [](RTFPicture& picture, const RTFToken& word) {
             picture.kind_ = "wmf";
             picture.mappingMode_ = word.hasParameter ? numberOf(word) : 1;
         }},
        {"wbitmap", [](RTFPicture& picture, const RTFToken&) { picture.isForDevice_ = true; }},
        {"picw", [](RTFPicture& picture, const RTFToken& word) { picture.width_ = numberOf(word); }},
        {"pich", [](RTFPicture& picture, const RTFToken& word) { picture.height_ = numberOf(word); }},
        {"picwgoal", [](RTFPicture& picture, const RTFToken& word) { picture.goalWidth_ = numberOf(word); }},
        {"pichgoal", [](RTFPicture& picture, const RTFToken& word) { picture.goalHeight_ = numberOf(word); }},
        {"picscalex", [](RTFPicture& picture, const RTFToken& word) { picture.scaleX_ = numberOf(word); }},
        {"picscaley", [](RTFPicture& picture, const RTFToken& word) { picture.scaleY_ = numberOf(word); }},
        {"piccropl", [](RTFPicture& picture, const RTFToken& word) { picture.cropX_ += numberOf(word); }},
        {"piccropr", [](RTFPicture& picture, const RTFToken& word) { picture.cropX_ += numberOf(word); }},
        {"piccropt", [](RTFPicture& picture, const RTFToken& word) { picture.cropY_ += numberOf(word); }},
        {"piccropb", [](RTFPicture& picture, const RTFToken& word) { picture.cropY_ += numberOf(word); }},
    };
    applyRTFWord<RTFPicture>(words, *this, token);
}

void RTFPicture::appendHexDigits(std::string_view digits) {
    for (const char unit : digits) {
        const int digit = hexDigits[static_cast<unsigned char>(unit)];
        if (digit < 0)
            continue;
        if (digit_ < 0) {
            digit_ = digit;
        } else {
            data_ += static_cast<char>(digit_ << 4 | digit);
            digit_ = -1;
        }
    }
}

const char* RTFPicture::kindByContents() const {
    const std::string_view data = data_;
    if (data.starts_with("\x89PNG"))
        return "png";
    if (data.starts_with("\xFF\xD8\xFF"))
        return "jpg";
    if (data.starts_with("GIF8"))
        return "gif";
    if (data.starts_with("BM"))
        return "bmp";
    return kind_;
}

void RTFPicture::fillShape(std::int64_t width, std::int64_t height) {
    constexpr std::int64_t largest = 2000000;
    if (width > 0 && height > 0 && width < largest && height < largest)
        shapeSize_ = {static_cast<float>(width) / 20, static_cast<float>(height) / 20};
}

NSSize RTFPicture::displaySize() const {
    if (shapeSize_.width > 0)
        return shapeSize_;
    std::int32_t width = goalWidth_;
    std::int32_t height = goalHeight_;
    // Metafiles that are scaled state their size in 1/100 mm where they state no other.
    if (mappingMode_ == 8 && kind_ && std::string_view(kind_).ends_with("mf") && width == 0 && height == 0) {
        width = static_cast<std::int32_t>(std::lround(width_ * 1440 / 2540.0));
        height = static_cast<std::int32_t>(std::lround(height_ * 1440 / 2540.0));
    }
    const NSSize size{pointsOf(width, cropX_, scaleX_), pointsOf(height, cropY_, scaleY_)};
    return size.width > 0 && size.height > 0 ? size : NSSize();
}

std::shared_ptr<const NSTextAttachment> RTFPicture::attachmentNumbered(std::size_t number) && {
    const char* const kind = kindByContents();
    if (data_.empty() || isForDevice_ || !kind)
        return nullptr;
    const std::string_view ending = kind;
    auto attachment = std::make_shared<NSTextAttachment>();
    attachment->displaySize = displaySize();
    const auto twips = [](float points) { return static_cast<std::int32_t>(std::lround(points * 20)); };
    if (ending == "wmf" && !data_.starts_with("\xD7\xCD\xC6\x9A"))
        data_.insert(
            0, metafileHeader(twips(attachment->displaySize.width), twips(attachment->displaySize.height)));
    else if (ending == "bmp" && !data_.starts_with("BM"))
        data_.insert(0, bitmapHeader(data_));
    else if (ending == "pict")
        data_.insert(0, 512, '\0'); // Files of this kind begin with an empty header.
    auto wrapper = NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytesNoCopy(std::move(data_)));
    const std::string name = "picture-" + std::to_string(number) + '.' + kind;
    wrapper->setPreferredFilename(NSString::stringWithUTF8String(name));
    attachment->fileWrapper = std::move(wrapper);
    return attachment;
}

} // namespace kelvo
