#include "importers/text/TextImport.h"

#include "importers/text/MarkdownTitle.h"
#include "platform/filekinds/FileKind.h"
#include "platform/foundation/encodings/EncodingGuess.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo::importers {
namespace {

/// What is behind these is not kept in any encoding: none has more than four bytes for a unit, or a longer mark.
constexpr std::size_t mostBytesOfText = 4 * (mostUnitsOfText + 2);

constexpr std::string_view markOfUTF8 = "\xEF\xBB\xBF";

NSString textOf(std::string_view file) {
    if (!isText(FileContents(file)))
        return nullptr;
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
    NSStringEncoding encoding = 0;
    return stringWithTextOfAnyLanguage(NSData::dataWithBytesNoCopy(bytes, nullptr), &encoding);
}

void setTitle(Attributes& attributes, std::u16string_view text) {
    if (attributes.contentType() == "net.daringfireball.markdown")
        attributes.set("kMDItemTitle", titleOfMarkdown(text));
}

} // namespace

void importText(Attributes& attributes) {
    const std::string_view file = attributes.file().substr(0, mostBytesOfText);
    std::string_view characters = file;
    if (characters.starts_with(markOfUTF8))
        characters.remove_prefix(markOfUTF8.size());
    // Nearly all text is UTF-8, which isText takes for text when it has no NUL, and is handed on as it stands.
    if (characters.find('\0') == characters.npos && !mayBeShifted(characters) &&
        attributes.setTextOfUTF8(characters)) {
        setTitle(attributes,
                 NSString::stringByRepairingUTF8String(characters.substr(0, mostUnitsBeforeTitle)));
        return;
    }
    const NSString text = textOf(file);
    if (text.isNil()) {
        attributes.note(MDNoteUnsupported, "the file is not text");
        return;
    }
    attributes.setText(text);
    setTitle(attributes, text);
}

} // namespace kelvo::importers
