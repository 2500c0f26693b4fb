#include "platform/foundation/files/NSHFSFileTypes.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/files/FileForks.h"

namespace kelvo {

NSString NSHFSTypeOfFile(const NSString& path) {
    if (path.isNil() || !NSFileManager::defaultManager().fileExistsAtPath(path))
        return nullptr;
    const NSData info = finderInfoOfFile(path);
    if (info.isNil())
        return NSString::string();
    NSMutableString quoted = NSMutableString::stringWithCharacters(u"'");
    quoted.appendString(stringWithData_encoding(info.subdataWithRange({0, 4}), NSMacOSRomanStringEncoding));
    quoted.appendCharacter(u'\'');
    return quoted.takeString();
}

} // namespace kelvo
