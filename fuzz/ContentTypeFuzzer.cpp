// The type of a file by its contents, by the rules of the system and by rules that are the input itself; identifiers
// of types.

#include "Input.h"
#include "platform/launchservices/ContentSniffing.h"
#include "platform/launchservices/DynamicType.h"
#include "platform/launchservices/UTType.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
    using namespace kelvo;
    const std::string_view input(reinterpret_cast<const char*>(bytes), length);
    const NSString type = typeOfContents(FileContents(input), MIMEDatabase::system());
    require(type.isNil() || UTTypeConformsTo(type, u"public.item") ||
            UTTypeConformsTo(type, u"public.content"));
    require(type != u"public.data" && type != u"public.text" && type != u"public.plain-text");
    require(!UTTypeConformsTo(type, u"public.directory"));

    const MIMEMagic magic(input, 0);
    magic.typeOfBytes(input.substr(input.size() / 2));

    const NSString identifier = NSString::stringWithLatin1Bytes(input);
    // Signs that need not be escaped are when they are written again, which takes more.
    if (const auto dynamic = dynamicTypeWithIdentifier(identifier); dynamic && length < 1024)
        require(dynamicTypeWithIdentifier(dynamicTypeIdentifier(*dynamic)) == dynamic);
    UTTypeConformsTo(identifier, u"public.item");
    return 0;
}
