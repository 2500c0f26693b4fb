#pragma once

#include "platform/foundation/Value.h"
#include "platform/pdfkit/engine/PagePixels.h"

#include <cstdint>
#include <memory>

namespace kelvo {

/// The document that the engine has open; all answers are as PDFEngineMessages.h describes them.
class OpenDocument {
public:
    /// Null when the bytes are no PDF.
    static std::unique_ptr<OpenDocument> open(const NSData& data, std::int64_t number);
    OpenDocument(const OpenDocument&) = delete;
    OpenDocument& operator=(const OpenDocument&) = delete;
    ~OpenDocument();

    std::int64_t number() const noexcept { return number_; }
    NSDictionary facts() const;
    /// Nil when there is no such page.
    Value text(std::int64_t page) const;
    Value styledText(std::int64_t page);
    Value mediaBox(std::int64_t page) const;
    Value cropBox(std::int64_t page) const;
    Value sizeAsRead(std::int64_t page) const;
    /// Throws PageFailure when the page has no size that could be drawn.
    Value pixels(std::int64_t page, const PixelRequest& request) const;

private:
    struct Fronts;
    OpenDocument(NSData data, std::int64_t number, std::unique_ptr<Fronts> fronts);

    /// Read in place by the library.
    NSData data_;
    std::int64_t number_;
    std::unique_ptr<Fronts> fronts_;
};

/// Keeps what the library has read for all documents; in a process that is ready for them.
void keepPDFLibraryWarm();

} // namespace kelvo
