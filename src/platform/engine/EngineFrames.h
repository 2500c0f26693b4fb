#pragma once

#include "platform/foundation/FileIO.h"
#include "platform/foundation/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// What one frame on the socket between an EngineProcess and its EngineChannel means.
enum class EngineFrameKind : std::uint8_t {
    message = 1,
    answer = 2,
    question = 3,
    reply = 4,
    note = 5,     ///< before an answer: what the engine found out about the file
    greeting = 6, ///< once, when the engine is ready
    report = 7    ///< before an answer: a part of the result, which counts whatever becomes of the engine
};

struct EngineFrame {
    EngineFrameKind kind = EngineFrameKind::message;
    Value value;
};

/// Before the contents stand 32 bytes, numbers with their low byte first: the kind (1 byte), how many descriptors go
/// with the frame (1), flags (1), zeros (5), the length of the contents (8), and in an answer the microseconds of CPU that
/// the engine has used in all its life (8) and, where the message asked for it, the most bytes of it that were resident
/// since that (8).
///
/// The contents are a binary property list; nil has length 0. Contents above leastSealedBytes travel in sealed memory,
/// which is then the first descriptor. Data that stands on a descriptor itself travels as that: the property list is
/// then an array of the value, with empty data in such places, and of the paths to these (keys and indexes), in the
/// order of the descriptors.
struct EngineFrameHead {
    static constexpr std::size_t size = 32;
    static constexpr std::size_t mostDescriptors = 16;

    EngineFrameKind kind = EngineFrameKind::message;
    std::uint8_t descriptorCount = 0;
    bool isInMemory = false;
    bool hasPlaces = false;
    /// Of a message: how much is resident at most is to be watched.
    bool asksForPeak = false;
    std::uint64_t length = 0;
    std::uint64_t cpuMicroseconds = 0;
    std::uint64_t peakBytes = 0;

    std::string bytes() const;
    /// Absent when the bytes are no head, and when it announces what no frame has.
    static std::optional<EngineFrameHead> withBytes(std::string_view bytes);
    /// How many bytes follow it on the socket.
    std::size_t lengthOnSocket() const { return isInMemory ? 0 : static_cast<std::size_t>(length); }
};

/// A frame as it is sent.
struct EncodedEngineFrame {
    /// Throws NSException (NSInvalidArgumentException) when the value is no property list, and (NSMallocException) when
    /// there is no memory to share.
    EncodedEngineFrame(EngineFrameKind kind, const Value& value) : EncodedEngineFrame(headOf(kind), value) {}
    /// What the head says of the contents and the descriptors is filled in.
    EncodedEngineFrame(EngineFrameHead head, const Value& value);

    std::string bytes;
    /// To be sent with the first of the bytes. The data that they belong to is held by `held`.
    std::vector<int> descriptors;
    std::vector<NSData> held;

private:
    static EngineFrameHead headOf(EngineFrameKind kind) {
        EngineFrameHead head;
        head.kind = kind;
        return head;
    }
};

/// Which descriptors the receiver of a frame accepts: an engine is handed files, and hands back none.
enum class EngineFrameData : std::uint8_t {
    /// Files come as data that is read in place, and not larger than data may be.
    filesAndSealedMemory,
    /// Files come as empty data with the descriptor, whatever their length.
    openFilesAndSealedMemory,
    sealedMemory
};

/// The frame with this head, these contents (as they came on the socket) and these descriptors, as many as the head
/// says; absent when it cannot be read, or comes with a descriptor that is not accepted.
std::optional<EngineFrame> decodedEngineFrame(const EngineFrameHead& head, std::string contents,
                                              std::vector<FileDescriptor> descriptors,
                                              EngineFrameData accepted);

} // namespace kelvo
