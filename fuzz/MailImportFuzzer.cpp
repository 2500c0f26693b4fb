#include "ImportedFile.h"
#include "importers/mail/MailImport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const char* const types[] = {"com.apple.mail.email", "com.apple.mail.emlx", "com.apple.mail.mbox"};
    if (size > 0)
        kelvo::importFuzzed(kelvo::importers::importMail, bytes + 1, size - 1, types[bytes[0] % 3]);
    return 0;
}
