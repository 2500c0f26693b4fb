#include "platform/foundation/encodings/CFStringNormalization.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/units/OrderScan.h"
#include "platform/foundation/units/UnitScan.h"
#include "platform/foundation/units/VectorScan.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

// Units that stand in text of the form as they are and do not act on what follows but as the base of a mark;
// most text holds nothing else, and a vector scan passes over it. Not all such units: a range costs time.
std::span<const UnitRange> inertUnits(CFStringNormalizationForm form) {
    static constexpr UnitRange composed[] = {
        {0x0000, 0x0300},          // Latin
        {0x0388, 0x0483 - 0x0388}, // Greek, Cyrillic
        {0x2010, 0x20D0 - 0x2010}, // punctuation, currency
        {0x3000, 0x302A - 0x3000}, // East Asian punctuation
        {0x3041, 0x3099 - 0x3041}, // Hiragana
        {0x309B, 0xA66F - 0x309B}, // Katakana, ideographs, Yi, Vai
        {0xAC00, 0xD7A4 - 0xAC00}, // Hangul syllables
        {0xFF00, 0xFFFF - 0xFF00}, // half-width and full-width forms
    };
    static constexpr UnitRange decomposed[] = {{0x0000, 0x00C0}};
    static constexpr UnitRange compatible[] = {{0x0000, 0x00A0}};
    switch (form) {
    case CFStringNormalizationForm::C:
        return composed;
    case CFStringNormalizationForm::D:
        return decomposed;
    default:
        return compatible;
    }
}

const UNormalizer2* normalizerFor(CFStringNormalizationForm form) {
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* normalizer = nullptr;
    switch (form) {
    case CFStringNormalizationForm::D:
        normalizer = unorm2_getNFDInstance(&status);
        break;
    case CFStringNormalizationForm::KD:
        normalizer = unorm2_getNFKDInstance(&status);
        break;
    case CFStringNormalizationForm::C:
        normalizer = unorm2_getNFCInstance(&status);
        break;
    case CFStringNormalizationForm::KC:
        normalizer = unorm2_getNFKCInstance(&status);
        break;
    }
    if (U_FAILURE(status))
        throw NSException(NSGenericException, u"The normalisation data cannot be loaded.");
    return normalizer;
}

/// Of form C: the units of NFC_Quick_Check=Yes and class 0, which no mark before or after them changes, those of
/// NFC_Quick_Check=Yes, and the classes. Surrogates and private use are in neither bitmap.
struct ComposedUnits {
    ComposedUnits() {
        for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
            // Most of the plane are syllables and ideographs, about which there is nothing to ask.
            const bool isEast = (unit >= 0x3400 && unit < 0xA000) || (unit >= 0xAC00 && unit < 0xD7A4);
            const bool isYes =
                isEast ||
                (u_charType(static_cast<UChar32>(unit)) != U_PRIVATE_USE_CHAR && !U_IS_SURROGATE(unit) &&
                 u_getIntPropertyValue(static_cast<UChar32>(unit), UCHAR_NFC_QUICK_CHECK) == UNORM_YES);
            const std::uint8_t ownClass = isEast ? 0 : u_getCombiningClass(static_cast<UChar32>(unit));
            const auto bit = static_cast<std::uint8_t>(1u << (unit & 7));
            classes[unit] = ownClass;
            if (isYes)
                allowed[unit >> 3] |= bit;
            if (isYes && ownClass == 0)
                plain[unit >> 3] |= bit;
        }
    }

    static const ComposedUnits& shared() {
        static const auto& units = *new ComposedUnits;
        return units;
    }
    bool isPlain(char16_t unit) const { return unitIsInBitmap(plain.data(), unit); }

    /// Marks in the order of their classes, and what might join the unit before but does not.
    static bool isInOrder(char16_t previous, char16_t unit) {
        const ComposedUnits& own = shared();
        if (unitIsInBitmap(own.allowed.data(), unit))
            return own.classes[previous] <= own.classes[unit];
        // Few pairs come again and again.
        static std::array<std::atomic<std::uint32_t>, 64> separate{};
        const std::uint32_t pair = static_cast<std::uint32_t>(previous) << 16 | unit;
        std::atomic<std::uint32_t>& known = separate[(previous * 7u + unit) % separate.size()];
        if (known.load(std::memory_order_relaxed) == pair)
            return true;
        // Further back, or within the one before, there might be a letter that it joins.
        if (!own.isPlain(previous) || U_IS_SURROGATE(unit) || u_charType(unit) == U_PRIVATE_USE_CHAR ||
            u_getIntPropertyValue(previous, UCHAR_TRAIL_CANONICAL_COMBINING_CLASS) != 0 ||
            u_getIntPropertyValue(unit, UCHAR_NFC_QUICK_CHECK) != UNORM_MAYBE ||
            unorm2_composePair(normalizerFor(CFStringNormalizationForm::C), previous, unit) >= 0)
            return false;
        known.store(pair, std::memory_order_relaxed);
        return true;
    }

    std::array<std::uint8_t, 8192> plain{}, allowed{};
    std::array<std::uint8_t, 65536> classes{};
};

/// A beginning that is in form C whatever follows, but that a mark which follows may join its last unit; ends with a
/// plain unit, or with the text.
std::size_t lengthOfComposedPrefix(std::u16string_view units) {
    const std::span<const UnitRange> inert = inertUnits(CFStringNormalizationForm::C);
    std::size_t length = lengthOfPrefixInRanges(units, inert);
    if (length == units.size())
        return length;
    const ComposedUnits& composed = ComposedUnits::shared();
    const OrderOfUnits order{composed.plain.data(), composed.allowed.data(), &ComposedUnits::isInOrder};
    while (length < units.size()) {
        std::size_t next = firstOutOfOrder(units, length, order);
        if (next == length) {
            const char16_t previous = length > 0 ? units[length - 1] : u'\0';
            const bool stands =
                composed.isPlain(units[length]) ||
                (composed.isPlain(previous) && unitIsInBitmap(composed.allowed.data(), units[length]));
            if (!stands && !ComposedUnits::isInOrder(previous, units[length]))
                break;
            ++next;
        }
        length = next + lengthOfPrefixInRanges(units.substr(next), inert);
    }
    if (length < units.size())
        while (length > 0 && !composed.isPlain(units[length - 1]))
            --length;
    return length;
}

// A run of marks, and where it lies. ICU puts each mark at its place by walking back over the marks before
// it, which takes quadratic time over a long unsorted run; such runs are sorted here first.
constexpr std::size_t longRunLength = 64;

struct MarkRun {
    std::size_t start = 0;
    std::size_t end = 0;
};

std::uint8_t leadingClass(const UNormalizer2* normalizer, UChar32 character) {
    if (character < 0x300)
        return 0;
    UChar decomposed[64];
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = unorm2_getDecomposition(
        normalizer, character, decomposed, static_cast<std::int32_t>(std::size(decomposed)), &status);
    if (length > 0 && U_SUCCESS(status))
        U16_GET(decomposed, 0, 0, length, character);
    return u_getCombiningClass(character);
}

bool startsWithMark(const UNormalizer2* normalizer, UChar32 character) {
    return leadingClass(normalizer, character) != 0;
}

// The next run of at least longRunLength units at or after `from`; start == end when there is none. Only each
// 32nd unit is looked at, as a long run cannot slip through.
MarkRun nextLongMarkRun(const UNormalizer2* normalizer, std::u16string_view units, std::size_t from) {
    constexpr std::size_t stride = longRunLength / 2;
    for (std::size_t probe = from + std::min(stride - 1, units.size() - from); probe < units.size();
         probe += stride) {
        if (units[probe] < 0x300)
            continue;
        MarkRun run{probe, probe};
        if (U16_IS_TRAIL(units[probe]) && probe > from && U16_IS_LEAD(units[probe - 1]))
            run.start = run.end = probe - 1;
        UChar32 character = 0;
        while (run.end < units.size()) {
            std::size_t next = run.end;
            U16_NEXT(units.data(), next, units.size(), character);
            if (!startsWithMark(normalizer, character))
                break;
            run.end = next;
        }
        if (run.end == run.start)
            continue;
        while (run.start > from) {
            std::size_t previous = run.start;
            U16_PREV(units.data(), from, previous, character);
            if (!startsWithMark(normalizer, character))
                break;
            run.start = previous;
        }
        if (run.end - run.start >= longRunLength)
            return run;
        probe = std::max(probe, run.end);
    }
    return {units.size(), units.size()};
}

// The marks of a run, decomposed, in canonical order.
void appendSortedMarks(std::u16string& result, const UNormalizer2* normalizer, std::u16string_view run) {
    struct Mark {
        UChar32 character;
        std::uint8_t combiningClass;
    };
    std::vector<Mark> marks;
    marks.reserve(run.size());
    for (std::size_t index = 0; index < run.size();) {
        UChar32 character = 0;
        U16_NEXT(run.data(), index, run.size(), character);
        UChar decomposed[64];
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length = unorm2_getDecomposition(
            normalizer, character, decomposed, static_cast<std::int32_t>(std::size(decomposed)), &status);
        if (length < 0 || U_FAILURE(status)) {
            marks.push_back({character, u_getCombiningClass(character)});
            continue;
        }
        for (std::int32_t offset = 0; offset < length;) {
            U16_NEXT(decomposed, offset, length, character);
            marks.push_back({character, u_getCombiningClass(character)});
        }
    }
    std::stable_sort(marks.begin(), marks.end(), [](const Mark& left, const Mark& right) {
        return left.combiningClass < right.combiningClass;
    });
    for (const Mark& mark : marks) {
        if (mark.character > 0xFFFF)
            result.push_back(U16_LEAD(mark.character));
        result.push_back(mark.character > 0xFFFF ? U16_TRAIL(mark.character)
                                                 : static_cast<char16_t>(mark.character));
    }
}

bool isSortedAndDecomposed(const UNormalizer2* normalizer, std::u16string_view run) {
    std::uint8_t previous = 0;
    for (std::size_t index = 0; index < run.size();) {
        UChar32 character = 0;
        U16_NEXT(run.data(), index, run.size(), character);
        const std::uint8_t own = u_getCombiningClass(character);
        if (own < previous || own != leadingClass(normalizer, character))
            return false;
        previous = own;
    }
    return true;
}

// Equivalent text without long unsorted runs; the text itself when it has none.
std::u16string_view withSortedMarkRuns(std::u16string_view units, const UNormalizer2* normalizer,
                                       std::u16string& storage) {
    std::size_t copied = 0;
    for (MarkRun run = nextLongMarkRun(normalizer, units, 0); run.start < run.end;
         run = nextLongMarkRun(normalizer, units, run.end)) {
        storage.append(units, copied, run.start - copied);
        appendSortedMarks(storage, normalizer, units.substr(run.start, run.end - run.start));
        copied = run.end;
    }
    if (copied == 0)
        return units;
    storage.append(units, copied);
    return storage;
}

bool isBoundary(const UNormalizer2* normalizer, std::u16string_view units, std::size_t index) {
    if (U16_IS_TRAIL(units[index]) && index > 0 && U16_IS_LEAD(units[index - 1]))
        return false;
    UChar32 character = 0;
    U16_GET(units.data(), 0, index, units.size(), character);
    return unorm2_hasBoundaryBefore(normalizer, character);
}

// The end of a beginning that stands as it is whatever is done to the rest. The library is asked about a
// window around each unit that the scan does not pass over; then the scan goes on.
std::size_t lengthOfNormalizedPrefix(const UNormalizer2* normalizer, std::u16string_view units,
                                     CFStringNormalizationForm form) {
    const std::span<const UnitRange> inert = inertUnits(form);
    std::size_t position = form == CFStringNormalizationForm::C ? lengthOfComposedPrefix(units) : 0;
    if (position == units.size())
        return position;
    for (;;) {
        position += lengthOfPrefixInRanges(units.substr(position), inert);
        if (position == units.size())
            return position;
        // The unit before may be the base of a mark.
        const std::size_t start = position > 0 ? position - 1 : 0;
        std::size_t resume = 0;
        for (std::size_t window = 256; resume <= start; window *= 2) {
            const std::size_t end = start + std::min(window, units.size() - start);
            UErrorCode status = U_ZERO_ERROR;
            std::size_t span = start + static_cast<std::size_t>(unorm2_spanQuickCheckYes(
                                           normalizer, units.data() + start,
                                           static_cast<std::int32_t>(end - start), &status));
            if (U_FAILURE(status))
                return 0;
            if (span < end) {
                while (span > 0 && !isBoundary(normalizer, units, span))
                    --span;
                return span;
            }
            if (end == units.size())
                return end;
            resume = end - 1;
            while (resume > start && lengthOfPrefixInRanges(units.substr(resume, 1), inert) == 0)
                --resume;
        }
        position = resume;
    }
}

} // namespace

std::size_t CFStringLengthOfPlainPrefix(std::u16string_view units, CFStringNormalizationForm form) {
    return form == CFStringNormalizationForm::C ? lengthOfComposedPrefix(units)
                                                : lengthOfPrefixInRanges(units, inertUnits(form));
}

bool CFStringIsNormalized(std::u16string_view units, CFStringNormalizationForm form) {
    const UNormalizer2* normalizer = normalizerFor(form);
    const std::size_t start = lengthOfNormalizedPrefix(normalizer, units, form);
    const std::u16string_view rest = units.substr(start);
    if (rest.empty())
        return true;
    for (MarkRun run = nextLongMarkRun(normalizer, rest, 0); run.start < run.end;
         run = nextLongMarkRun(normalizer, rest, run.end))
        if (!isSortedAndDecomposed(normalizer, rest.substr(run.start, run.end - run.start)))
            return false;
    UErrorCode status = U_ZERO_ERROR;
    const bool isNormalized =
        unorm2_isNormalized(normalizer, rest.data(), static_cast<std::int32_t>(rest.size()), &status);
    return U_SUCCESS(status) && isNormalized;
}

void CFStringNormalize(NSMutableString& string, CFStringNormalizationForm form) {
    const UNormalizer2* normalizer = normalizerFor(form);
    const std::u16string_view units = string;
    const std::size_t start = lengthOfNormalizedPrefix(normalizer, units, form);
    if (start == units.size())
        return;
    std::u16string storage;
    const std::u16string_view rest = withSortedMarkRuns(units.substr(start), normalizer, storage);
    NSMutableString result = NSMutableString::stringWithCapacity(units.size() + units.size() / 8 + 16);
    result.appendString(units.substr(0, start));
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length =
            unorm2_normalize(normalizer, rest.data(), static_cast<std::int32_t>(rest.size()),
                             result.mutableCharacters() + start,
                             static_cast<std::int32_t>(result.capacity() - start), &status);
        if (status == U_MEMORY_ALLOCATION_ERROR)
            throw std::bad_alloc();
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            result.reserve(start + static_cast<std::size_t>(length));
            continue;
        }
        if (U_FAILURE(status))
            throw NSException(NSMallocException, u"The normalised text would pass 2147483646 bytes.");
        result.setLength(start + static_cast<std::size_t>(length));
        string.swap(result);
        return;
    }
}

} // namespace kelvo
