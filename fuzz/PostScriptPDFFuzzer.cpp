// Whatever a program does, the interpreter gives a PDF, or says why not; and it reads and writes no file.

#include "Input.h"
#include "platform/postscript/PostScriptFile.h"
#include "platform/postscript/engine/PostScriptInterpreter.h"
#include "support/TemporaryFolder.h"

using namespace kelvo;

namespace {

/// What takes long is for the limits of the process, which are not here.
constexpr std::size_t longestProgram = 4096;

const tests::TemporaryFolder& folder() {
    static const tests::TemporaryFolder made;
    return made;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size > longestProgram)
        return 0;
    const NSData data = NSData::dataWithBytes(bytes, size);
    const auto file = PostScriptFile::read(data);
    if (!file)
        return 0;
    const NSRect box = file->page();
    PostScriptPage page;
    page.left = box.origin.x;
    page.bottom = box.origin.y;
    page.width = page.boxWidth = box.size.width;
    page.height = page.boxHeight = box.size.height;
    page.hasBox = file->boundingBox.has_value();
    std::size_t notes = 0;
    PostScriptInterpreter interpreter(folder().path());
    const NSData pdf =
        interpreter.firstPage(data.characters().substr(file->program.location, file->program.length), page,
                              [&notes](Outcome, const NSString& sentence) {
                                  require(!sentence.isEmpty());
                                  ++notes;
                              });
    require(!pdf.isNil() || notes > 0);
    require(pdf.isNil() || pdf.characters().starts_with("%PDF-"));
    return 0;
}
