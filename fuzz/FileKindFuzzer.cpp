// What a file is, and the text of a plain one.

#include "Input.h"
#include "platform/filekinds/FileKind.h"
#include "platform/foundation/encodings/PlainTextReading.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
    using namespace kelvo;
    const NSData data = NSData::dataWithBytes(bytes, length);
    const FileContents contents(data.characters());
    const FileKind kind = kindOfContents(contents, u"/a/b.html");
    NSStringEncoding encoding = 0;
    const NSString text = stringWithPlainText(data, &encoding);
    // Plain text has a text, unless it is UTF-32 with numbers that are no characters.
    require(kind != FileKind::plainText || !text.isNil() || encoding == NSUTF32StringEncoding);
    require((kind != FileKind::plainText && kind != FileKind::HTML) || isText(contents));
    require(kind != FileKind::folder);
    return 0;
}
