#include "platform/engine/EngineChannel.h"

#include "platform/engine/EngineFrames.h"
#include "platform/foundation/FileIO.h"

#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace kelvo {
namespace {

constexpr std::chrono::seconds timeToExit{2};

/// Outlives whatever keeps the main thread busy.
void endWithOtherSide(int descriptor) {
    pollfd other{descriptor, POLLRDHUP, 0};
    while (::poll(&other, 1, -1) <= 0) {
    }
    std::this_thread::sleep_for(timeToExit);
    // The child leads a group of its own; where it was started by hand it may not, and ends alone.
    ::kill(::getpgrp() == ::getpid() ? 0 : ::getpid(), SIGKILL);
}

bool readAll(int descriptor, char* buffer, std::size_t length) {
    while (length > 0) {
        const ssize_t count = readSome(descriptor, buffer, length);
        if (count <= 0)
            return false;
        buffer += count;
        length -= static_cast<std::size_t>(count);
    }
    return true;
}

std::optional<Value> readFrame(int descriptor, EngineFrameKind expected) {
    std::string bytes(engineFrameHeadLength, '\0');
    if (!readAll(descriptor, bytes.data(), bytes.size()))
        return std::nullopt;
    const auto length = contentsLengthOfEngineFrame(bytes);
    if (!length)
        return std::nullopt;
    bytes.resize(engineFrameHeadLength + *length);
    if (!readAll(descriptor, bytes.data() + engineFrameHeadLength, *length))
        return std::nullopt;
    auto frame = engineFrameWithBytes(std::move(bytes));
    if (!frame || frame->kind != expected)
        return std::nullopt;
    return std::move(frame->value);
}

bool writeFrame(int descriptor, EngineFrameKind kind, const Value& value) {
    const std::string bytes = bytesOfEngineFrame(kind, value);
    return writeAll(descriptor, bytes.data(), bytes.size());
}

} // namespace

EngineChannel::EngineChannel() : descriptor_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) {
    std::signal(SIGPIPE, SIG_IGN);
    const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ::dup2(nothing.get(), STDIN_FILENO);
    std::thread(endWithOtherSide, descriptor_).detach();
}

std::optional<Value> EngineChannel::nextMessage() {
    return readFrame(descriptor_, EngineFrameKind::message);
}

bool EngineChannel::answer(const Value& result) {
    return writeFrame(descriptor_, EngineFrameKind::answer, result);
}

std::optional<Value> EngineChannel::ask(const Value& question) {
    if (!writeFrame(descriptor_, EngineFrameKind::question, question))
        return std::nullopt;
    return readFrame(descriptor_, EngineFrameKind::reply);
}

} // namespace kelvo
