#include "text/StringEncodingSetting.h"

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/encodings/NSStringEncoding.h"

#include <string_view>

namespace kelvo::NSStringKelvoExtensions {

NSStringEncoding defaultEncodingSetting = NSUTF8StringEncoding;

NSString initWithNullTerminatedCString_encoding(const char* bytes, NSStringEncoding encoding) {
    if (!bytes)
        return nullptr;
    try {
        return stringWithData_encoding(NSData::dataWithBytes(std::string_view(bytes)), encoding);
    } catch (const NSException&) {
        return nullptr;
    }
}

} // namespace kelvo::NSStringKelvoExtensions
