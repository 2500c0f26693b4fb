#include "platform/foundation/encodings/PlainTextReading.h"

#include "platform/foundation/encodings/NSStringEncoding.h"

#include <initializer_list>

namespace kelvo {

NSString stringWithPlainText(const NSData& data, NSStringEncoding* encoding) {
    if (data.isNil())
        return nullptr;
    if (encodingOfByteOrderMark(data.characters()) != kCFStringEncodingInvalidId)
        return stringWithMarkedData(data, encoding);
    for (const NSStringEncoding candidate : {NSUTF8StringEncoding, NSWindowsCP1252StringEncoding}) {
        *encoding = candidate;
        NSString text = stringWithData_encoding(data, candidate);
        if (!text.isNil())
            return text;
    }
    *encoding = NSISOLatin1StringEncoding;
    return NSString::stringWithLatin1Bytes(data.characters());
}

} // namespace kelvo
