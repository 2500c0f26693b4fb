#include "text/FoldingTables.h"

#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/NSCharacterSet.h"

#include <memory>
#include <mutex>
#include <new>

namespace kelvo {

std::atomic<const char16_t*> _umlautsCharsTable{nullptr};
std::atomic<const char16_t*> _upperCharsTable{nullptr};
std::atomic<const char16_t*> _lowerCharsTable{nullptr};
std::atomic<const char16_t*> _upperUmlautsCharsTable{nullptr};
std::atomic<const char16_t*> _lowerUmlautsCharsTable{nullptr};

namespace {

using Entries = std::unique_ptr<char16_t[]>;

/// `fill` gets the block to write. Running out of memory, in the block or in the text services, leaves the
/// once flag unset, so that the next call tries again.
template <class Fill>
const char16_t* buildOnce(std::atomic<const char16_t*>& table, std::once_flag& once, Fill fill) {
    if (const char16_t* entries = table.load(std::memory_order_acquire)) [[likely]]
        return entries;
    try {
        std::call_once(once, [&] {
            Entries entries(new char16_t[foldingTableCount]);
            fill(entries.get());
            table.store(entries.release(), std::memory_order_release);
        });
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return table.load(std::memory_order_acquire);
}

/// `change` works on a string of one letter; a letter that it makes anything but one unit of stays.
void fillFromTextService(char16_t* entries, const NSCharacterSet& letters, void (*change)(NSMutableString&)) {
    NSMutableString text = NSMutableString::stringWithCapacity(8);
    for (std::size_t index = 0; index < foldingTableCount; ++index) {
        const auto unit = static_cast<char16_t>(index);
        entries[index] = unit;
        if (!letters.characterIsMember(unit))
            continue;
        text.setLength(1);
        *text.mutableCharacters() = unit;
        change(text);
        if (text.length() == 1)
            entries[index] = text.characters().front();
    }
}

void fillByComposition(char16_t* entries, const char16_t* first, const char16_t* second) {
    if (!first || !second)
        throw std::bad_alloc();
    for (std::size_t index = 0; index < foldingTableCount; ++index)
        entries[index] = second[first[index]];
}

} // namespace

const char16_t* initUmlautsCharsTable() {
    static std::once_flag once;
    return buildOnce(_umlautsCharsTable, once, [](char16_t* entries) {
        fillFromTextService(entries, NSCharacterSet::letterCharacterSet(), [](NSMutableString& text) {
            CFStringFold(text, kCFCompareDiacriticInsensitive);
        });
    });
}

const char16_t* initUpperCharsTable() {
    static std::once_flag once;
    return buildOnce(_upperCharsTable, once, [](char16_t* entries) {
        fillFromTextService(entries, NSCharacterSet::lowercaseLetterCharacterSet(), CFStringUppercase);
    });
}

const char16_t* initLowerCharsTable() {
    static std::once_flag once;
    return buildOnce(_lowerCharsTable, once, [](char16_t* entries) {
        fillFromTextService(entries, NSCharacterSet::uppercaseLetterCharacterSet(), CFStringLowercase);
    });
}

const char16_t* initUpperUmlautsCharsTable() {
    static std::once_flag once;
    return buildOnce(_upperUmlautsCharsTable, once, [](char16_t* entries) {
        fillByComposition(entries, initUmlautsCharsTable(), initUpperCharsTable());
    });
}

const char16_t* initLowerUmlautsCharsTable() {
    static std::once_flag once;
    return buildOnce(_lowerUmlautsCharsTable, once, [](char16_t* entries) {
        fillByComposition(entries, initUmlautsCharsTable(), initLowerCharsTable());
    });
}

} // namespace kelvo
