#include "platform/pdfkit/PDFDocument.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/pdfkit/PDFEngine.h"
#include "platform/pdfkit/PDFStyledText.h"

#include <array>
#include <chrono>
#include <utility>

namespace kelvo {
namespace {

using namespace pdfengine;
using Clock = std::chrono::steady_clock;

/// Opening reads where the parts of the file are, and in a damaged file looks for them.
constexpr double secondsToOpen = 10;
constexpr double secondsForBox = 5;

std::int64_t nextNumber() {
    static std::int64_t number = 0;
    return ++number;
}

/// All 0 when they are not so many.
template <std::size_t count>
std::array<float, count> numbersIn(const NSArray& array) {
    std::array<float, count> numbers{};
    if (array.count() != count)
        return numbers;
    for (std::size_t index = 0; index < count; ++index) {
        if (const NSNumber* const number = array.objectAtIndex(index).numberIfAny())
            numbers[index] = number->floatValue();
    }
    return numbers;
}

} // namespace

NSString PDFPage::stringUsingTimeout(double seconds) const {
    const NSString text = PDFEngine::sharedEngine().read(*document_, Want::text, index_, seconds).string();
    return text.isEmpty() ? NSString() : text;
}

NSRect PDFPage::boundsForBox(PDFDisplayBox box) const {
    const Want want = box == kPDFDisplayBoxCropBox ? Want::cropBox : Want::mediaBox;
    const auto [x, y, width, height] =
        numbersIn<4>(PDFEngine::sharedEngine().read(*document_, want, index_, secondsForBox).array());
    return {{x, y}, {width, height}};
}

NSSize PDFPage::sizeAsRead() const {
    const auto [width, height] = numbersIn<2>(
        PDFEngine::sharedEngine().read(*document_, Want::sizeAsRead, index_, secondsForBox).array());
    return {width, height};
}

CGImage PDFPage::imageOfSizeUsingTimeout(std::size_t width, std::size_t height, PDFPageGround ground,
                                         double seconds) const {
    if (width == 0 || height == 0 || document_->isLocked)
        return {};
    if (height > mostPixelsOfPage / width) {
        noteOutcome(Outcome::outOfMemory, u"the picture would have more pixels than are drawn");
        return {};
    }
    const bool isTransparent = ground == PDFPageGround::transparent;
    const Value answer = PDFEngine::sharedEngine().read(
        *document_, Want::pixels, index_, seconds,
        NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSNumber::numberWithLongLong(static_cast<std::int64_t>(width)), widthKey},
             {NSNumber::numberWithLongLong(static_cast<std::int64_t>(height)), heightKey},
             {NSNumber::numberWithBool(isTransparent), transparentKey}}));
    return CGImage(width, height, isTransparent ? kCGImageAlphaLast : kCGImageAlphaNoneSkipLast,
                   answer.data());
}

NSAttributedString PDFSelection::attributedStringUsingTimeout(double seconds) const {
    if (!document_ || document_->isLocked)
        return nullptr;
    const Clock::time_point start = Clock::now();
    NSMutableAttributedString whole;
    for (std::size_t page = 0; page < document_->pageCount; ++page) {
        const double left = seconds - std::chrono::duration<double>(Clock::now() - start).count();
        if (left <= 0) {
            noteOutcome(Outcome::answered, stringWithFormat(u"there was no time for the text from page %d on",
                                                            static_cast<int>(page + 1)));
            break;
        }
        NSAttributedString text;
        try {
            const Value answer = PDFEngine::sharedEngine().read(*document_, Want::styledText, page, left);
            if (!answer.isNil())
                text = attributedStringOfStyledText(answer.dictionary());
        } catch (const NSException&) {
            noteOutcome(Outcome::answered,
                        stringWithFormat(u"the text of page %d is missing", static_cast<int>(page + 1)));
        }
        if (text.isNil())
            continue;
        if (whole.length() > 0)
            whole.append(u"\f", whole.runs().back().attributes);
        whole.append(text);
    }
    return whole.length() > 0 ? std::move(whole).copy() : NSAttributedString();
}

PDFDocument PDFDocument::initWithData(const NSData& data) {
    PDFDocument document;
    if (data.isNil())
        return document;
    auto open = std::make_shared<OpenPDF>();
    open->number = nextNumber();
    try {
        // Made for sharing once, and not each time that an engine is given it.
        open->data = data.descriptor() < 0 && data.length() >= leastSealedBytes
                         ? dataForOtherProcesses(data.characters())
                         : data;
        const NSDictionary facts = PDFEngine::sharedEngine().open(*open, secondsToOpen);
        if (facts.isNil()) {
            noteOutcome(Outcome::broken, u"it is no PDF, or too damaged to be opened");
            return document;
        }
        const NSNumber* const isLocked = facts.objectForKey(lockedKey).numberIfAny();
        const NSNumber* const pageCount = facts.objectForKey(pageCountKey).numberIfAny();
        open->isLocked = isLocked && isLocked->boolValue();
        open->pageCount =
            pageCount && pageCount->intValue() > 0 ? static_cast<std::size_t>(pageCount->intValue()) : 0;
        open->attributes = facts.objectForKey(attributesKey).dictionary();
    } catch (const NSException&) {
        // What became of the engine is noted.
        return document;
    }
    document.open_ = std::move(open);
    return document;
}

NSDictionary PDFDocument::documentAttributes() const {
    return open_ ? open_->attributes : NSDictionary();
}

bool PDFDocument::isLocked() const noexcept {
    return open_ && open_->isLocked;
}

std::size_t PDFDocument::pageCount() const noexcept {
    return open_ ? open_->pageCount : 0;
}

PDFPage PDFDocument::pageAtIndex(std::size_t index) const {
    if (index >= pageCount())
        throw NSException(NSRangeException, u"The document has no such page.");
    return PDFPage(open_, index);
}

} // namespace kelvo
