// Messages as a client may send them: whatever the bytes, a dictionary is refused with an exception or comes
// out, and what comes out goes back onto the wire and reads the same.

#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnectionInternals.h"
#include "protocol/WireValues.h"

#include <capnp/message.h>
#include <capnp/serialize.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace kelvo;
    std::vector<capnp::word> words(size / sizeof(capnp::word));
    if (words.empty())
        return 0;
    std::memcpy(words.data(), data, words.size() * sizeof(capnp::word));
    capnp::ReaderOptions limits = messageLimits();
    // As much reading as the service allows would take the fuzzer too long.
    limits.traversalLimitInWords = 1 << 16;
    NSDictionary decoded;
    try {
        capnp::FlatArrayMessageReader message(kj::arrayPtr(words.data(), words.size()), limits);
        decoded = decodeDictionary(message.getRoot<wire::Dictionary>());
    } catch (const kj::Exception&) {
        return 0;
    } catch (const NSException&) {
        return 0;
    }
    capnp::MallocMessageBuilder copy;
    auto root = copy.initRoot<wire::Dictionary>();
    encodeDictionary(decoded, root);
    if (decodeDictionary(root.asReader()) != decoded)
        std::abort();
    return 0;
}
