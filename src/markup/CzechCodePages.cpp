#include "markup/CzechCodePages.h"

#include "platform/foundation/encodings/NSStringEncoding.h"

namespace kelvo::XmlExtensions {

NSString initWithKamenickyData(const NSData& data) {
    return stringByRepairingData_encoding(data, NSKamenickyStringEncoding);
}

NSString initWithKoi8cs2Data(const NSData& data) {
    return stringByRepairingData_encoding(data, NSKOI8CS2StringEncoding);
}

} // namespace kelvo::XmlExtensions
