#include "platform/imageio/CGImageSource.h"

#include "TestPictures.h"
#include "platform/imageio/CGImageDestination.h"
#include "platform/ledger/RequestNotes.h"

#include <string>
#include <vector>

namespace kelvo {
namespace {

using namespace tests;

constexpr int width = 120;
constexpr int height = 203;

/// No two rows are the same, and none is of one colour.
CGImage noise() {
    std::string pixels;
    std::uint32_t state = 1;
    for (int place = 0; place < width * height; ++place) {
        for (int channel = 0; channel < 3; ++channel) {
            state = state * 1664525 + 1013904223;
            pixels += static_cast<char>(state >> 24U);
        }
        pixels += '\xFF';
    }
    return CGImage(width, height, kCGImageAlphaNoneSkipLast, NSData::dataWithBytesNoCopy(pixels));
}

std::string fileOf(const char* format) {
    VipsImage* const whole = vips_image_new_from_memory_copy(
        noise().data().bytes().data(), noise().data().length(), width, height, 4, VIPS_FORMAT_UCHAR);
    VipsImage* image = nullptr;
    EXPECT_EQ(vips_extract_band(whole, &image, 0, "n", 3, nullptr), 0);
    g_object_unref(whole);
    VipsImage* told = nullptr;
    EXPECT_EQ(vips_copy(image, &told, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr), 0);
    g_object_unref(image);
    return saved(told, format);
}

/// Whether the first rows of both are the same.
bool begin(const CGImage& left, const CGImage& right, std::size_t rows) {
    return rows == 0 || (left.width() == right.width() &&
                         left.data().characters().substr(0, rows * left.bytesPerRow()) ==
                             right.data().characters().substr(0, rows * right.bytesPerRow()));
}

TEST(DecodedRowsTest, NoneIsCountedThatIsNotThere) {
    constexpr std::size_t most = height;
    struct Row {
        const char* name;
        std::string file;
        /// What stands behind the last pixel.
        std::size_t end;
        /// How many rows are counted at least of the first half of the file.
        std::size_t ofHalf;
    };
    const Row rows[] = {
        {"JPEG", fileOf(".jpg[Q=90,subsample_mode=off]"), 2, most / 2 - 16},
        {"JPEG with fewer colours", fileOf(".jpg[Q=80,subsample_mode=on]"), 2, most / 2 - 24},
        {"JPEG with restarts", fileOf(".jpg[Q=80,restart_interval=4]"), 2, most / 2 - 24},
        {"JPEG in passes", fileOf(".jpg[Q=80,interlace]"), 2, 0},
        {"PNG", fileOf(".png"), 12, most / 2 - 34},
        {"PNG in passes", fileOf(".png[interlace]"), 12, 0},
        {"GIF", fileOf(".gif[dither=0]"), 1, most / 2 - 8},
        {"GIF in passes", fileOf(".gif[dither=0,interlace]"), 1, 1},
        {"BMP", std::string(dataOfImage(noise(), u"com.microsoft.bmp", nullptr).characters()), 0, 0},
        {"JPEG 2000", fileOf(".jp2"), 0, 0},
        {"WebP", fileOf(".webp"), 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const CGImageSource whole = sourceOf(row.file);
        const CGImage full = CGImageSourceCreateImageAtIndex(whole, 0, nullptr);
        EXPECT_EQ(CGImageSourceCountDecodedRows(whole, 0), most);
        EXPECT_EQ(CGImageSourceCountDecodedRows(whole, 1), 0U);
        EXPECT_EQ(CGImageSourceCountDecodedRows(sourceOf(row.file.substr(0, row.file.size() - row.end)), 0),
                  most);
        EXPECT_GE(CGImageSourceCountDecodedRows(sourceOf(row.file.substr(0, row.file.size() / 2)), 0),
                  row.ofHalf);
        std::vector<std::size_t> lengths{row.file.size() - row.end - 3, row.file.size() - row.end - 40,
                                         row.file.size() - row.end - 400};
        for (std::size_t part = 1; part < 16; ++part)
            lengths.push_back(row.file.size() * part / 16);
        for (const std::size_t length : lengths) {
            const RequestNotes notes;
            const CGImageSource source = sourceOf(row.file.substr(0, length));
            const CGImage image = CGImageSourceCreateImageAtIndex(source, 0, nullptr);
            const std::size_t count = CGImageSourceCountDecodedRows(source, 0);
            EXPECT_TRUE(begin(image, full, count)) << length << " bytes: " << count << " rows";
            EXPECT_TRUE(image.isNil() || count == most || !notes.sentenceOfResult().isNil()) << length;
        }
    }
}

TEST(DecodedRowsTest, BetweenTwoPasses) {
    // All passes that are there have come to their end, and others are missing.
    const std::string file = fileOf(".jpg[Q=80,interlace]");
    std::vector<std::size_t> passes;
    for (std::size_t place = file.find("\xFF\xDA"); place != file.npos;
         place = file.find("\xFF\xDA", place + 2))
        passes.push_back(place);
    ASSERT_GT(passes.size(), 3U);
    for (const std::size_t pass : passes) {
        const CGImageSource source = sourceOf(file.substr(0, pass));
        EXPECT_EQ(CGImageSourceCountDecodedRows(source, 0), 0U) << pass;
    }
}

} // namespace
} // namespace kelvo
