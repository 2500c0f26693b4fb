#include "platform/appkit/PlainTextReading.h"

#include "platform/foundation/NSStringEncoding.h"

#include <array>
#include <initializer_list>
#include <string_view>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

struct Mark {
    std::string_view bytes;
    NSStringEncoding encoding;
    std::size_t unitInBytes;
};

/// UTF-32 before UTF-16, whose mark begins like it.
constexpr std::array marks{
    Mark{"\xEF\xBB\xBF"sv, NSUTF8StringEncoding, 1},  Mark{"\xFF\xFE\0\0"sv, NSUTF32StringEncoding, 4},
    Mark{"\0\0\xFE\xFF"sv, NSUTF32StringEncoding, 4}, Mark{"\xFF\xFE"sv, NSUnicodeStringEncoding, 2},
    Mark{"\xFE\xFF"sv, NSUnicodeStringEncoding, 2},
};

} // namespace

NSString stringWithPlainText(const NSData& data, NSStringEncoding* encoding) {
    if (data.isNil())
        return nullptr;
    bool hasMark = false;
    for (const Mark& mark : marks) {
        if (!data.characters().starts_with(mark.bytes))
            continue;
        hasMark = true;
        *encoding = mark.encoding;
        if (mark.unitInBytes == 1)
            return NSString::stringByRepairingUTF8String(data.characters().substr(mark.bytes.size()));
        // A file that was cut off ends within a unit.
        const std::size_t wholeUnits = data.length() - data.length() % mark.unitInBytes;
        const NSString text = stringWithData_encoding(data.subdataWithRange({0, wholeUnits}), mark.encoding);
        if (!text.isNil())
            return text;
    }
    if (hasMark)
        return nullptr;
    for (const NSStringEncoding candidate : {NSUTF8StringEncoding, NSWindowsCP1252StringEncoding}) {
        *encoding = candidate;
        const NSString text = stringWithData_encoding(data, candidate);
        if (!text.isNil())
            return text;
    }
    *encoding = NSISOLatin1StringEncoding;
    return NSString::stringWithLatin1Bytes(data.characters());
}

} // namespace kelvo
