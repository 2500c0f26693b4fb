// Whatever stands in a file, its program lies within it and what is to be seen of it has a size.

#include "Input.h"
#include "platform/postscript/PostScriptFile.h"

using namespace kelvo;

namespace {

bool isSide(float length) {
    return length > 0 && length <= PostScriptFile::longestSide;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const auto file = PostScriptFile::read(NSData::dataWithBytes(bytes, size));
    if (!file)
        return 0;
    require(file->program.length > 0 && rangeFits(file->program, size));
    require(bytes[file->program.location] == '%');
    const NSRect page = file->page();
    require(isSide(page.size.width) && isSide(page.size.height));
    require(page.origin.x >= -PostScriptFile::longestSide && page.origin.x <= PostScriptFile::longestSide);
    require(page.origin.y >= -PostScriptFile::longestSide && page.origin.y <= PostScriptFile::longestSide);
    return 0;
}
