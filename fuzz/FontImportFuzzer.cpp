#include "ImportedFile.h"
#include "importers/fonts/FontImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    kelvo::importFuzzed(kelvo::importers::importFont, bytes, size, "public.font");
    return 0;
}
