#include "pdf/PDFDocumentConversion.h"

#include "platform/foundation/NSAutoreleasePool.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/ledger/RequestNotes.h"
#include "text/StringNormalization.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <limits>
#include <utility>

namespace kelvo {
namespace {

constexpr unsigned logOfUnitsPerPage = 11;
/// A count comes from the file; what is never written costs addresses all the same.
constexpr std::size_t mostPagesReserved = std::size_t{1} << 14;

double monotonicSeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// "page 3 of 5"
NSString nameOfPage(std::size_t index, std::size_t pageCount) {
    return stringWithFormat(u"page %ld of %ld", static_cast<long>(index + 1), static_cast<long>(pageCount));
}

} // namespace

void PageWalk::walk(const TakePage& takePage) const {
    const bool hasClock = budget > 0;
    const double start = hasClock ? clock() : 0;
    for (std::size_t index = 0; index < pageCount; ++index) {
        const double pageStart = hasClock ? clock() : 0;
        try {
            const NSAutoreleasePool pool;
            const double left =
                hasClock ? budget - (pageStart - start) : std::numeric_limits<double>::infinity();
            NSMutableString fixed = NSMutableString::string();
            if (const NSString page = textOfPage(index, left); !page.isEmpty()) {
                fixed = NSMutableString(page);
                fixAndNormalizeString(fixed);
            }
            takePage(index, fixed.takeString());
        } catch (const std::exception&) {
            noteOutcome(Outcome::answered,
                        stringWithFormat(u"the text of %@ is missing", nameOfPage(index, pageCount)));
            takePage(index, nullptr);
        }
        if (!hasClock)
            continue;
        const double now = clock();
        if ((now - start) + (now - pageStart) >= budget) {
            if (index + 1 < pageCount)
                noteOutcome(Outcome::answered, stringWithFormat(u"there was no time for the text after %@",
                                                                nameOfPage(index, pageCount)));
            break;
        }
    }
}

NSString PageWalk::text() const {
    if (pageCount == 0)
        return nullptr;
    auto text =
        NSMutableString::stringWithCapacity(std::min(pageCount, mostPagesReserved) << logOfUnitsPerPage);
    walk([&text](std::size_t, const NSString& page) {
        if (page.isEmpty())
            return;
        text.appendString(page);
        text.appendString(u"\n");
    });
    return text.takeString();
}

PageWalk walkOfPages(const PDFDocument& document, double seconds) {
    PageWalk walk;
    walk.pageCount = document.pageCount();
    walk.budget = seconds;
    walk.clock = monotonicSeconds;
    walk.textOfPage = [document, seconds, start = monotonicSeconds(),
                       isOver = false](std::size_t page, double secondsLeft) mutable -> NSString {
        if (seconds <= 0)
            secondsLeft = secondsOfUnlimitedWalk - (monotonicSeconds() - start);
        if (secondsLeft > 0)
            return document.pageAtIndex(page).stringUsingTimeout(secondsLeft);
        if (!std::exchange(isOver, true))
            noteOutcome(Outcome::answered, stringWithFormat(u"there was no time for the text from %@ on",
                                                            nameOfPage(page, document.pageCount())));
        return nullptr;
    };
    return walk;
}

NSString fixedAndNormalizedStringUsingTimeout(const PDFDocument& document, double seconds) {
    return walkOfPages(document, seconds).text();
}

NSString fixedAndNormalizedString(const PDFDocument& document) {
    return fixedAndNormalizedStringUsingTimeout(document, 0);
}

} // namespace kelvo
