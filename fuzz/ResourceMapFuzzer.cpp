// A fork that can be read comes out again as it was read, and takes another resource.

#include "Input.h"
#include "platform/foundation/files/ResourceMap.h"

#include <algorithm>

using namespace kelvo;

namespace {

constexpr std::uint32_t text = 0x54455854;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    auto map = ResourceMap::withFork(NSData::dataWithBytes(bytes, size));
    if (!map)
        return 0;
    const NSData written = map->fork();
    if (!written.isNil()) {
        const auto again = ResourceMap::withFork(written);
        require(again && std::ranges::equal(map->resources(), again->resources(),
                                            [](const Resource& left, const Resource& right) {
                                                return left.type == right.type && left.ID == right.ID &&
                                                       left.attributes == right.attributes &&
                                                       left.name == right.name && left.data == right.data;
                                            }));
        require(again->fork() == written);
    }
    map->removeType_ID(text, 128);
    require(map->dataForType_ID(text, 128).isNil());
    const NSData data = NSData::dataWithBytes("new");
    map->add({text, 128, 0, std::nullopt, data});
    const NSData more = map->fork();
    require(more.isNil() || ResourceMap::withFork(more)->dataForType_ID(text, 128) == data);
    return 0;
}
