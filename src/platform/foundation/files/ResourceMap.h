#pragma once

#include "platform/foundation/NSData.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// One stretch of bytes in a resource fork, found by its type (four characters, 'TEXT') and its number.
struct Resource {
    std::uint32_t type = 0;
    std::int16_t ID = 0;
    std::uint8_t attributes = 0;
    /// MacRoman, at most 255 bytes. A resource may have none, which is not the empty name.
    std::optional<std::string> name;
    NSData data;
};

/// The contents of a resource fork, in the order in which the fork lists them: by type, and within a type as
/// they were added.
class ResourceMap {
public:
    /// More than the format's 16-bit places let anybody list.
    static constexpr std::size_t maximumResourceCount = 65'536;

    /// A fork without resources.
    ResourceMap() = default;
    /// Absent when the map, or anything that it names, does not lie inside the fork where it should. The
    /// resources share the fork's bytes.
    static std::optional<ResourceMap> withFork(const NSData& fork);

    /// Of several with that type and number the first; nil when there is none.
    NSData dataForType_ID(std::uint32_t type, std::int16_t ID) const;
    /// All of them; whether there were any.
    bool removeType_ID(std::uint32_t type, std::int16_t ID);
    void add(Resource resource);
    const std::vector<Resource>& resources() const { return resources_; }

    /// The fork, with the attributes of the map and what the system and programs have reserved in its header
    /// as they were read. Nil when it would be larger than the format can hold.
    NSData fork() const;

private:
    std::vector<Resource> resources_;
    std::vector<std::uint8_t> reserved_;
    std::uint32_t attributes_ = 0;
};

} // namespace kelvo
