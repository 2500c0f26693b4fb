#include "cli/RichTextView.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/NSTextAttachment.h"
#include "platform/appkit/rtfreader/NSTextStorage.h"

#include <span>
#include <string>
#include <string_view>

namespace kelvo::cli {

namespace {

NSString textOfRuns(std::u16string_view units, std::span<const NSAttributedString::Run> runs) {
    std::u16string shown;
    for (const auto& run : runs) {
        const auto& attachment = run.attributes->attachment;
        for (const char16_t unit : units.substr(run.range.location, run.range.length)) {
            // Equal pictures in a row are one run.
            if (attachment && unit == NSAttachmentCharacter)
                shown.append(u"[")
                    .append(attachment->fileWrapper->preferredFilename().characters())
                    .append(u"]");
            else
                shown += unit;
        }
    }
    return NSString(std::u16string_view(shown));
}

} // namespace

NSString textOfRichText(const NSData& rtfd) {
    const auto text = NSTextStorage::initWithRTFD_documentAttributes(rtfd, nullptr);
    return text ? textOfRuns(text->characters(), text->runs()) : NSString();
}

NSString textOfRichText(const NSAttributedString& text) {
    return text.isNil() ? NSString() : textOfRuns(text.string().characters(), text.runs());
}

} // namespace kelvo::cli
