#include "ImportedFile.h"
#include "importers/subtitles/SubtitlesImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    kelvo::importFuzzed(kelvo::importers::importSubtitles, bytes, size, "org.w3.webvtt");
    return 0;
}
