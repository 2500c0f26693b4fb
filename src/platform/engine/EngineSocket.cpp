#include "platform/engine/EngineSocket.h"

#include "platform/foundation/SealedMemory.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <utility>

#include <sys/socket.h>
#include <sys/uio.h>

namespace kelvo {
namespace {

constexpr std::size_t bytesPerReading = leastSealedBytes + EngineFrameHead::size;
constexpr std::size_t controlBytes = CMSG_SPACE(EngineFrameHead::mostDescriptors * sizeof(int));

} // namespace

EngineFrameReader::Event EngineFrameReader::receive(int socket, int flags) {
    char buffer[bytesPerReading];
    alignas(cmsghdr) char control[controlBytes];
    iovec part{buffer, sizeof buffer};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    ssize_t count = 0;
    do
        count = ::recvmsg(socket, &message, flags | MSG_CMSG_CLOEXEC);
    while (count < 0 && errno == EINTR);
    if (count < 0)
        return errno == EAGAIN ? Event::none : Event::ended;
    for (cmsghdr* each = CMSG_FIRSTHDR(&message); each; each = CMSG_NXTHDR(&message, each)) {
        if (each->cmsg_level != SOL_SOCKET || each->cmsg_type != SCM_RIGHTS)
            continue;
        const std::size_t number = (each->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t index = 0; index < number; ++index) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(each) + index * sizeof(int), sizeof descriptor);
            descriptors_.emplace_back(descriptor);
        }
    }
    if (count == 0)
        return Event::ended;
    // More of them than any frame has, in one piece or little by little.
    if ((message.msg_flags & MSG_CTRUNC) != 0 || descriptors_.size() > EngineFrameHead::mostDescriptors)
        return Event::broken;
    bytes_.append(buffer, static_cast<std::size_t>(count));
    return checked();
}

EngineFrameReader::Event EngineFrameReader::checked() {
    if (!head_ && bytes_.size() >= EngineFrameHead::size) {
        head_ = EngineFrameHead::withBytes(bytes_);
        if (!head_)
            return Event::broken;
    }
    return Event::some;
}

bool EngineFrameReader::hasWholeFrame() const {
    return head_ && bytes_.size() - EngineFrameHead::size >= head_->lengthOnSocket();
}

std::optional<EngineFrame> EngineFrameReader::takeFrame() {
    lastHead_ = *std::exchange(head_, std::nullopt);
    const std::size_t end = EngineFrameHead::size + lastHead_.lengthOnSocket();
    std::string contents = bytes_.substr(EngineFrameHead::size, lastHead_.lengthOnSocket());
    bytes_.erase(0, end);
    // They come with the first bytes of their frame, so that none may be missing now, or belong to nothing.
    if (descriptors_.size() < lastHead_.descriptorCount ||
        (bytes_.empty() && descriptors_.size() > lastHead_.descriptorCount))
        return std::nullopt;
    const auto last = descriptors_.begin() + lastHead_.descriptorCount;
    std::vector<FileDescriptor> own(std::move_iterator(descriptors_.begin()), std::move_iterator(last));
    descriptors_.erase(descriptors_.begin(), last);
    if (checked() == Event::broken)
        return std::nullopt;
    return decodedEngineFrame(lastHead_, std::move(contents), std::move(own), accepted_);
}

EngineFrameWriter::Event EngineFrameWriter::send(int socket, int flags) {
    while (!frames_.empty()) {
        EncodedEngineFrame& frame = frames_.front();
        alignas(cmsghdr) char control[controlBytes];
        iovec part{frame.bytes.data() + sent_, frame.bytes.size() - sent_};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        if (sent_ == 0 && !frame.descriptors.empty()) {
            const std::size_t length = frame.descriptors.size() * sizeof(int);
            message.msg_control = control;
            message.msg_controllen = CMSG_SPACE(length);
            std::memset(control, 0, sizeof control);
            cmsghdr* const header = CMSG_FIRSTHDR(&message);
            header->cmsg_level = SOL_SOCKET;
            header->cmsg_type = SCM_RIGHTS;
            header->cmsg_len = CMSG_LEN(length);
            std::memcpy(CMSG_DATA(header), frame.descriptors.data(), length);
        }
        const ssize_t count = ::sendmsg(socket, &message, flags | MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0) {
            if (errno == EAGAIN)
                return Event::full;
            frames_.clear();
            sent_ = 0;
            return Event::ended;
        }
        sent_ += static_cast<std::size_t>(count);
        if (sent_ == frame.bytes.size()) {
            frames_.pop_front();
            sent_ = 0;
        }
    }
    return Event::done;
}

} // namespace kelvo
