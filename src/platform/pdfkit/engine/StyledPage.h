#pragma once

#include "platform/foundation/Value.h"

#include <memory>
#include <string_view>

namespace poppler {
class page;
}

namespace kelvo {

/// What the letters of a document's pages look like. The library's front that tells colours and underlines leaves
/// some text out (the values of forms, much of what runs from the right), so that its styles are put on the text of the
/// other front.
class PageStyles {
public:
    /// The bytes must outlive it.
    explicit PageStyles(std::string_view file);
    PageStyles(const PageStyles&) = delete;
    PageStyles& operator=(const PageStyles&) = delete;
    ~PageStyles();

    /// The page's text with its styles, as PDFEngineMessages.h describes it.
    Value styledText(std::u16string_view text, int index, const poppler::page& page) const;

private:
    struct Document;
    std::unique_ptr<Document> document_;
};

} // namespace kelvo
