// Thumbnails of 256 pixels and the properties of images, by an engine that runs already, as the service has it. The peers,
// vipsthumbnail and ImageMagick's convert, are started for each file. Photographs may be given as arguments.
//
// Beside them the peak memory of both, for an image of 216 megapixels.

#include "Comparison.h"
#include "platform/foundation/Value.h"
#include "platform/imageio/CGImageSource.h"
#include "platform/ledger/RequestNotes.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace kelvo;

const tests::TemporaryFolder& folder() {
    static const tests::TemporaryFolder made;
    return made;
}

NSDictionary options(bool isAlwaysFromImage) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithInt(256), kCGImageSourceThumbnailMaxPixelSize},
         {NSNumber::numberWithBool(true), kCGImageSourceCreateThumbnailFromImageIfAbsent},
         {NSNumber::numberWithBool(true), kCGImageSourceCreateThumbnailWithTransform},
         {NSNumber::numberWithBool(isAlwaysFromImage), kCGImageSourceCreateThumbnailFromImageAlways}});
}

CGImageSource sourceAt(const std::string& path) {
    return CGImageSourceCreateWithData(
        NSData::dataWithContentsOfFileWhenNeeded(NSString::stringWithUTF8String(path)), {});
}

/// The file is opened anew each time: what the engine keeps of the last one is for its own next question.
void makeThumbnails(benchmark::State& state, const std::vector<std::string>& paths, bool isAlwaysFromImage,
                    bool hasProperties) {
    for (auto _ : state) {
        for (const std::string& path : paths) {
            const CGImageSource source = sourceAt(path);
            if (CGImageSourceCreateThumbnailAtIndex(source, 0, options(isAlwaysFromImage)).isNil())
                state.SkipWithError("no thumbnail");
            if (hasProperties && CGImageSourceCopyPropertiesAtIndex(source, 0, {}).isNil())
                state.SkipWithError("no properties");
        }
    }
}

void readProperties(benchmark::State& state, const std::string& path) {
    for (auto _ : state) {
        if (CGImageSourceCopyPropertiesAtIndex(sourceAt(path), 0, {}).isNil())
            state.SkipWithError("no properties");
    }
}

void runPeer(benchmark::State& state, const std::vector<std::string>& paths, const std::string& before,
             const std::string& after) {
    for (auto _ : state) {
        for (const std::string& path : paths) {
            if (std::system((before + " '" + path + "' " + after + " >/dev/null 2>&1").c_str()) != 0)
                state.SkipWithError("the command failed");
        }
    }
}

std::string peerOutput() {
    return "'" + folder().path("peer.jpg") + "'";
}

/// A picture with as much in it as a photograph has, in several formats; false where the peer cannot make it.
bool makePictures() {
    const std::string made = folder().path("");
    const std::string script =
        "cd '" + made +
        "' && vips gaussnoise n.v 6000 4000 --sigma 20 --mean 0 && vips sines a.v 6000 4000 --hfreq 3 "
        "--vfreq 5 --uchar"
        " && vips sines b.v 6000 4000 --hfreq 7 --vfreq 2 --uchar && vips zone c.v 6000 4000 --uchar"
        " && vips bandjoin 'a.v b.v c.v' d.v && vips add d.v n.v e.v && vips cast e.v f.v uchar"
        " && vips copy f.v p.v --interpretation srgb && vips jpegsave p.v p.jpg --Q 85"
        " && vips pngsave p.v p.png --compression 3 && vips webpsave p.v p.webp --Q 80 && vips tiffsave p.v "
        "p.tif"
        " && vips replicate p.v r.v 3 3 && vips jpegsave r.v huge.jpg --Q 80 && rm *.v"
        " && vipsthumbnail p.jpg -s 160 -o t.jpg && cp p.jpg e.jpg"
        " && exiftool -q -overwrite_original '-ThumbnailImage<=t.jpg' e.jpg";
    return std::system((script + " >/dev/null 2>&1").c_str()) == 0;
}

/// Of the engine for one thumbnail, in MB beyond what it had before.
void printPeak(const std::string& path) {
    const auto peakOf = [](const std::string& file) {
        const RequestNotes notes;
        CGImageSourceCreateThumbnailAtIndex(sourceAt(file), 0, options(true));
        std::uint64_t most = 0;
        for (const RequestNotes::EngineUse& use : notes.engines())
            most = std::max(most, use.peakBytes);
        return static_cast<double>(most) / 1e6;
    };
    const double idle = peakOf(folder().path("t.jpg"));
    const double most = peakOf(path);
    std::printf("%-60s %8.0f\n", "the engine's peak for 216 megapixels, MB above a small image", most - idle);
    const pid_t child = ::fork();
    if (child == 0) {
        ::execlp("vipsthumbnail", "vipsthumbnail", path.c_str(), "-s", "256", "-o",
                 folder().path("peer.jpg").c_str(), nullptr);
        ::_exit(1);
    }
    int status = 0;
    rusage used{};
    if (child > 0 && ::wait4(child, &status, 0, &used) == child && status == 0)
        std::printf("%-60s %8.0f\n", "vipsthumbnail's for the same, MB in all",
                    static_cast<double>(used.ru_maxrss) / 1e3);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    const std::vector<std::string> photographs(argv + 1, argv + argc);
    if (!makePictures()) {
        std::fprintf(stderr, "The pictures cannot be made: vips and exiftool are needed.\n");
        return 1;
    }
    const auto add = [](const std::string& name, auto function, auto... arguments) {
        benchmark::RegisterBenchmark(name.c_str(), function, arguments...)
            ->UseRealTime()
            ->MinTime(3)
            ->Unit(benchmark::kMillisecond);
    };
    const auto addAll = [&](const std::string& name, const std::vector<std::string>& paths) {
        add("ours/" + name, makeThumbnails, paths, true, false);
        add("vips/" + name, runPeer, paths, "vipsthumbnail", "-s 256 -o " + peerOutput());
    };
    const char* const formats[] = {"jpg", "png", "webp", "tif"};
    for (const std::string format : formats)
        addAll(format, {folder().path("p." + format)});
    const std::vector<std::string> embedded{folder().path("e.jpg")};
    add("ours/embedded", makeThumbnails, embedded, false, false);
    add("vips/embedded", runPeer, embedded, std::string("vipsthumbnail"), "-s 256 -o " + peerOutput());
    if (!photographs.empty()) {
        add("ours/photographs", makeThumbnails, photographs, false, true);
        add("vips/photographs", runPeer, photographs, std::string("vipsthumbnail"),
            "-s 256 -o " + peerOutput());
        add("convert/photographs", runPeer, photographs, std::string("convert"),
            "-thumbnail 256x256 " + peerOutput());
        add("properties", readProperties, photographs.front());
    }
    bench::Comparison comparison;
    benchmark::RunSpecifiedBenchmarks(&comparison);
    std::printf("\ntimes as fast as a program started for each file\n");
    for (const std::string format : formats)
        comparison.printSpeedRatio(("24 megapixels, " + format + ", vipsthumbnail").c_str(),
                                   "ours/" + format + "", "vips/" + format + "");
    comparison.printSpeedRatio("with an embedded thumbnail, vipsthumbnail", "ours/embedded", "vips/embedded");
    comparison.printSpeedRatio("the photographs, with their properties, vipsthumbnail", "ours/photographs",
                               "vips/photographs");
    comparison.printSpeedRatio("the photographs, with their properties, convert", "ours/photographs",
                               "convert/photographs");
    printPeak(folder().path("huge.jpg"));
    return 0;
}
