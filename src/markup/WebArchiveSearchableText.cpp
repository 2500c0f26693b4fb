#include "markup/WebArchiveSearchableText.h"

#include "markup/Html2Text.h"
#include "markup/WebKitAdditions.h"

#include <vector>

namespace kelvo {

namespace {

void appendTextOfSource(const NSString& source, NSMutableString& text) {
    const NSString piece = stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(
        source, false, true, true, false);
    if (piece.isNil())
        return;
    text.appendString(u"\n\n");
    if (!isBareMarkup(piece, source))
        text.appendString(piece);
}

// Depth first, without recursion.
void appendTextOfFrames(const WebArchive& archive, NSMutableString& text) {
    std::vector<const WebArchive*> open;
    const auto addFrames = [&open](const WebArchive& page) {
        for (auto frame = page.subframeArchives().rbegin(); frame != page.subframeArchives().rend(); ++frame)
            open.push_back(&*frame);
    };
    addFrames(archive);
    while (!open.empty()) {
        const WebArchive& frame = *open.back();
        open.pop_back();
        appendTextOfSource(documentSource(frame), text);
        addFrames(frame);
    }
}

} // namespace

void appendSearchableTextTo(const WebArchive& archive, NSMutableString& text) {
    appendTextOfSource(documentSource(archive), text);
    appendTextOfFrames(archive, text);
}

NSString searchableText(const WebArchive& archive) {
    return searchableTextAndSource(archive, nullptr);
}

NSString searchableTextAndSource(const WebArchive& archive, NSString* source) {
    // Decoded once, for both.
    const NSString document = documentSource(archive);
    if (source)
        *source = document;
    NSMutableString text = NSMutableString::string();
    appendTextOfSource(document, text);
    appendTextOfFrames(archive, text);
    return text.takeString();
}

namespace SearchableText {

NSString searchableTextOfFile_baseURL_source(const NSString& path, NSURL* baseURL, NSString* source) {
    const WebArchive archive = WebKitAdditions::archiveOfFile(path);
    if (baseURL)
        *baseURL = kelvo::baseURL(archive);
    if (source)
        *source = nullptr;
    return archive.isNil() ? NSString() : searchableTextAndSource(archive, source);
}

NSString searchableTextOfFile(const NSString& path) {
    return searchableTextOfFile_baseURL_source(path, nullptr, nullptr);
}

} // namespace SearchableText

} // namespace kelvo
