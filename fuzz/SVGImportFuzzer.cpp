#include "ImportedFile.h"
#include "importers/svg/SVGImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    kelvo::importFuzzed(kelvo::importers::importSVG, bytes, size, "public.svg-image");
    return 0;
}
