#pragma once

#include "platform/foundation/NSString.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo {

/// What a name of a type is: the digit that stands for it in dynamic identifiers.
enum class UTTagClass : char {
    filenameExtension = '1',
    typeCode = '2', ///< four characters, without apostrophes
    MIMEType = '3',
    pasteboardType = '4',
    URLScheme = '5'
};

/// What a dynamic identifier says of a type that nobody has declared.
struct DynamicType {
    struct Tag {
        UTTagClass tagClass;
        NSString value;

        friend bool operator==(const Tag&, const Tag&) = default;
    };

    /// The identifier of a type; nil when it is not said.
    NSString conformsTo;
    std::vector<Tag> tags;

    friend bool operator==(const DynamicType&, const DynamicType&) = default;
};

/// "dyn.a…": the same for the same type everywhere, so that programs that have never met agree on it. Values are
/// written as they are: an extension is to be in lower case. Bytes of file names that are not UTF-8 are kept
/// (see NSFileManager).
NSString dynamicTypeIdentifier(const DynamicType& type);
/// The other way; absent for what is no dynamic identifier, or is longer than 4096 units. Parts that are not known
/// are left out.
std::optional<DynamicType> dynamicTypeWithIdentifier(std::u16string_view identifier);

} // namespace kelvo
