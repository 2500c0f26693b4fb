// What kind of document a file is, and the text of a plain one.

#include "Input.h"
#include "platform/appkit/documents/DocumentKind.h"
#include "platform/appkit/documents/PlainTextReading.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
    using namespace kelvo;
    const NSData data = NSData::dataWithBytes(bytes, length);
    const DocumentKind kind = kindOfDocument(data.characters(), u"/a/b.html");
    NSStringEncoding encoding = 0;
    const NSString text = stringWithPlainText(data, &encoding);
    // Plain text has a text, but for UTF-32 that is none.
    require(kind != DocumentKind::plainText || !text.isNil() || encoding == NSUTF32StringEncoding);
    return 0;
}
