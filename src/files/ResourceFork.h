#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/files/ResourceMap.h"

#include <cstdint>
#include <memory>

namespace kelvo {

/// The resources of a file: stretches of bytes by a type of four characters ('TEXT') and a number. Where they
/// are kept tells platform/foundation/files/FileForks.h. Nothing throws: failure is nil or false.
class ResourceFork final : public NSObject {
public:
    /// The most units that addString_type_ID takes.
    static constexpr std::size_t maximumStringLength = 255;

    /// The resources as the file has them now. Nil when the file is missing or no regular file, when it has
    /// no resource fork, and when the fork is broken.
    static std::shared_ptr<ResourceFork> resourceForkForReadingAtPath(const NSString& path);
    /// The same, to be changed. A file without a fork gets an empty one. Nil also when the file may not be
    /// written to, and when that fork cannot be made: the folder lets nobody, or something else goes by the name
    /// under which it is to be kept.
    static std::shared_ptr<ResourceFork> resourceForkForWritingAtPath(const NSString& path);

    NSString className() const override;

    /// Nil when there is no such resource.
    NSData dataForType_ID(std::uint32_t type, std::int16_t ID) const;

    // Changes are made to what the file has at that time, by whomever, and are in the file when the call
    // returns; a failure leaves the file's fork as it was. Forks that are open for reading are not changed.

    /// Stores the data in place of what has that type and number, without a name. False for nil, and when the
    /// fork cannot hold that much: 16 MiB, or about 5,000 resources.
    bool addData_type_ID(const NSData& data, std::uint32_t type, std::int16_t ID);
    /// The same with a string as classic programs read it: a byte that tells the number of UTF-16 units, and
    /// for each unit one byte of ASCII, where letters have lost their diacritics and what is not in ASCII is a
    /// question mark. False for nil and for strings that are longer than maximumStringLength.
    bool addString_type_ID(const NSString& string, std::uint32_t type, std::int16_t ID);
    /// True as well when there is no such resource.
    bool removeType_ID(std::uint32_t type, std::int16_t ID);

private:
    enum class Access : bool { reading, writing };

    ResourceFork(NSString path, Access access, ResourceMap map);
    bool change(std::uint32_t type, std::int16_t ID, const NSData& data);

    NSString path_;
    Access access_;
    ResourceMap map_;
};

} // namespace kelvo
