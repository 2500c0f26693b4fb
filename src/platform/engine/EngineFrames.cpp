#include "platform/engine/EngineFrames.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

namespace kelvo {

std::string bytesOfEngineFrame(EngineFrameKind kind, const Value& value) {
    NSData contents = NSData::data();
    if (!value.isNil()) {
        NSString reason;
        contents = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
            value, NSPropertyListBinaryFormat_v1_0, &reason);
        if (contents.isNil())
            throw NSException(NSInvalidArgumentException, reason);
    }
    std::string bytes(1, static_cast<char>(kind));
    for (int shift = 0; shift < 64; shift += 8)
        bytes.push_back(static_cast<char>(contents.length() >> shift));
    bytes.append(contents.characters());
    return bytes;
}

std::optional<std::uint64_t> contentsLengthOfEngineFrame(std::string_view head) {
    if (head.size() < engineFrameHeadLength || head[0] < static_cast<char>(EngineFrameKind::message) ||
        head[0] > static_cast<char>(EngineFrameKind::reply))
        return std::nullopt;
    std::uint64_t length = 0;
    for (std::size_t i = 8; i > 0; --i)
        length = length << 8 | static_cast<unsigned char>(head[i]);
    if (length > maximumSizeInBytes - engineFrameHeadLength)
        return std::nullopt;
    return length;
}

std::optional<EngineFrame> engineFrameWithBytes(std::string bytes) {
    EngineFrame frame{static_cast<EngineFrameKind>(bytes[0]), Value()};
    if (bytes.size() == engineFrameHeadLength)
        return frame;
    const NSData whole = NSData::dataWithBytesNoCopy(std::move(bytes));
    frame.value = NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
        whole.subdataWithRange({engineFrameHeadLength, whole.length() - engineFrameHeadLength}),
        NSPropertyListMutabilityOptions::immutable, nullptr, nullptr);
    if (frame.value.isNil())
        return std::nullopt;
    return frame;
}

} // namespace kelvo
