#pragma once

#include "platform/engine/EngineFrames.h"

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// The frames that come in on a socket, with their descriptors.
class EngineFrameReader {
public:
    enum class Event : std::uint8_t {
        some,  ///< bytes have come in
        none,  ///< nothing is there now
        ended, ///< the other side is gone
        broken ///< what has come in is no frame
    };

    explicit EngineFrameReader(EngineFrameData accepted) : accepted_(accepted) {}

    /// Reads once. `flags` as for recvmsg(2).
    Event receive(int socket, int flags);
    bool hasWholeFrame() const;
    /// Whether nothing has come in that was not taken.
    bool isEmpty() const { return bytes_.empty() && descriptors_.empty(); }
    /// Absent when it cannot be read. Only when there is a whole one.
    std::optional<EngineFrame> takeFrame();
    /// Of the frame that was taken last.
    const EngineFrameHead& lastHead() const { return lastHead_; }

private:
    Event checked();

    EngineFrameData accepted_;
    std::string bytes_;
    std::optional<EngineFrameHead> head_;
    EngineFrameHead lastHead_;
    std::vector<FileDescriptor> descriptors_;
};

/// The frames that go out on a socket.
class EngineFrameWriter {
public:
    enum class Event : std::uint8_t {
        done, ///< everything is sent
        full, ///< the socket takes no more now
        ended ///< the other side is gone
    };

    void add(EncodedEngineFrame frame) { frames_.push_back(std::move(frame)); }
    /// Sends until the socket takes no more. `flags` as for sendmsg(2).
    Event send(int socket, int flags);
    bool isEmpty() const { return frames_.empty(); }

private:
    std::deque<EncodedEngineFrame> frames_;
    /// Of the first frame.
    std::size_t sent_ = 0;
};

} // namespace kelvo
