#pragma once

#include "platform/foundation/FileIO.h"

#include <kj/async-io.h>
#include <kj/async-unix.h>

#include <cstddef>
#include <optional>
#include <string>

namespace kelvo {

/// A connected socket of this machine, for messages most of which are short. KJ's own streams ask the system three times
/// for a message (its head, its rest, and whether there is more) and are woken whenever the other side has read
/// something; here a message costs one call, and only what can be read wakes.
class LocalStream final : public kj::AsyncIoStream {
public:
    /// The socket does not block. The port must live as long as this.
    LocalStream(kj::UnixEventPort& port, FileDescriptor socket);

    kj::Promise<std::size_t> tryRead(void* buffer, std::size_t least, std::size_t most) override;
    kj::Promise<void> write(const void* buffer, std::size_t size) override;
    kj::Promise<void> write(kj::ArrayPtr<const kj::ArrayPtr<const kj::byte>> pieces) override;
    kj::Promise<void> whenWriteDisconnected() override { return observer_.whenWriteDisconnected(); }
    void shutdownWrite() override;
    void abortRead() override;
    void getsockopt(int level, int option, void* value, kj::uint* length) override;
    kj::Maybe<int> getFd() const override { return socket_.get(); }

    /// Ready when something has been read that nobody has taken yet, or the other side has ended.
    kj::Promise<void> whenAnythingIsRead();
    /// What that is. Taken by skipRead(), or by reading on.
    kj::ArrayPtr<const kj::byte> bytesRead() const { return read_.slice(readBegin_, readEnd_); }
    void skipRead(std::size_t size) { readBegin_ += size; }

    /// While this is set, short messages wait and go out with the next one after it.
    void setHoldsWrites(bool holds) { holdsWrites_ = holds; }

private:
    struct Unwritten;

    kj::Promise<std::size_t> readOn(kj::byte* target, std::size_t least, std::size_t most,
                                    std::size_t already);
    std::size_t takeRead(kj::byte* target, std::size_t most);
    /// As read(2), but nothing when the socket is empty, which is then waited for.
    std::optional<std::size_t> readSocket(kj::byte* target, std::size_t most);
    kj::Promise<void> writeOn(kj::Own<Unwritten> rest);

    kj::UnixEventPort& port_;
    FileDescriptor socket_;
    kj::UnixEventPort::FdObserver observer_;
    /// Set when the socket was empty at the last look; asked for then, so that nothing that comes is missed.
    std::optional<kj::Promise<void>> readable_;
    kj::Array<kj::byte> read_;
    std::size_t readBegin_ = 0;
    std::size_t readEnd_ = 0;
    bool holdsWrites_ = false;
    std::string held_;
};

} // namespace kelvo
