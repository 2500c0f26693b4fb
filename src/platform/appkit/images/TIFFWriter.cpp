#include "platform/appkit/images/TIFFWriter.h"

#include "platform/appkit/images/TIFFCompressors.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <future>
#include <initializer_list>
#include <span>
#include <thread>
#include <utility>

namespace kelvo {

namespace {

constexpr std::uint32_t typeShort = 3, typeLong = 4, typeRational = 5;

enum Tag : std::uint32_t {
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    Compression = 259,
    PhotometricInterpretation = 262,
    StripOffsets = 273,
    Orientation = 274,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
    XResolution = 282,
    YResolution = 283,
    PlanarConfiguration = 284,
    ResolutionUnit = 296,
    Predictor = 317,
    ExtraSamples = 338
};

constexpr std::uint32_t blackIsZero = 1, photometricRGB = 2;
constexpr std::uint32_t topLeft = 1;
constexpr std::uint32_t chunky = 1;
constexpr std::uint32_t inch = 2;
constexpr std::uint32_t horizontalDifferencing = 2;
constexpr std::uint32_t associatedAlpha = 1, unassociatedAlpha = 2;

/// What readers that have little memory take at a time.
constexpr std::size_t stripSizeInBytes = std::size_t{64} << 10;
constexpr std::size_t sizeOfLong = 4;

struct Field {
    std::uint32_t tag;
    std::uint32_t type;
    /// A rational is two.
    std::vector<std::uint32_t> values;

    std::size_t sizeInBytes() const { return values.size() * (type == typeShort ? 2 : sizeOfLong); }
};

std::vector<std::uint32_t> rational(float number) {
    constexpr std::uint32_t denominator = 1000;
    const float held = std::clamp(number, 1.0F / denominator, 4.0e6F);
    return {static_cast<std::uint32_t>(std::lround(double{held} * denominator)), denominator};
}

template <typename Sample>
void takeDifferences(std::vector<std::uint8_t>& row, std::size_t samplesPerPixel) {
    const auto sampleAt = [&](std::size_t index) {
        Sample sample;
        std::memcpy(&sample, &row[index * sizeof(Sample)], sizeof(Sample));
        return sample;
    };
    for (std::size_t index = row.size() / sizeof(Sample); index-- > samplesPerPixel;) {
        const auto difference = static_cast<Sample>(sampleAt(index) - sampleAt(index - samplesPerPixel));
        std::memcpy(&row[index * sizeof(Sample)], &difference, sizeof(Sample));
    }
}

/// How an image stands in the file.
struct Layout {
    explicit Layout(const Bitmap& image)
        : bytesPerSample(image.bitsPerSample / 8),
          samples(colorsPerPixel(image) + (hasAlpha(image) ? 1 : 0)),
          bytesPerRow(std::size_t{image.width} * samples * bytesPerSample) {}

    std::size_t bytesPerSample;
    std::uint32_t samples;
    std::size_t bytesPerRow;
};

/// The row without what stands behind it, and without samples that mean nothing.
void copyRow(const Bitmap& image, const Layout& layout, std::uint32_t line, std::vector<std::uint8_t>& row) {
    const auto source = image.data.bytes().subspan(line * image.bytesPerRow);
    const std::size_t from = samplesPerPixel(image) * layout.bytesPerSample;
    const std::size_t to = layout.samples * layout.bytesPerSample;
    row.resize(layout.bytesPerRow);
    if (from == to) {
        std::memcpy(row.data(), source.data(), row.size());
        return;
    }
    for (std::size_t pixel = 0; pixel < image.width; ++pixel)
        std::memcpy(&row[pixel * to], &source[pixel * from], to);
}

struct LineRange {
    std::uint32_t begin;
    std::uint32_t end;
};

struct StripPlace {
    std::size_t offset;
    std::size_t sizeInBytes;
};

/// Appends the strips of those lines, each at an even place; where they stand in `out`.
std::vector<StripPlace> encodeStrips(const Bitmap& image, NSTIFFCompression compression,
                                     std::uint32_t rowsOfEach, LineRange lines,
                                     std::vector<std::uint8_t>& out) {
    const Layout layout(image);
    std::vector<StripPlace> places;
    std::vector<std::uint8_t> row, strip;
    for (std::uint32_t line = lines.begin; line < lines.end;) {
        if (out.size() % 2 != 0)
            out.push_back(0);
        const std::size_t offset = out.size();
        strip.clear();
        const std::uint32_t end = line + std::min(rowsOfEach, lines.end - line);
        for (; line < end; ++line) {
            copyRow(image, layout, line, row);
            if (compression == NSTIFFCompressionPackBits) {
                compressRowWithPackBits(row, out);
                continue;
            }
            if (compression == NSTIFFCompressionLZW && layout.bytesPerSample == 1)
                takeDifferences<std::uint8_t>(row, layout.samples);
            else if (compression == NSTIFFCompressionLZW)
                takeDifferences<std::uint16_t>(row, layout.samples);
            auto& destination = compression == NSTIFFCompressionLZW ? strip : out;
            destination.insert(destination.end(), row.begin(), row.end());
        }
        if (compression == NSTIFFCompressionLZW)
            compressWithLZW(strip, out);
        places.push_back({offset, out.size() - offset});
    }
    return places;
}

/// How many threads encode it, each a part of its strips: LZW takes a second for 150 MB, the others hardly any time.
std::uint32_t partsFor(const Bitmap& image, const Layout& layout, NSTIFFCompression compression) {
    constexpr std::size_t leastBytesOfPart = std::size_t{512} << 10;
    constexpr std::size_t mostParts = 4;
    if (compression != NSTIFFCompressionLZW)
        return 1;
    const std::size_t worthwhile = layout.bytesPerRow * image.height / leastBytesOfPart;
    const std::size_t processors = std::min<std::size_t>(std::thread::hardware_concurrency(), mostParts);
    return static_cast<std::uint32_t>(std::max<std::size_t>(std::min(worthwhile, processors), 1));
}

} // namespace

struct TIFFWriter::Strips {
    std::uint32_t rowsOfEach;
    std::vector<std::uint32_t> offsets;
    std::vector<std::uint32_t> sizesInBytes;

    void append(const std::vector<StripPlace>& places) {
        for (const StripPlace& place : places) {
            offsets.push_back(static_cast<std::uint32_t>(checkedSizeInBytes(place.offset, 1)));
            sizesInBytes.push_back(static_cast<std::uint32_t>(place.sizeInBytes));
        }
    }
};

TIFFWriter::TIFFWriter(NSTIFFCompression compression)
    : compression_(compression == NSTIFFCompressionLZW || compression == NSTIFFCompressionPackBits
                       ? compression
                       : NSTIFFCompressionNone) {
    const char* const mark = std::endian::native == std::endian::little ? "II" : "MM";
    file_.assign(mark, mark + 2);
    appendShort(42);
    placeOfNextPage_ = file_.size();
    appendLong(0);
}

void TIFFWriter::addPage(const Bitmap& image, NSSize dotsPerInch) {
    const Layout layout(image);
    Strips strips = writeStrips(image);
    const bool isLZW = compression_ == NSTIFFCompressionLZW;
    std::vector<Field> fields{
        {ImageWidth, typeLong, {image.width}},
        {ImageLength, typeLong, {image.height}},
        {BitsPerSample, typeShort, std::vector<std::uint32_t>(layout.samples, image.bitsPerSample)},
        {Compression, typeShort, {static_cast<std::uint32_t>(compression_)}},
        {PhotometricInterpretation,
         typeShort,
         {image.colors == BitmapColors::RGB ? photometricRGB : blackIsZero}},
        {StripOffsets, typeLong, std::move(strips.offsets)},
        {Orientation, typeShort, {topLeft}},
        {SamplesPerPixel, typeShort, {layout.samples}},
        {RowsPerStrip, typeLong, {strips.rowsOfEach}},
        {StripByteCounts, typeLong, std::move(strips.sizesInBytes)},
        {XResolution, typeRational, rational(dotsPerInch.width)},
        {YResolution, typeRational, rational(dotsPerInch.height)},
        {PlanarConfiguration, typeShort, {chunky}},
        {ResolutionUnit, typeShort, {inch}},
    };
    if (isLZW)
        fields.push_back({Predictor, typeShort, {horizontalDifferencing}});
    if (hasAlpha(image))
        fields.push_back(
            {ExtraSamples,
             typeShort,
             {image.alpha == BitmapAlpha::premultipliedLast ? associatedAlpha : unassociatedAlpha}});

    const auto appendValues = [this](const Field& field) {
        for (const std::uint32_t value : field.values)
            field.type == typeShort ? appendShort(value) : appendLong(value);
    };
    // What does not fit into a field stands before all of them; it is of even length.
    std::vector<std::uint32_t> places;
    alignToWord();
    for (const Field& field : fields) {
        places.push_back(offset());
        if (field.sizeInBytes() > sizeOfLong)
            appendValues(field);
    }
    putLong(placeOfNextPage_, offset());
    appendShort(static_cast<std::uint32_t>(fields.size()));
    for (std::size_t index = 0; index < fields.size(); ++index) {
        const Field& field = fields[index];
        appendShort(field.tag);
        appendShort(field.type);
        appendLong(static_cast<std::uint32_t>(field.values.size() / (field.type == typeRational ? 2 : 1)));
        const std::size_t end = file_.size() + sizeOfLong;
        if (field.sizeInBytes() > sizeOfLong)
            appendLong(places[index]);
        else
            appendValues(field);
        file_.resize(end);
    }
    placeOfNextPage_ = file_.size();
    appendLong(0);
}

TIFFWriter::Strips TIFFWriter::writeStrips(const Bitmap& image) {
    const Layout layout(image);
    Strips strips;
    strips.rowsOfEach = static_cast<std::uint32_t>(
        std::clamp<std::size_t>(stripSizeInBytes / layout.bytesPerRow, 1, image.height));
    alignToWord();
    if (compression_ == NSTIFFCompressionNone)
        file_.reserve(checkedSizeInBytes(layout.bytesPerRow, image.height) + file_.size() + stripSizeInBytes);
    const std::uint32_t parts = partsFor(image, layout, compression_);
    if (parts == 1) {
        strips.append(encodeStrips(image, compression_, strips.rowsOfEach, {0, image.height}, file_));
        return strips;
    }
    const std::uint32_t stripsOfAll = (image.height + strips.rowsOfEach - 1) / strips.rowsOfEach;
    const std::uint32_t linesOfPart = (stripsOfAll + parts - 1) / parts * strips.rowsOfEach;
    struct Part {
        std::vector<std::uint8_t> bytes;
        std::vector<StripPlace> places;
    };
    std::vector<std::future<Part>> encoded;
    for (std::uint32_t line = 0; line < image.height; line += linesOfPart) {
        const LineRange lines{line, line + std::min(linesOfPart, image.height - line)};
        // In this thread, later, where no other can be had.
        encoded.push_back(
            std::async(std::launch::async | std::launch::deferred, [&image, &strips, lines, this] {
                Part part;
                part.places = encodeStrips(image, compression_, strips.rowsOfEach, lines, part.bytes);
                return part;
            }));
    }
    for (std::future<Part>& each : encoded) {
        Part part = each.get();
        alignToWord();
        for (StripPlace& place : part.places)
            place.offset += file_.size();
        strips.append(part.places);
        file_.insert(file_.end(), part.bytes.begin(), part.bytes.end());
    }
    return strips;
}

NSData TIFFWriter::takeData() {
    return NSData::dataWithBytesNoCopy(std::move(file_));
}

void TIFFWriter::appendShort(std::uint32_t number) {
    const auto held = static_cast<std::uint16_t>(number);
    file_.resize(file_.size() + sizeof held);
    std::memcpy(&file_[file_.size() - sizeof held], &held, sizeof held);
}

void TIFFWriter::appendLong(std::uint32_t number) {
    file_.resize(file_.size() + sizeof number);
    putLong(file_.size() - sizeof number, number);
}

void TIFFWriter::putLong(std::size_t at, std::uint32_t number) {
    std::memcpy(&file_[at], &number, sizeof number);
}

void TIFFWriter::alignToWord() {
    if (file_.size() % 2 != 0)
        file_.push_back(0);
}

std::uint32_t TIFFWriter::offset() const {
    return static_cast<std::uint32_t>(checkedSizeInBytes(file_.size(), 1));
}

} // namespace kelvo
