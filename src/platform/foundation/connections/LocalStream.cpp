#include "platform/foundation/connections/LocalStream.h"

#include <kj/debug.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::size_t readAtOnce = 8 << 10;
constexpr std::size_t mostHeld = 4 << 10;
constexpr std::size_t mostPieces = 64;

bool wouldBlock(int error) {
    return error == EAGAIN || error == EWOULDBLOCK;
}

/// How many bytes went out: none when there is no room.
std::size_t sendPieces(int socket, iovec* pieces, std::size_t count) {
    msghdr message{};
    message.msg_iov = pieces;
    message.msg_iovlen = std::min(count, mostPieces);
    for (;;) {
        const ssize_t sent = ::sendmsg(socket, &message, MSG_NOSIGNAL);
        if (sent >= 0)
            return static_cast<std::size_t>(sent);
        const int error = errno;
        if (error == EINTR)
            continue;
        if (wouldBlock(error))
            return 0;
        KJ_FAIL_SYSCALL("sendmsg", error);
    }
}

} // namespace

/// What the socket had no room for.
struct LocalStream::Unwritten {
    void skip(std::size_t bytes) {
        while (begin < pieces.size() && bytes >= pieces[begin].iov_len)
            bytes -= pieces[begin++].iov_len;
        if (bytes > 0) {
            pieces[begin].iov_base = static_cast<kj::byte*>(pieces[begin].iov_base) + bytes;
            pieces[begin].iov_len -= bytes;
        }
    }

    std::string held;
    std::vector<iovec> pieces;
    std::size_t begin = 0;
    /// Only while it is waited for, because every byte that the other side reads wakes it. A descriptor is watched once,
    /// so this is another one of the same socket.
    FileDescriptor watched;
    kj::Own<kj::UnixEventPort::FdObserver> room;
};

LocalStream::LocalStream(kj::UnixEventPort& port, FileDescriptor socket)
    : port_(port),
      socket_(std::move(socket)),
      observer_(port, socket_.get(), kj::UnixEventPort::FdObserver::OBSERVE_READ),
      read_(kj::heapArray<kj::byte>(readAtOnce)) {}

kj::Promise<std::size_t> LocalStream::tryRead(void* buffer, std::size_t least, std::size_t most) {
    auto* target = static_cast<kj::byte*>(buffer);
    const std::size_t taken = takeRead(target, most);
    return readOn(target + taken, least - std::min(least, taken), most - taken, taken);
}

std::size_t LocalStream::takeRead(kj::byte* target, std::size_t most) {
    const std::size_t taken = std::min(most, readEnd_ - readBegin_);
    if (taken > 0)
        std::memcpy(target, read_.begin() + readBegin_, taken);
    readBegin_ += taken;
    return taken;
}

std::optional<std::size_t> LocalStream::readSocket(kj::byte* target, std::size_t most) {
    for (;;) {
        const ssize_t got = ::read(socket_.get(), target, most);
        const int error = errno;
        if (got < 0 && error == EINTR)
            continue;
        if (got < 0 && !wouldBlock(error))
            KJ_FAIL_SYSCALL("read", error);
        // Less than there was room for is all that there was.
        if (got != 0 && got < static_cast<ssize_t>(most))
            readable_ = observer_.whenBecomesReadable();
        return got < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(got));
    }
}

kj::Promise<void> LocalStream::whenAnythingIsRead() {
    while (readBegin_ == readEnd_) {
        if (readable_) {
            kj::Promise<void> readable = kj::mv(*readable_);
            readable_.reset();
            return readable.then([this] { return whenAnythingIsRead(); });
        }
        if (const auto got = readSocket(read_.begin(), read_.size())) {
            readBegin_ = 0;
            readEnd_ = *got;
            break;
        }
    }
    return kj::READY_NOW;
}

kj::Promise<std::size_t> LocalStream::readOn(kj::byte* target, std::size_t least, std::size_t most,
                                             std::size_t already) {
    while (least > 0) {
        if (readable_) {
            kj::Promise<void> readable = kj::mv(*readable_);
            readable_.reset();
            return readable.then(
                [this, target, least, most, already] { return readOn(target, least, most, already); });
        }
        const bool isLarge = most >= read_.size();
        const auto got = isLarge ? readSocket(target, most) : readSocket(read_.begin(), read_.size());
        if (!got)
            continue;
        if (*got == 0)
            break;
        std::size_t taken = *got;
        if (!isLarge) {
            readBegin_ = 0;
            readEnd_ = taken;
            taken = takeRead(target, most);
        }
        target += taken;
        most -= taken;
        already += taken;
        least -= std::min(least, taken);
    }
    return already;
}

kj::Promise<void> LocalStream::write(const void* buffer, std::size_t size) {
    const kj::ArrayPtr<const kj::byte> piece(static_cast<const kj::byte*>(buffer), size);
    return write(kj::arrayPtr(&piece, 1));
}

kj::Promise<void> LocalStream::write(kj::ArrayPtr<const kj::ArrayPtr<const kj::byte>> pieces) {
    std::size_t size = 0;
    for (const auto piece : pieces)
        size += piece.size();
    if (holdsWrites_ && held_.size() + size <= mostHeld) {
        for (const auto piece : pieces)
            held_.append(reinterpret_cast<const char*>(piece.begin()), piece.size());
        return kj::READY_NOW;
    }
    // Most messages are few pieces and go out whole.
    std::array<iovec, 8> few;
    if (pieces.size() < few.size()) {
        std::size_t count = 0;
        few[count++] = {held_.data(), held_.size()};
        for (const auto piece : pieces)
            few[count++] = {const_cast<kj::byte*>(piece.begin()), piece.size()};
        const std::size_t sent = sendPieces(socket_.get(), few.data(), count);
        if (sent == held_.size() + size) {
            held_.clear();
            return kj::READY_NOW;
        }
        auto rest = kj::heap<Unwritten>();
        rest->held = std::exchange(held_, {});
        few[0].iov_base = rest->held.data();
        rest->pieces.assign(few.data(), few.data() + count);
        rest->skip(sent);
        return writeOn(kj::mv(rest));
    }
    auto rest = kj::heap<Unwritten>();
    rest->held = std::exchange(held_, {});
    rest->pieces.push_back({rest->held.data(), rest->held.size()});
    for (const auto piece : pieces)
        rest->pieces.push_back({const_cast<kj::byte*>(piece.begin()), piece.size()});
    rest->skip(0);
    return writeOn(kj::mv(rest));
}

kj::Promise<void> LocalStream::writeOn(kj::Own<Unwritten> rest) {
    while (rest->begin < rest->pieces.size()) {
        const std::size_t sent =
            sendPieces(socket_.get(), rest->pieces.data() + rest->begin, rest->pieces.size() - rest->begin);
        rest->skip(sent);
        if (sent > 0)
            continue;
        if (!rest->room) {
            rest->watched = FileDescriptor(::fcntl(socket_.get(), F_DUPFD_CLOEXEC, 0));
            if (!rest->watched)
                KJ_FAIL_SYSCALL("fcntl", errno);
            rest->room = kj::heap<kj::UnixEventPort::FdObserver>(
                port_, rest->watched.get(), kj::UnixEventPort::FdObserver::OBSERVE_WRITE);
        }
        return rest->room->whenBecomesWritable().then(
            [this, rest = kj::mv(rest)]() mutable { return writeOn(kj::mv(rest)); });
    }
    return kj::READY_NOW;
}

void LocalStream::shutdownWrite() {
    ::shutdown(socket_.get(), SHUT_WR);
}

void LocalStream::getsockopt(int level, int option, void* value, kj::uint* length) {
    socklen_t size = *length;
    if (::getsockopt(socket_.get(), level, option, value, &size) != 0)
        KJ_FAIL_SYSCALL("getsockopt", errno);
    *length = size;
}

void LocalStream::abortRead() {
    ::shutdown(socket_.get(), SHUT_RD);
}

} // namespace kelvo
