// A whole book would hide its documents from the fuzzer behind checksums; the archive has a target of its own.

#include "ImportedFile.h"
#include "importers/epub/BookImport.h"
#include "importers/epub/BookPackage.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kelvo;
    if (size == 0)
        return 0;
    if (bytes[0] & 1) {
        importFuzzed(importers::importBook, bytes + 1, size - 1, "org.idpf.epub-container");
        return 0;
    }
    const std::string_view document(reinterpret_cast<const char*>(bytes) + 1, size - 1);
    const importers::Deadline deadline;
    if (const auto package = importers::readBookPackage(document, "a/b", deadline)) {
        for (const std::string& path : package->spine)
            require(!path.starts_with('/') && path != ".." && !path.starts_with("../"));
    }
    importers::pathOfPackage(document, deadline);
    importers::encryptedPaths(document, deadline);
    return 0;
}
