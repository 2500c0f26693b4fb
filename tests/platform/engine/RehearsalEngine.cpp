// An engine that does what it is told, for tests of the process that engines run in.

#include "platform/engine/EngineExceptions.h"
#include "platform/engine/EngineFrames.h"
#include "platform/engine/program/EngineProgram.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/SealedMemory.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <fstream>
#include <string>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kelvo {
namespace {

void writeBytes(EngineChannel& channel, const std::string& bytes) {
    static_cast<void>(::write(channel.descriptor(), bytes.data(), bytes.size()));
}

int connectTo(int family, const sockaddr* address, socklen_t length) {
    const FileDescriptor socket(::socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return socket ? ::connect(socket.get(), address, length) : -1;
}

int connectToPath(const std::string& path, bool isAbstract) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path + (isAbstract ? 1 : 0), sizeof address.sun_path - 2);
    const std::size_t length = offsetof(sockaddr_un, sun_path) + path.size() + 1;
    return connectTo(AF_UNIX, reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(length));
}

int connectToPort(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connectTo(AF_INET, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

/// What a hostile file would have an engine do; -1 and errno when it was kept from it.
int act(const std::string& name, const std::string& with) {
    if (name == "read")
        return ::open(with.c_str(), O_RDONLY | O_CLOEXEC);
    if (name == "write")
        return ::open(with.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (name == "truncate")
        return ::truncate(with.c_str(), 0);
    if (name == "abstract")
        return connectToPath(with, true);
    if (name == "socket")
        return connectToPath(with, false);
    if (name == "port")
        return connectToPort(std::stoi(with));
    if (name == "execute") {
        char* const arguments[] = {const_cast<char*>(with.c_str()), nullptr};
        return ::execv(with.c_str(), arguments);
    }
    if (name == "kill")
        return ::kill(::getppid(), SIGUSR1);
    if (name == "mount")
        return ::mount("none", with.c_str(), "tmpfs", 0, nullptr);
    errno = EINVAL;
    return -1;
}

/// The bytes with descriptors that no head announces.
void writeWithDescriptors(EngineChannel& channel, std::string bytes, const std::vector<int>& descriptors) {
    alignas(cmsghdr) char control[CMSG_SPACE(64 * sizeof(int))] = {};
    iovec part{bytes.data(), bytes.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = CMSG_SPACE(descriptors.size() * sizeof(int));
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(descriptors.size() * sizeof(int));
    std::memcpy(CMSG_DATA(header), descriptors.data(), descriptors.size() * sizeof(int));
    ::sendmsg(channel.descriptor(), &message, 0);
}

std::string headOfAnswer(std::uint64_t length, bool isInMemory, std::uint8_t descriptors) {
    EngineFrameHead head;
    head.kind = EngineFrameKind::answer;
    head.length = length;
    head.isInMemory = isInMemory;
    head.descriptorCount = descriptors;
    return head.bytes();
}

/// As no channel does: bytes, and a length that counts them so many times.
void writeIntoReports(const std::string& bytes, std::uint32_t times) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find("/memfd:engine-reports") == line.npos || line.find(" rw-s ") == line.npos)
            continue;
        auto* const memory = reinterpret_cast<char*>(std::stoull(line, nullptr, 16));
        const std::uint32_t length = static_cast<std::uint32_t>(bytes.size()) * times;
        std::memcpy(memory + sizeof length, bytes.data(), bytes.size());
        std::memcpy(memory, &length, sizeof length);
    }
}

[[noreturn]] void sleepForEver() {
    for (;;)
        ::pause();
}

class RehearsalProgram final : public EngineProgram {
public:
    explicit RehearsalProgram(std::string behaviour) : behaviour_(std::move(behaviour)) {}

    void load() override {
        if (behaviour_ == "lacks")
            throw NSException(EngineMissingException, u"the rehearsal has no stage");
        if (behaviour_ == "dies")
            ::_exit(3);
        if (behaviour_ == "sleeps")
            sleepForEver();
    }

    void prepare(const std::string& folder) override { folder_ = folder; }

    Value answerTo(const Value& message, EngineChannel& channel) override {
        const NSDictionary fields = message.dictionary();
        const NSString command = fields.objectForKey(u"do").string();
        const Value& with = fields.objectForKey(u"with");
        const NSNumber* const number = with.numberIfAny();
        if (command == u"echo")
            return with;
        if (command == u"ask") {
            const auto first = channel.ask(with);
            const auto second = first ? channel.ask(*first) : std::nullopt;
            return second.value_or(Value());
        }
        if (command == u"report and crash") {
            channel.report(with);
            // What does not fit into the shared memory is not overtaken by what would.
            channel.report(NSString(std::u16string(50'000, u'a')));
            channel.report(NSString(std::u16string(20'000, u'b')));
            for (int part = 1; part <= 3; ++part)
                channel.report(NSNumber::numberWithInt(part));
            std::abort();
        }
        if (command == u"report") {
            channel.report(with);
            return {};
        }
        if (command == u"nonsense in reports") {
            writeIntoReports(std::string(EngineFrameHead::size, '\7'), 1);
            return {};
        }
        if (command == u"boast in reports") {
            EngineFrameHead head;
            head.kind = EngineFrameKind::report;
            head.length = static_cast<std::uint64_t>(number->longLongValue());
            writeIntoReports(head.bytes(), 0xFFFFFFFF);
            return {};
        }
        if (command == u"note") {
            channel.note(Outcome::locked, with.string());
            return {};
        }
        if (command == u"throw")
            throw NSException(NSGenericException, with.string());
        if (command == u"picture") {
            SealedMemory memory(static_cast<std::size_t>(number->longLongValue()));
            std::memset(memory.bytes().data(), 'p', memory.bytes().size());
            return memory.seal();
        }
        if (command == u"use") {
            std::string block(static_cast<std::size_t>(number->longLongValue()), 'x');
            const std::clock_t end = std::clock() + CLOCKS_PER_SEC / 50;
            while (std::clock() < end) {
            }
            return NSNumber::numberWithLongLong(block[1]);
        }
        if (command == u"grow") {
            grown_.assign(static_cast<std::size_t>(number->longLongValue()), 'x');
            return {};
        }
        if (command == u"folder")
            return NSString::stringWithUTF8String(folder_);
        if (command == u"environment") {
            std::string names;
            for (char** entry = environ; *entry; ++entry)
                names.append(*entry).append("\n");
            return NSString::stringWithUTF8String(names);
        }
        if (command == u"act") {
            const std::string name = with.array().objectAtIndex(0).string().UTF8String();
            if (act(name, with.array().objectAtIndex(1).string().UTF8String()) >= 0)
                return u"done";
            channel.note(Outcome::refused, NSString::stringWithUTF8String(::strerrorname_np(errno)));
            return {};
        }
        if (command == u"leave")
            return leaveProcesses(number->intValue());
        misbehave(command, with, channel);
        return {};
    }

private:
    /// Processes in sessions of their own, which no signal to the engine's group reaches.
    static Value leaveProcesses(int count) {
        auto processes = NSMutableArray::array();
        for (int each = 0; each < count; ++each) {
            const pid_t process = ::fork();
            if (process < 0)
                break;
            if (process == 0) {
                ::setsid();
                sleepForEver();
            }
            processes.addObject(NSNumber::numberWithLongLong(process));
        }
        return processes;
    }

    void misbehave(const NSString& command, const Value& with, EngineChannel& channel) {
        if (command == u"signal") {
            std::signal(with.numberIfAny()->intValue(), SIG_DFL);
            ::kill(::getpid(), with.numberIfAny()->intValue());
        } else if (command == u"read what is cut") {
            const std::string path = folder_ + "/cut";
            std::ofstream(path) << std::string(100'000, 'x');
            const NSData file =
                dataWithMappedFile(FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC)));
            static_cast<void>(::truncate(path.c_str(), 0));
            ::_exit(file.bytes()[50'000]);
        } else if (command == u"exit") {
            ::_exit(with.numberIfAny()->intValue());
        } else if (command == u"spin") {
            for (volatile bool isSpinning = true; isSpinning;) {
            }
        } else if (command == u"eat") {
            for (;;)
                std::memset(::operator new(64 << 20), 1, 64 << 20);
        } else if (command == u"nonsense") {
            writeBytes(channel, std::string(64, '\x63'));
        } else if (command == u"half a frame") {
            writeBytes(channel, headOfAnswer(1000, false, 0) + "half");
            ::_exit(0);
        } else if (command == u"boast") {
            writeBytes(channel, headOfAnswer(1 << 30, false, 0));
        } else if (command == u"descriptor too many") {
            writeWithDescriptors(channel, headOfAnswer(0, false, 0), {channel.descriptor()});
        } else if (command == u"too many descriptors") {
            writeWithDescriptors(channel, headOfAnswer(0, false, 0),
                                 std::vector<int>(40, channel.descriptor()));
        } else if (command == u"unsealed memory") {
            const int memory = ::memfd_create("rehearsal", MFD_CLOEXEC | MFD_ALLOW_SEALING);
            static_cast<void>(::ftruncate(memory, 100'000));
            writeWithDescriptors(channel, headOfAnswer(100'000, true, 1), {memory});
        } else if (command == u"a file for memory") {
            const std::string path = folder_ + "/file";
            std::ofstream(path) << std::string(100, 'x');
            writeWithDescriptors(channel, headOfAnswer(100, true, 1), {::open(path.c_str(), O_RDONLY)});
        } else if (command == u"answer twice") {
            channel.answer(u"first");
            channel.answer(u"second");
        } else if (command == u"in pieces") {
            const std::string frame = EncodedEngineFrame(EngineFrameKind::answer, with).bytes;
            std::size_t sent = 0;
            for (const std::size_t end :
                 {std::size_t{5}, EngineFrameHead::size, frame.size() - 1, frame.size()}) {
                writeBytes(channel, frame.substr(sent, end - sent));
                ::usleep(20'000);
                sent = end;
            }
        }
        sleepForEver();
    }

    std::string behaviour_;
    std::string folder_;
    std::string grown_;
};

} // namespace
} // namespace kelvo

int main(int argumentCount, char** arguments) {
    kelvo::RehearsalProgram program(argumentCount > 2 ? arguments[2] : "");
    return kelvo::runEngine(program, argumentCount, arguments);
}
