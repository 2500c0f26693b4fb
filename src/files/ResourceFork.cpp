#include "files/ResourceFork.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/files/FileForks.h"

#include <optional>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

std::optional<ResourceMap> mapOfFile(const NSString& path) {
    const NSData fork = resourceForkOfFile(path);
    return fork.isNil() ? std::nullopt : ResourceMap::withFork(fork);
}

} // namespace

ResourceFork::ResourceFork(NSString path, Access access, ResourceMap map)
    : path_(std::move(path)), access_(access), map_(std::move(map)) {}

std::shared_ptr<ResourceFork> ResourceFork::resourceForkForReadingAtPath(const NSString& path) {
    auto map = mapOfFile(path);
    return map ? std::shared_ptr<ResourceFork>(new ResourceFork(path, Access::reading, *std::move(map)))
               : nullptr;
}

std::shared_ptr<ResourceFork> ResourceFork::resourceForkForWritingAtPath(const NSString& path) {
    if (!NSFileManager::defaultManager().isWritableFileAtPath(path))
        return nullptr;
    if (resourceForkOfFile(path).isNil() && !setResourceForkOfFile(path, ResourceMap().fork()))
        return nullptr;
    auto map = mapOfFile(path);
    return map ? std::shared_ptr<ResourceFork>(new ResourceFork(path, Access::writing, *std::move(map)))
               : nullptr;
}

NSString ResourceFork::className() const {
    return u"ResourceFork";
}

NSData ResourceFork::dataForType_ID(std::uint32_t type, std::int16_t ID) const {
    return map_.dataForType_ID(type, ID);
}

bool ResourceFork::change(std::uint32_t type, std::int16_t ID, const NSData& data) {
    auto now = access_ == Access::writing ? mapOfFile(path_) : std::nullopt;
    if (!now)
        return false;
    const bool isRemoved = now->removeType_ID(type, ID);
    if (!data.isNil())
        now->add({type, ID, 0, std::nullopt, data});
    else if (!isRemoved)
        return true;
    if (!setResourceForkOfFile(path_, now->fork()))
        return false;
    map_ = *std::move(now);
    return true;
}

bool ResourceFork::addData_type_ID(const NSData& data, std::uint32_t type, std::int16_t ID) {
    return !data.isNil() && change(type, ID, data);
}

bool ResourceFork::addString_type_ID(const NSString& string, std::uint32_t type, std::int16_t ID) {
    if (string.isNil() || string.length() > maximumStringLength)
        return false;
    std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(string.length())};
    // Unit by unit, so that there are as many bytes as the first one says.
    for (const char16_t unit : string.characters()) {
        const NSData byte = dataUsingEncoding_allowLossyConversion(NSString(std::u16string_view(&unit, 1)),
                                                                   NSASCIIStringEncoding, true);
        bytes.push_back(byte.length() == 1 ? byte.bytes().front() : std::uint8_t{'?'});
    }
    return addData_type_ID(NSData::dataWithBytesNoCopy(std::move(bytes)), type, ID);
}

bool ResourceFork::removeType_ID(std::uint32_t type, std::int16_t ID) {
    return (access_ == Access::reading && map_.dataForType_ID(type, ID).isNil()) || change(type, ID, nullptr);
}

} // namespace kelvo
