// Whatever the bytes are (a property list, a MIME message, neither), they are an archive within its bounds or
// none, and its text is that of its documents one after the other.

#include "Input.h"
#include "markup/Html2Text.h"
#include "markup/WebArchiveSearchableText.h"
#include "markup/WebKitAdditions.h"
#include "platform/webkit/MIMEParts.h"
#include "platform/webkit/mime/MIMEMessage.h"

using namespace kelvo;

namespace {

struct Count {
    std::size_t frames = 0;
    std::size_t resources = 0;
    std::u16string text;
};

void check(const WebResource& resource) {
    require(!resource.isNil());
    require(resource.URL().isNil() || !resource.URL().scheme().isNil());
}

void walk(const WebArchive& archive, std::size_t depth, Count& count) {
    require(depth <= WebArchive::maximumFrameDepth && !archive.isNil());
    const WebResource& document = archive.mainResource();
    if (!document.isNil())
        check(document);
    const NSString source = documentSource(document);
    require(source.length() <= document.data().length() * 2 + 32);
    const NSString piece = stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(
        source, false, true, true, false);
    if (!piece.isNil())
        (count.text += u"\n\n") += isBareMarkup(piece, source) ? u"" : piece.characters();
    for (const WebResource& resource : archive.subresources())
        check(resource);
    count.resources += archive.subresources().size();
    count.frames += archive.subframeArchives().size();
    for (const WebArchive& frame : archive.subframeArchives())
        walk(frame, depth + 1, count);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    loadMIMELibrary();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData data = NSData::dataWithBytes(bytes, size);
    // Without the process that the engine is.
    const WebArchive archive = beginsLikeMIMEMessage(data)
                                   ? archiveFromMIMEParts(fieldsOfMIMEMessage(data.characters()).dictionary())
                                   : WebArchive::initWithData(data);
    NSString source;
    const NSString text = searchableTextAndSource(archive, &source);
    if (archive.isNil()) {
        require(text.isEmpty() && source.isNil() && baseURL(archive).isNil());
        return 0;
    }
    Count count;
    walk(archive, 0, count);
    require(count.frames <= WebArchive::maximumFrameCount);
    require(count.resources <= WebArchive::maximumResourceCount);
    require(text.characters() == count.text);
    require(source == documentSource(archive));
    return 0;
}
