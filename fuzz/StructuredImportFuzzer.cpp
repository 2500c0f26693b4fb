#include "ImportedFile.h"
#include "importers/structured/StructuredImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const char* const types[] = {"public.json", "com.apple.property-list", "public.xml", "org.opml.opml"};
    if (size > 0)
        kelvo::importFuzzed(kelvo::importers::importStructured, bytes + 1, size - 1, types[bytes[0] % 4]);
    return 0;
}
