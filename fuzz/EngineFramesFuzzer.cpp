// Whatever an engine writes to its socket: the frames that come of it are within their bounds, and what cannot be read
// ends the conversation. What can be is the same after another journey.

#include "Input.h"
#include "platform/engine/EngineSocket.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/SealedMemory.h"

#include <sys/socket.h>
#include <unistd.h>

using namespace kelvo;

namespace {

struct Sockets {
    Sockets() { require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0); }
    ~Sockets() {
        close(ends[0]);
        close(ends[1]);
    }
    int ends[2];
};

void checkJourney(const EngineFrame& frame) {
    const EncodedEngineFrame again(frame.kind, frame.value);
    const auto head = EngineFrameHead::withBytes(again.bytes);
    require(head && head->kind == frame.kind);
    if (head->descriptorCount > 0)
        return;
    const auto same = decodedEngineFrame(*head, again.bytes.substr(EngineFrameHead::size), {},
                                         EngineFrameData::sealedMemory);
    require(same && same->value.kind() == frame.value.kind());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    // Less than what a socket holds without a reader.
    if (size == 0 || size > 60'000)
        return 0;
    static const NSData memory = dataForOtherProcesses(std::string(100'000, 'm'));
    const Sockets sockets;
    EncodedEngineFrame sent(EngineFrameKind::answer, {});
    // The first byte says how many descriptors come along.
    sent.descriptors.assign(bytes[0] % 4, memory.descriptor());
    sent.bytes.assign(reinterpret_cast<const char*>(bytes) + 1, size - 1);
    if (sent.bytes.empty())
        return 0;
    EngineFrameWriter writer;
    writer.add(std::move(sent));
    require(writer.send(sockets.ends[0], MSG_DONTWAIT) == EngineFrameWriter::Event::done);
    shutdown(sockets.ends[0], SHUT_WR);
    EngineFrameReader reader(EngineFrameData::sealedMemory);
    for (;;) {
        while (reader.hasWholeFrame()) {
            const auto frame = reader.takeFrame();
            if (!frame)
                return 0;
            checkJourney(*frame);
        }
        if (reader.receive(sockets.ends[1], MSG_DONTWAIT) != EngineFrameReader::Event::some)
            return 0;
    }
}
