#include "ImportedFile.h"
#include "importers/archives/ArchiveImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const char* const types[] = {"public.zip-archive", "org.gnu.gnu-zip-archive"};
    if (size > 0)
        kelvo::importFuzzed(kelvo::importers::importArchive, bytes + 1, size - 1, types[bytes[0] & 1]);
    return 0;
}
