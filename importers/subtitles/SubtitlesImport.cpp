#include "importers/subtitles/SubtitlesImport.h"

#include "importers/subtitles/Subtitles.h"
#include "importers/support/Texts.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/encodings/EncodingGuess.h"

namespace kelvo::importers {
namespace {

/// A film has a hundred kilobytes of them.
constexpr std::size_t mostBytesRead = std::size_t{64} << 20;

} // namespace

void importSubtitles(Attributes& attributes) {
    const std::string_view file = attributes.file();
    if (file.starts_with(std::string_view("\0\0\1\xBA", 4))) {
        attributes.note(MDNoteUnsupported, "the subtitles are pictures");
        return;
    }
    NSStringEncoding encoding = 0;
    const NSString text =
        stringWithTextOfAnyLanguage(NSData::dataWithBytes(file.substr(0, mostBytesRead)), &encoding);
    const auto subtitles = text.isNil() ? std::nullopt : readSubtitles(text.UTF8String());
    if (!subtitles) {
        attributes.note(MDNoteBroken, "there are no subtitles in the file");
        return;
    }
    attributes.set("kMDItemTitle", stringOf(subtitles->title));
    attributes.set("kMDItemAuthors", arrayOf({subtitles->author}));
    if (subtitles->end)
        attributes.setReal("kMDItemDurationSeconds", *subtitles->end);
    attributes.setInteger("plumwick_cues", subtitles->cues);
    attributes.setText(stringOf(subtitles->text).characters());
    if (file.size() > mostBytesRead)
        attributes.note(MDNoteIncomplete, "not all of the file is read");
}

} // namespace kelvo::importers
