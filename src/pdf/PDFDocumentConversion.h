#pragma once

#include "platform/foundation/NSString.h"
#include "platform/pdfkit/PDFDocument.h"

#include <cstddef>
#include <functional>

namespace kelvo {

// PDFDocument (Conversion): the text of a document, page by page.

/// The text of all pages that have some, each repaired and normalised as fixAndNormalizeString does it, and each with
/// "\n" after it. A page that fails is passed over. Nil for a document without pages.
///
/// The pages are read until the time since the beginning and the time that the last page took make up the budget
/// together; that page is kept. What is left of the budget when a page begins is the time it may take: then the engine
/// is ended, and the page has failed. A budget of 0 or less is no limit for the walk; what cannot be read within
/// secondsOfUnlimitedWalk is passed over all the same, so that who waits 15 s for it gets what there is by then.
///
/// What is missing from the text for such a reason is noted with the current request.
NSString fixedAndNormalizedStringUsingTimeout(const PDFDocument& document, double seconds);
/// Without a limit.
NSString fixedAndNormalizedString(const PDFDocument& document);

inline constexpr double secondsOfUnlimitedWalk = 12;
/// The budget of those who want the text of a whole document.
inline constexpr double secondsForPages = 60;

/// What is noted with a request for the text of a document that is locked.
inline constexpr const char16_t* sentenceOfLockedPDF = u"the document is encrypted, and its text is missing";

/// The walk itself, for any pages and any clock.
struct PageWalk {
    /// Gets a page that was walked, repaired and normalised: empty when it has no text, nil when it failed. What it
    /// throws of a text fails the page; of nil it must not throw.
    using TakePage = std::function<void(std::size_t page, const NSString& text)>;

    std::size_t pageCount = 0;
    /// In seconds.
    double budget = 0;
    /// The text of a page within the seconds that are left, infinite without a budget. What it throws fails the page.
    std::function<NSString(std::size_t page, double secondsLeft)> textOfPage;
    /// Seconds from any beginning; not asked without a budget.
    std::function<double()> clock;

    /// Takes the pages one by one, in their order.
    void walk(const TakePage& takePage) const;
    /// What fixedAndNormalizedStringUsingTimeout makes of them.
    NSString text() const;
};

/// That of the document, whose time begins now.
PageWalk walkOfPages(const PDFDocument& document, double seconds);

} // namespace kelvo
