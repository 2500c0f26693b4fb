// Pixels as TIFF, the size of a thumbnail. The peer is libtiff, which writes the same pixels into memory.

#include "Comparison.h"
#include "platform/appkit/images/NSBitmapImageRep.h"

#include <benchmark/benchmark.h>
#include <tiffio.hxx>

#include <cmath>
#include <sstream>
#include <vector>

namespace {

using namespace kelvo;

constexpr std::uint32_t side = 256;
constexpr std::uint32_t samples = 4;

/// Soft shapes with the noise of a photograph.
const BitmapRef& picture() {
    static const BitmapRef made = [] {
        std::vector<std::uint8_t> bytes(std::size_t{side} * side * samples);
        std::uint32_t noise = 1;
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            const auto x = static_cast<double>(at / samples % side),
                       y = static_cast<double>(at / samples / side);
            noise = noise * 1664525 + 1013904223;
            const double tone =
                120 + 90 * std::sin(x / 37 + static_cast<double>(at % samples)) * std::cos(y / 23);
            bytes[at] = at % samples == samples - 1 ? 255 : static_cast<std::uint8_t>(tone + (noise >> 29));
        }
        return std::make_shared<const Bitmap>(Bitmap{side, side, 8, std::size_t{side} * samples,
                                                     BitmapColors::RGB, BitmapAlpha::last,
                                                     NSData::dataWithBytesNoCopy(std::move(bytes))});
    }();
    return made;
}

void ours(benchmark::State& state, NSTIFFCompression compression) {
    const auto rep = NSBitmapImageRep::initWithBitmap(picture());
    std::size_t size = 0;
    for (auto _ : state)
        size = rep->TIFFRepresentationUsingCompression_factor(compression, 1).length();
    state.counters["bytes"] = static_cast<double>(size);
}

void libtiff(benchmark::State& state, std::uint16_t compression) {
    std::size_t size = 0;
    for (auto _ : state) {
        std::ostringstream out;
        TIFF* const tiff = TIFFStreamOpen("memory", &out);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, side);
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, side);
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
        if (compression == COMPRESSION_LZW)
            TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 64));
        std::vector<std::uint8_t> row(std::size_t{side} * samples);
        for (std::uint32_t line = 0; line < side; ++line) {
            const auto source = picture()->data.bytes().subspan(line * row.size(), row.size());
            row.assign(source.begin(), source.end());
            TIFFWriteScanline(tiff, row.data(), line);
        }
        TIFFClose(tiff);
        size = out.str().size();
    }
    state.counters["bytes"] = static_cast<double>(size);
}

} // namespace

int main(int argc, char** argv) {
    kelvo::bench::initialize(argc, argv);
    const struct {
        const char* name;
        NSTIFFCompression compression;
    } rows[] = {{"none", NSTIFFCompressionNone},
                {"LZW", NSTIFFCompressionLZW},
                {"PackBits", NSTIFFCompressionPackBits}};
    for (const auto& row : rows) {
        benchmark::RegisterBenchmark((std::string("ours/") + row.name).c_str(), ours, row.compression)
            ->Unit(benchmark::kMicrosecond);
        benchmark::RegisterBenchmark((std::string("libtiff/") + row.name).c_str(), libtiff,
                                     static_cast<std::uint16_t>(row.compression))
            ->Unit(benchmark::kMicrosecond);
    }
    kelvo::bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    for (const auto& row : rows)
        comparison.printTimeRatio((std::string("as long as libtiff, ") + row.name).c_str(),
                                  std::string("ours/") + row.name, std::string("libtiff/") + row.name);
}
