#include "importers/pages/PageImport.h"

#include "importers/pages/PageFacts.h"
#include "importers/pages/PageSource.h"
#include "importers/pages/PageText.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/PlainTextReading.h"
#include "platform/webkit/MIMEParts.h"
#include "platform/webkit/PropertyListArchive.h"
#include "platform/webkit/mime/MIMEMessage.h"
#include "url/URLUtilities.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {
namespace {

using Clock = std::chrono::steady_clock;

/// Pages that are anything have no NUL at their beginning, unless it is UTF-16 with a mark.
constexpr std::size_t bytesWithoutNUL = 1024;

NSData dataOf(std::string_view bytes) {
    return NSData::dataWithBytesNoCopy(
        std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), nullptr);
}

class ArchiveReading {
public:
    explicit ArchiveReading(Clock::time_point deadline) : deadline_(deadline) {}

    /// The page first, then its frames, each before those within it.
    void read(const WebArchive& archive) {
        std::vector<const WebArchive*> open{&archive};
        while (!open.empty()) {
            if (text_.size() > mostUnitsOfText || Clock::now() > deadline_) {
                isWhole_ = false;
                return;
            }
            const WebArchive& page = *open.back();
            open.pop_back();
            append(textOfDocument(page.mainResource(), &page == &archive ? &facts_ : nullptr));
            const auto& frames = page.subframeArchives();
            std::transform(frames.rbegin(), frames.rend(), std::back_inserter(open),
                           [](const WebArchive& frame) { return &frame; });
        }
    }

    void setAttributes(Attributes& attributes) const {
        facts_.setAttributes(attributes);
        attributes.setText(text_);
        if (!isWhole_)
            attributes.note(MDNoteIncomplete, "not all of the page is read");
    }

private:
    /// Empty for pictures and the like.
    std::u16string textOfDocument(const WebResource& document, PageFacts* facts) {
        const NSString type = document.MIMEType();
        if (!isMarkupMIMEType(type))
            return {};
        const bool isPlain = type == u"text/plain";
        NSStringEncoding encoding = 0;
        const NSString source = isPlain && document.textEncodingName().isEmpty()
                                    ? stringWithPlainText(document.data(), &encoding)
                                    : sourceOfMarkup(document);
        if (isPlain)
            return std::u16string(source.characters());
        isWhole_ = isWhole_ && source.length() <= mostUnitsOfPage;
        return textOfPage(source, facts);
    }

    void append(std::u16string_view piece) {
        if (!piece.empty() && !text_.empty())
            text_ += u"\n\n";
        text_ += piece;
    }

    Clock::time_point deadline_;
    PageFacts facts_;
    std::u16string text_;
    bool isWhole_ = true;
};

void importArchive(Attributes& attributes, const WebArchive& archive, Clock::time_point deadline) {
    ArchiveReading reading(deadline);
    reading.read(archive);
    reading.setAttributes(attributes);
}

WebArchive archiveOf(std::string_view file) {
    const NSData data = dataOf(file);
    if (!beginsLikeMIMEMessage(data))
        return archiveFromPropertyList(data);
    static const bool isLoaded = (loadMIMELibrary(), true);
    return isLoaded ? archiveFromMIMEParts(fieldsOfMIMEMessage(file).dictionary()) : WebArchive();
}

void setOrigin(Attributes& attributes, const NSURL& origin) {
    const NSString scheme = origin.scheme();
    if (scheme != u"http" && scheme != u"https" && scheme != u"ftp")
        return;
    attributes.set("kMDItemURL", origin.absoluteString());
    attributes.set("kMDItemWhereFroms", NSArray::arrayWithObjects({origin.absoluteString()}));
}

} // namespace

void importPage(Attributes& attributes) {
    const auto deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(mostSecondsOfImport));
    const std::string_view file = attributes.file();
    if (attributes.contentType() == "public.html" || attributes.contentType() == "public.xhtml") {
        const WebResource page(dataOf(file), nullptr, u"text/html", nullptr, nullptr);
        if (page._stringValue().isNil() && file.substr(0, bytesWithoutNUL).find('\0') != file.npos)
            attributes.note(MDNoteBroken, "the file is not a page");
        else
            importArchive(attributes, WebArchive(page, {}, {}), deadline);
        return;
    }
    const WebArchive archive = archiveOf(file);
    if (archive.isNil()) {
        attributes.note(MDNoteBroken, "there is no page in the file");
        return;
    }
    setOrigin(attributes, archive.mainResource().URL());
    importArchive(attributes, archive, deadline);
}

} // namespace kelvo::importers
