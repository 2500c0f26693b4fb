#include "platform/imageio/engine/IconFiles.h"

#include "platform/imageio/engine/ByteReader.h"

#include <algorithm>
#include <string>

namespace kelvo {
namespace {

using imageengine::bytesOfPixel;
using Form = IconEntry::Form;

constexpr std::size_t mostEntries = 1000;
constexpr std::string_view startOfPNG = "\x89PNG";

[[noreturn]] void fail() {
    throw ImageFailure(Outcome::broken, u"the icon cannot be decoded");
}

void sortBySize(std::vector<IconEntry>& icons) {
    std::stable_sort(icons.begin(), icons.end(), [](const IconEntry& left, const IconEntry& right) {
        return left.side != right.side ? left.side > right.side : left.bitsOfPixel > right.bitsOfPixel;
    });
}

std::string number32(std::uint32_t value) {
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFFU);
    return bytes;
}

/// The mask of a bitmap: a bit for each pixel, the last row first, rows in steps of 32 bits. Where it is cut off the
/// picture is seen.
void applyMask(Frame& frame, std::string_view mask) {
    const std::size_t rowLength = (frame.size.width + 31) / 32 * 4;
    for (std::size_t row = 0; row < frame.size.height; ++row) {
        for (std::size_t column = 0; column < frame.size.width; ++column) {
            const std::size_t place = (frame.size.height - 1 - row) * rowLength + column / 8;
            const bool isHidden = place < mask.size() &&
                                  (static_cast<unsigned char>(mask[place]) >> (7 - column % 8) & 1U) != 0;
            frame.pixels[(row * frame.size.width + column) * bytesOfPixel + 3] = isHidden ? 0 : 0xFF;
            frame.hasAlpha = frame.hasAlpha || isHidden;
        }
    }
}

Frame decodedBitmap(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::little);
    constexpr std::size_t placeOfHeight = 8;
    constexpr std::uint32_t leastHead = 40;
    constexpr std::uint32_t lengthOfFileHead = 14;
    const std::uint32_t head = reader.number32(0).value_or(0);
    const std::uint32_t bothHeights = reader.number32(placeOfHeight).value_or(0);
    const std::uint32_t width = reader.number32(4).value_or(0);
    const std::uint32_t depth = reader.number16(14).value_or(0);
    const std::uint32_t compression = reader.number32(16).value_or(0);
    if (head < leastHead || head > bytes.size())
        fail();
    requirePixels(width, bothHeights / 2);
    std::uint32_t colors = reader.number32(32).value_or(0);
    if (colors == 0 && depth <= 8)
        colors = 1U << depth;
    constexpr std::uint32_t bitFields = 3;
    constexpr std::uint32_t mostColors = 256;
    const std::uint32_t start = lengthOfFileHead + head + std::min(colors, mostColors) * 4 +
                                (compression == bitFields && head == leastHead ? 12 : 0);
    std::string file = "BM" + number32(lengthOfFileHead + static_cast<std::uint32_t>(bytes.size())) +
                       number32(0) + number32(start);
    file += bytes;
    file.replace(lengthOfFileHead + placeOfHeight, 4, number32(bothHeights / 2));
    Frame frame = decodedFrame("bmp", file);
    constexpr std::uint32_t depthWithAlpha = 32;
    if (depth != depthWithAlpha || !frame.hasAlpha) {
        frame.hasAlpha = false;
        const std::size_t rowLength = (std::size_t{width} * depth + 31) / 32 * 4;
        const std::size_t mask = start - lengthOfFileHead + rowLength * (bothHeights / 2);
        applyMask(frame, bytes.substr(std::min(mask, bytes.size())));
    }
    return frame;
}

/// One channel: runs of one value, and of values as they stand. Returns what is left of the bytes.
std::string_view unpack(std::string_view bytes, std::vector<std::uint8_t>& pixels, std::size_t channel) {
    const std::size_t count = pixels.size() / bytesOfPixel;
    std::size_t pixel = 0;
    while (pixel < count && !bytes.empty()) {
        const auto code = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        const bool isRun = code >= 0x80;
        const std::size_t length = isRun ? code - 0x80U + 3 : code + 1U;
        for (std::size_t index = 0; index < length && !bytes.empty(); ++index) {
            if (pixel < count)
                pixels[pixel++ * bytesOfPixel + channel] = static_cast<unsigned char>(bytes.front());
            if (!isRun)
                bytes.remove_prefix(1);
        }
        if (isRun && !bytes.empty())
            bytes.remove_prefix(1);
    }
    return bytes;
}

Frame decodedPlanes(const IconEntry& icon) {
    Frame frame;
    frame.size = {icon.side, icon.side};
    const std::size_t count = icon.side * icon.side;
    frame.pixels.assign(count * bytesOfPixel, 0);
    std::string_view rest = icon.bytes;
    // The largest of the old ones begins with four zeros.
    if (icon.form == Form::planes && icon.side == 128 && rest.starts_with(std::string_view("\0\0\0\0", 4)))
        rest.remove_prefix(4);
    if (icon.form == Form::planesWithAlpha) {
        if (!rest.starts_with("ARGB"))
            fail();
        rest = unpack(rest.substr(4), frame.pixels, 3);
    }
    if (icon.form == Form::planes && rest.size() == count * bytesOfPixel) {
        // Not packed: a byte that is not used before each three.
        for (std::size_t place = 0; place < rest.size(); ++place)
            frame.pixels[place / 4 * 4 + (place % 4 + 3) % 4] = static_cast<unsigned char>(rest[place]);
    } else {
        for (std::size_t channel = 0; channel < 3; ++channel)
            rest = unpack(rest, frame.pixels, channel);
    }
    if (icon.form == Form::planes) {
        for (std::size_t pixel = 0; pixel < count; ++pixel)
            frame.pixels[pixel * bytesOfPixel + 3] =
                pixel < icon.mask.size() ? static_cast<unsigned char>(icon.mask[pixel]) : 0xFF;
    }
    frame.hasAlpha = true;
    return frame;
}

struct FamilyRow {
    std::string_view code;
    std::size_t side;
    Form form;
    /// Of the mask.
    std::string_view maskCode;
};
constexpr FamilyRow familyRows[] = {
    {"is32", 16, Form::planes, "s8mk"},
    {"il32", 32, Form::planes, "l8mk"},
    {"ih32", 48, Form::planes, "h8mk"},
    {"it32", 128, Form::planes, "t8mk"},
    {"ic04", 16, Form::planesWithAlpha, ""},
    {"ic05", 32, Form::planesWithAlpha, ""},
    {"icsb", 18, Form::planesWithAlpha, ""},
    {"icp4", 16, Form::file, ""},
    {"icp5", 32, Form::file, ""},
    {"icp6", 64, Form::file, ""},
    {"ic07", 128, Form::file, ""},
    {"ic08", 256, Form::file, ""},
    {"ic09", 512, Form::file, ""},
    {"ic10", 1024, Form::file, ""},
    {"ic11", 32, Form::file, ""},
    {"ic12", 64, Form::file, ""},
    {"ic13", 256, Form::file, ""},
    {"ic14", 512, Form::file, ""},
    {"icsB", 36, Form::file, ""},
    {"sb24", 24, Form::file, ""},
    {"SB24", 48, Form::file, ""},
};

} // namespace

std::vector<IconEntry> iconsOfFolder(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::little);
    constexpr std::size_t head = 6;
    constexpr std::size_t lengthOfEntry = 16;
    std::vector<IconEntry> icons;
    const std::size_t count = std::min<std::size_t>(reader.number16(4).value_or(0), mostEntries);
    for (std::size_t index = 0; index < count; ++index) {
        const std::size_t entry = head + index * lengthOfEntry;
        const auto start = reader.number32(entry + 12);
        if (!start || *start >= bytes.size())
            continue;
        IconEntry icon;
        const std::size_t length = *reader.number32(entry + 8);
        icon.bytes = bytes.substr(*start, length);
        icon.isCutOff = icon.bytes.size() < length;
        icon.form = icon.bytes.starts_with(startOfPNG) ? Form::file : Form::bitmap;
        const std::size_t width = *reader.number8(entry);
        icon.side = width == 0 ? 256 : width;
        icon.bitsOfPixel =
            icon.form == Form::file ? 32 : ByteReader(icon.bytes, ByteOrder::little).number16(14).value_or(0);
        icons.push_back(icon);
    }
    sortBySize(icons);
    return icons;
}

std::vector<IconEntry> iconsOfFamily(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::big);
    constexpr std::size_t head = 8;
    std::vector<std::pair<std::string_view, std::string_view>> elements;
    std::size_t place = head;
    while (elements.size() < mostEntries) {
        const auto length = reader.number32(place + 4);
        if (!length || *length < head)
            break;
        elements.emplace_back(bytes.substr(place, 4),
                              bytes.substr(std::min(place + head, bytes.size()), *length - head));
        place += *length;
    }
    // Only what comes last can be.
    const auto isCutOff = [&](std::string_view contents) {
        return place > bytes.size() && contents.data() + contents.size() == bytes.data() + bytes.size();
    };
    std::vector<IconEntry> icons;
    for (const auto& [code, contents] : elements) {
        const std::string_view name = code;
        const auto* const row = std::find_if(std::begin(familyRows), std::end(familyRows),
                                             [name](const FamilyRow& one) { return one.code == name; });
        if (row == std::end(familyRows) || contents.empty())
            continue;
        IconEntry icon;
        icon.form = row->form;
        icon.side = row->side;
        icon.bytes = contents;
        const bool isFile = contents.starts_with(startOfPNG) ||
                            contents.starts_with(std::string_view("\0\0\0\x0CjP", 6)) ||
                            contents.starts_with("\xFF\x4F\xFF\x51");
        if (isFile)
            icon.form = Form::file;
        else if (row->form == Form::file)
            icon.form = contents.starts_with("ARGB") ? Form::planesWithAlpha : Form::planes;
        for (const auto& [maskCode, mask] : elements) {
            if (!row->maskCode.empty() && maskCode == row->maskCode)
                icon.mask = mask;
        }
        icon.isCutOff = isCutOff(icon.bytes) || (!icon.mask.empty() && isCutOff(icon.mask));
        icons.push_back(icon);
    }
    sortBySize(icons);
    return icons;
}

Frame decodedIcon(const IconEntry& icon) {
    return icon.form == Form::bitmap ? decodedBitmap(icon.bytes) : decodedPlanes(icon);
}

} // namespace kelvo
