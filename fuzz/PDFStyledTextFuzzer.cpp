// Whatever the two fronts read of a page, its styles cover its text; whatever an engine answers, it makes attributed
// text whose runs do so too, or throws.

#include "Input.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "platform/pdfkit/PDFStyledText.h"
#include "platform/pdfkit/engine/StyleAlignment.h"

using namespace kelvo;

namespace {

void requireCovered(std::u16string_view text, const StyledLetters& letters) {
    std::size_t covered = 0;
    const StyleRun* last = nullptr;
    const std::vector<StyleRun> runs = alignedStyles(text, letters);
    for (const StyleRun& run : runs) {
        require(run.length > 0 && (!last || last->style != run.style));
        covered += run.length;
        last = &run;
    }
    require(covered == text.size());
}

void readAnswer(const NSData& bytes) {
    const Value answer =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            bytes, NSPropertyListMutabilityOptions::immutable, nullptr, nullptr);
    try {
        const NSAttributedString text = attributedStringOfStyledText(answer.dictionary());
        std::size_t covered = 0;
        for (const auto& run : text.runs()) {
            require(run.range.location == covered && run.range.length > 0);
            covered += run.range.length;
        }
        require(covered == text.length());
    } catch (const NSException&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0)
        return 0;
    const NSData rest = NSData::dataWithBytes(bytes + 1, size - 1);
    if (bytes[0] % 2 == 0) {
        readAnswer(rest);
        return 0;
    }
    // The text up to a NUL, and then what the other front has read.
    const NSString both = NSString::stringByRepairingUTF8String(rest.characters());
    const std::u16string_view text = both.characters().substr(0, both.characters().find(u'\0'));
    StyledLetters letters;
    for (std::size_t place = std::min(text.size() + 1, both.length()); place < both.length();) {
        const auto style = static_cast<std::uint32_t>(place % 3);
        letters.add(characterAt(both, &place), style);
    }
    requireCovered(text, letters);
    return 0;
}
