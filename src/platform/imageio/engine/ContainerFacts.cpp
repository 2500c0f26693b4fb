#include "platform/imageio/engine/ContainerFacts.h"

#include "platform/imageio/engine/ByteReader.h"
#include "platform/imageio/engine/GIFRows.h"
#include "platform/imageio/engine/MetadataValues.h"

#include <algorithm>
#include <optional>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr double hundredthsOfSecond = 100;
constexpr double shortestDelay = 0.02;
constexpr double delayInstead = 0.1;

Value integer(std::int64_t number) {
    return NSNumber::numberWithInt(static_cast<std::int32_t>(number));
}

std::string_view part(std::string_view bytes, std::size_t place, std::size_t length) {
    return place < bytes.size() ? bytes.substr(place, length) : std::string_view();
}

void setDelay(NSMutableDictionary& group, double seconds) {
    // Nobody shows images as fast as that.
    group.setObject_forKey(NSNumber::numberWithDouble(seconds < shortestDelay ? delayInstead : seconds),
                           u"DelayTime");
    group.setObject_forKey(NSNumber::numberWithDouble(seconds), u"UnclampedDelayTime");
}

/// A part of a JPEG before its pixels: the marker, and what it holds.
struct Segment {
    std::uint8_t marker = 0;
    std::string_view contents;
    std::size_t end = 0;
};

std::optional<Segment> segmentAt(std::string_view bytes, std::size_t place) {
    const ByteReader reader(bytes, ByteOrder::big);
    while (reader.number8(place) == 0xFF && reader.number8(place + 1) == 0xFF)
        ++place;
    const auto length = reader.number16(place + 2);
    if (reader.number8(place) != 0xFF || !length || *length < 2)
        return std::nullopt;
    return Segment{*reader.number8(place + 1), part(bytes, place + 4, *length - 2U), place + 2 + *length};
}

bool isScan(std::uint8_t marker) {
    return marker == 0xDA;
}

struct Chunk {
    std::string_view type;
    std::string_view contents;
    std::size_t end = 0;
};

constexpr std::size_t lengthOfPNGSign = 8;

std::optional<Chunk> chunkAt(std::string_view bytes, std::size_t place) {
    const auto length = ByteReader(bytes, ByteOrder::big).number32(place);
    if (!length || *length > 0x7FFFFFFF || place + 8 > bytes.size())
        return std::nullopt;
    return Chunk{part(bytes, place + 4, 4), part(bytes, place + 8, *length), place + 12 + *length};
}

struct KeywordRow {
    std::string_view keyword;
    const char16_t* name;
};
constexpr KeywordRow keywords[] = {
    {"Author", u"Author"},
    {"Comment", u"Comment"},
    {"Copyright", u"Copyright"},
    {"Creation Time", u"CreationTime"},
    {"Description", u"Description"},
    {"Disclaimer", u"Disclaimer"},
    {"Modification Time", u"ModificationTime"},
    {"Software", u"Software"},
    {"Source", u"Source"},
    {"Title", u"Title"},
    {"Warning", u"Warning"},
};

void addAnimation(NSMutableDictionary& group, const Chunk& chunk) {
    const ByteReader reader(chunk.contents, ByteOrder::big);
    if (chunk.type == "acTL") {
        if (const auto loops = reader.number32(4))
            group.setObject_forKey(integer(*loops), u"LoopCount");
        return;
    }
    const auto delay = reader.number16(20);
    const auto unit = reader.number16(22);
    if (delay && unit && group.objectForKey(u"DelayTime").isNil())
        setDelay(group, *delay / (*unit == 0 ? hundredthsOfSecond : static_cast<double>(*unit)));
}

void addChunk(NSMutableDictionary& group, const Chunk& chunk) {
    const ByteReader reader(chunk.contents, ByteOrder::big);
    constexpr double unit = 100000;
    if (chunk.type == "IHDR") {
        if (const auto method = reader.number8(12))
            group.setObject_forKey(integer(*method), u"InterlaceType");
    } else if (chunk.type == "gAMA") {
        if (const auto gamma = reader.number32(0))
            group.setObject_forKey(NSNumber::numberWithDouble(*gamma / unit), u"Gamma");
    } else if (chunk.type == "sRGB") {
        if (const auto intent = reader.number8(0))
            group.setObject_forKey(integer(*intent), u"sRGBIntent");
    } else if (chunk.type == "pHYs") {
        const auto across = reader.number32(0);
        const auto down = reader.number32(4);
        if (across && down && reader.number8(8) == 1) {
            group.setObject_forKey(integer(*across), u"XPixelsPerMeter");
            group.setObject_forKey(integer(*down), u"YPixelsPerMeter");
        }
    } else if (chunk.type == "cHRM") {
        std::vector<Value> numbers;
        for (std::size_t index = 0; index < 8; ++index)
            numbers.emplace_back(NSNumber::numberWithDouble(reader.number32(4 * index).value_or(0) / unit));
        group.setObject_forKey(NSArray::arrayWithValues(std::move(numbers)), u"Chromaticities");
    } else if (chunk.type == "acTL" || chunk.type == "fcTL") {
        addAnimation(group, chunk);
    }
}

} // namespace

std::optional<JPEGHead> headOfJPEG(std::string_view bytes) {
    constexpr std::string_view markOfProfile = "ICC_PROFILE\0"sv;
    constexpr std::size_t placeOfProfile = markOfProfile.size() + 2;
    JPEGHead head;
    for (std::size_t place = 2;;) {
        const auto segment = segmentAt(bytes, place);
        if (!segment || segment->end > bytes.size())
            return std::nullopt;
        if (isScan(segment->marker))
            return head.width > 0 && head.height > 0 ? std::optional(head) : std::nullopt;
        place = segment->end;
        const ByteReader reader(segment->contents, ByteOrder::big);
        const bool isFrame = segment->marker >= 0xC0 && segment->marker <= 0xCF && segment->marker != 0xC4 &&
                             segment->marker != 0xC8 && segment->marker != 0xCC;
        if (isFrame && (segment->marker > 0xC2 || reader.number8(0) != 8 || head.width > 0))
            return std::nullopt;
        if (isFrame) {
            head.height = reader.number16(1).value_or(0);
            head.width = reader.number16(3).value_or(0);
            head.channels = reader.number8(5).value_or(0);
        }
        if (segment->marker == 0xE2 && segment->contents.starts_with(markOfProfile) &&
            segment->contents.size() > placeOfProfile)
            head.profile += segment->contents.substr(placeOfProfile);
    }
}

NSMutableDictionary groupOfJFIF(std::string_view bytes) {
    NSMutableDictionary group;
    std::optional<bool> isProgressive;
    std::size_t place = 2;
    while (const auto segment = segmentAt(bytes, place)) {
        if (isScan(segment->marker))
            break;
        place = segment->end;
        const ByteReader reader(segment->contents, ByteOrder::big);
        if (segment->marker == 0xE0 && segment->contents.starts_with("JFIF\0"sv) &&
            segment->contents.size() >= 12) {
            group = NSMutableDictionary::dictionary();
            const std::uint8_t minor = *reader.number8(6);
            std::vector<Value> version{integer(*reader.number8(5)), integer(minor >> 4U)};
            if ((minor & 0xFU) != 0)
                version.push_back(integer(minor & 0xFU));
            group.setObject_forKey(NSArray::arrayWithValues(std::move(version)), u"JFIFVersion");
            group.setObject_forKey(integer(*reader.number8(7)), u"DensityUnit");
            group.setObject_forKey(integer(*reader.number16(8)), u"XDensity");
            group.setObject_forKey(integer(*reader.number16(10)), u"YDensity");
        }
        if (segment->marker >= 0xC0 && segment->marker <= 0xC2)
            isProgressive = segment->marker == 0xC2;
    }
    if (isProgressive)
        group.setObject_forKey(NSNumber::numberWithBool(*isProgressive), u"IsProgressive");
    return group;
}

NSMutableDictionary groupOfPNG(std::string_view bytes,
                               const std::vector<std::pair<std::string, std::string>>& texts) {
    auto group = NSMutableDictionary::dictionary();
    std::size_t place = lengthOfPNGSign;
    while (const auto chunk = chunkAt(bytes, place)) {
        place = chunk->end;
        // What counts for the image stands before its pixels.
        if (chunk->type == "IDAT" || chunk->type == "IEND")
            break;
        addChunk(group, *chunk);
    }
    for (const auto& [keyword, text] : texts) {
        const std::string_view wanted = keyword;
        const auto* const row =
            std::find_if(std::begin(keywords), std::end(keywords),
                         [wanted](const KeywordRow& one) { return one.keyword == wanted; });
        const Value value = textOf(text);
        if (row != std::end(keywords) && !value.isNil())
            group.setObject_forKey(value, row->name);
    }
    return group;
}

NSMutableDictionary groupOfGIF(std::string_view bytes, std::int64_t index) {
    auto group = NSMutableDictionary::dictionary();
    const ByteReader reader(bytes, ByteOrder::little);
    const auto flags = reader.number8(10);
    if (!flags)
        return group;
    group.setObject_forKey(integer(*reader.number16(6)), u"CanvasPixelWidth");
    group.setObject_forKey(integer(*reader.number16(8)), u"CanvasPixelHeight");
    group.setObject_forKey(NSNumber::numberWithBool((*flags & 0x80U) != 0), u"HasGlobalColorMap");
    std::size_t place = 13 + lengthOfGIFColors(*flags);
    double delay = 0;
    for (std::int64_t image = 0; image <= index;) {
        const auto introducer = reader.number8(place);
        if (introducer == 0x21) {
            const auto label = reader.number8(place + 1);
            if (label == 0xF9)
                delay = reader.number16(place + 4).value_or(0) / hundredthsOfSecond;
            if (label == 0xFF && part(bytes, place + 3, 11) == "NETSCAPE2.0" &&
                reader.number8(place + 15) == 1)
                group.setObject_forKey(integer(reader.number16(place + 16).value_or(0)), u"LoopCount");
            place = endOfGIFBlocks(bytes, place + 2);
        } else if (introducer == 0x2C) {
            if (image++ == index)
                setDelay(group, delay);
            delay = 0;
            place =
                endOfGIFBlocks(bytes, place + 11 + lengthOfGIFColors(reader.number8(place + 9).value_or(0)));
        } else {
            break;
        }
    }
    return group;
}

bool isCutOffJPEG(std::string_view bytes) {
    std::size_t place = 2;
    while (const auto segment = segmentAt(bytes, place)) {
        place = segment->end;
        if (isScan(segment->marker))
            // Thumbnails before it have ends of their own.
            return place > bytes.size() || bytes.rfind("\xFF\xD9") == bytes.npos ||
                   bytes.rfind("\xFF\xD9") < place;
    }
    return true;
}

bool isCutOffPNG(std::string_view bytes) {
    // Not from chunk to chunk: that would have the whole file read.
    constexpr std::size_t mostBehind = 4096;
    return bytes.substr(bytes.size() - std::min(bytes.size(), mostBehind)).rfind("IEND") == bytes.npos;
}

bool isCutOffGIF(std::string_view bytes) {
    const auto flags = ByteReader(bytes, ByteOrder::little).number8(10);
    std::size_t place = 13 + lengthOfGIFColors(flags.value_or(0));
    while (place < bytes.size()) {
        const auto introducer = static_cast<unsigned char>(bytes[place]);
        if (introducer == 0x3B)
            return false;
        if (introducer == 0x2C)
            place +=
                9 + lengthOfGIFColors(ByteReader(bytes, ByteOrder::little).number8(place + 9).value_or(0));
        else if (introducer != 0x21)
            return true;
        place = endOfGIFBlocks(bytes, place + 2);
    }
    return true;
}

bool isCutOffEXR(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::little);
    constexpr std::uint32_t tiled = 0x200;
    constexpr std::uint32_t severalParts = 0x1000;
    const std::uint32_t flags = reader.number32(4).value_or(severalParts);
    if ((flags & severalParts) != 0)
        return true;
    // Attributes: a name, a type, and how long the value is.
    std::size_t place = 8;
    while (reader.number8(place).value_or(0) != 0) {
        const std::size_t type = bytes.find('\0', place);
        const std::size_t length = type == bytes.npos ? bytes.npos : bytes.find('\0', type + 1);
        if (length == bytes.npos || !reader.number32(length + 1))
            return true;
        place = length + 5 + *reader.number32(length + 1);
    }
    // The places of the blocks, up to the first of these.
    const std::size_t lengthOfHead = (flags & tiled) != 0 ? 20 : 8;
    std::uint64_t first = bytes.size();
    for (++place; place < first; place += 8) {
        const auto low = reader.number32(place);
        const auto high = reader.number32(place + 4);
        if (!low || !high)
            return true;
        const std::uint64_t block = std::uint64_t{*high} << 32U | *low;
        const auto length = block < bytes.size() ? reader.number32(block + lengthOfHead - 4) : std::nullopt;
        if (!length || bytes.size() - block < lengthOfHead + *length)
            return true;
        first = std::min(first, block);
    }
    return first == bytes.size();
}

} // namespace kelvo
