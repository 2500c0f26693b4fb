#pragma once

#include "platform/foundation/units/ASCII.h"

#include <atomic>
#include <cstddef>

namespace kelvo {

// Five tables of 65,536 entries that are indexed by a code unit. Each is made once, by the first call of its
// builder from any thread, lives as long as the process (131,072 bytes), and is never written again. Its
// global pointer is null until then. Loops fetch a pointer once, through a builder or an accessor, and index
// it.
//
// What is no letter of the right kind, what would become more than one unit, and every surrogate maps to
// itself. The mappings are those of no particular language.

/// Letters without their diacritics: U+00E4 to "a"; U+00DF stays.
extern std::atomic<const char16_t*> _umlautsCharsTable;
/// Lower-case letters (Ll) in upper case; U+00DF, whose upper case is two letters, stays.
extern std::atomic<const char16_t*> _upperCharsTable;
/// Upper-case letters (Lu) in lower case; U+0130, whose lower case is two units, stays.
extern std::atomic<const char16_t*> _lowerCharsTable;
/// The upper-case entry of the folded unit.
extern std::atomic<const char16_t*> _upperUmlautsCharsTable;
/// The lower-case entry of the folded unit.
extern std::atomic<const char16_t*> _lowerUmlautsCharsTable;

inline constexpr std::size_t foldingTableCount = 65536;

/// Each returns its table, which it makes on the first call. Null when there was no memory for it; the next
/// call tries again.
const char16_t* initUmlautsCharsTable();
const char16_t* initUpperCharsTable();
const char16_t* initLowerCharsTable();
const char16_t* initUpperUmlautsCharsTable();
const char16_t* initLowerUmlautsCharsTable();

/// The builders as operations of the string class.
namespace NSStringKelvoExtensions {
inline const char16_t* umlautsCharsTable() {
    return initUmlautsCharsTable();
}
inline const char16_t* upperCharsTable() {
    return initUpperCharsTable();
}
inline const char16_t* lowerCharsTable() {
    return initLowerCharsTable();
}
inline const char16_t* upperUmlautsCharsTable() {
    return initUpperUmlautsCharsTable();
}
inline const char16_t* lowerUmlautsCharsTable() {
    return initLowerUmlautsCharsTable();
}
} // namespace NSStringKelvoExtensions

namespace foldingTablesDetail {
/// One load and one indexed load once the table stands.
inline unsigned entry(const std::atomic<const char16_t*>& table, const char16_t* (*build)(), char16_t unit) {
    const char16_t* entries = table.load(std::memory_order_acquire);
    if (!entries) [[unlikely]]
        entries = build();
    return entries[unit];
}
} // namespace foldingTablesDetail

// Look-ups of one code unit. They make their table when need be, and are undefined only where that fails.

/// Without diacritics; despite the name any code unit may result.
inline unsigned umlautsToAscii(char16_t unit) {
    return foldingTablesDetail::entry(_umlautsCharsTable, initUmlautsCharsTable, unit);
}

/// Without diacritics; a space (32) for what is not ASCII then.
inline unsigned toAscii(char16_t unit) {
    const unsigned folded = umlautsToAscii(unit);
    return folded < 128 ? folded : 32;
}

/// toAscii, with A to Z in lower case.
inline unsigned toLowerAscii(char16_t unit) {
    return asciiLowerCase(toAscii(unit));
}

/// toAscii, with a to z in upper case.
inline unsigned toUpperAscii(char16_t unit) {
    const unsigned folded = toAscii(unit);
    return folded >= 'a' && folded <= 'z' ? folded - 32 : folded;
}

inline unsigned toUpper(char16_t unit) {
    return foldingTablesDetail::entry(_upperCharsTable, initUpperCharsTable, unit);
}

inline unsigned toLower(char16_t unit) {
    return foldingTablesDetail::entry(_lowerCharsTable, initLowerCharsTable, unit);
}

/// Without diacritics and in upper case; any code unit may result.
inline unsigned umlautsToUpperAscii(char16_t unit) {
    return foldingTablesDetail::entry(_upperUmlautsCharsTable, initUpperUmlautsCharsTable, unit);
}

/// Without diacritics and in lower case; any code unit may result.
inline unsigned umlautsToLowerAscii(char16_t unit) {
    return foldingTablesDetail::entry(_lowerUmlautsCharsTable, initLowerUmlautsCharsTable, unit);
}

} // namespace kelvo
