#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

/// What one frame on the socket between an EngineProcess and its EngineChannel means.
enum class EngineFrameKind : std::uint8_t { message = 1, answer = 2, question = 3, reply = 4 };

struct EngineFrame {
    EngineFrameKind kind = EngineFrameKind::message;
    Value value;
};

/// One byte of kind and eight of length, low byte first, before a binary property list; nil has length 0.
inline constexpr std::size_t engineFrameHeadLength = 9;

/// Throws NSException (NSInvalidArgumentException) when the value is no property list.
std::string bytesOfEngineFrame(EngineFrameKind kind, const Value& value);
/// The length that a frame's head announces; absent when the bytes are no head, and when it is more than one
/// message can hold.
std::optional<std::uint64_t> contentsLengthOfEngineFrame(std::string_view head);
/// The frame in these bytes, which are all of it; absent when its contents cannot be read.
std::optional<EngineFrame> engineFrameWithBytes(std::string bytes);

} // namespace kelvo
