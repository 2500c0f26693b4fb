// An engine that does what it is told, for tests of the process that engines run in.

#include "platform/engine/EngineChannel.h"
#include "platform/engine/EngineFrames.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSNumber.h"

#include <csignal>
#include <cstdio>
#include <string>

#include <unistd.h>

int main() {
    using namespace kelvo;
    EngineChannel channel;
    while (const auto message = channel.nextMessage()) {
        const NSString command = message->dictionary().objectForKey(u"do").string();
        const Value& with = message->dictionary().objectForKey(u"with");
        if (command == u"echo") {
            channel.answer(with);
        } else if (command == u"ask") {
            const auto first = channel.ask(with);
            const auto second = first ? channel.ask(*first) : std::nullopt;
            channel.answer(second.value_or(Value()));
        } else if (command == u"pids") {
            // A helper of the engine's own, which does nothing but be there.
            const pid_t helper = ::fork();
            if (helper == 0) {
                for (;;)
                    ::pause();
            }
            channel.answer(NSNumber::numberWithLongLong(helper));
        } else if (command == u"environment") {
            std::string names;
            for (char** entry = environ; *entry; ++entry)
                names.append(*entry).append("\n");
            channel.answer(NSString::stringWithUTF8String(names));
        } else if (command == u"exit") {
            return 0;
        } else if (command == u"crash") {
            std::raise(SIGKILL);
        } else if (command == u"garbage") {
            ::write(channel.descriptor(), "\x63 is no frame at all", 21);
        } else if (command == u"in pieces") {
            const std::string frame = bytesOfEngineFrame(EngineFrameKind::answer, with);
            std::size_t sent = 0;
            for (const std::size_t end :
                 {std::size_t{5}, engineFrameHeadLength, frame.size() - 1, frame.size()}) {
                ::write(channel.descriptor(), frame.data() + sent, end - sent);
                ::usleep(20'000);
                sent = end;
            }
        } else if (command == u"boast") {
            // The head of an answer of 2^56 bytes.
            ::write(channel.descriptor(), "\2\0\0\0\0\0\0\0\1", 9);
            ::pause();
        } else if (command == u"hang") {
            for (;;)
                ::pause();
        }
    }
    return 0;
}
