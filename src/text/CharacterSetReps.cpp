#include "text/CharacterSetReps.h"

#include <algorithm>
#include <array>
#include <initializer_list>

namespace kelvo {

namespace {

// A cache line's alignment lets the first 16 bytes, which decide about all of ASCII, come in one load.
struct alignas(64) RepStorage {
    std::array<std::uint8_t, characterSetRepSizeInBytes> bytes{};

    RepStorage() = default;
    explicit RepStorage(const NSCharacterSet& set, std::initializer_list<char16_t> additions = {}) {
        std::copy_n(bitmap(set), bytes.size(), bytes.begin());
        for (const char16_t unit : additions)
            bytes[unit >> 3] |= static_cast<std::uint8_t>(1u << (unit & 7));
    }
};

} // namespace

CharacterSetRep emptyCharacterSetRep() {
    static const RepStorage bitmapRep;
    return bitmapRep.bytes.data();
}

CharacterSetRep whiteCharacterSetRep() {
    static const RepStorage bitmapRep(
        NSCharacterSet::whitespaceAndNewlineCharacterSet(),
        {0x0000, 0x000C, 0x000A, 0x000D, 0x2028, 0x2029, 0x0003, 0xFFFC, 0x0009, 0xFEFF, 0x00A0});
    return bitmapRep.bytes.data();
}

CharacterSetRep spaceCharacterSetRep() {
    static const RepStorage bitmapRep(NSCharacterSet::whitespaceCharacterSet(), {0x0009, 0x0000});
    return bitmapRep.bytes.data();
}

CharacterSetRep upperCharacterSetRep() {
    static const RepStorage bitmapRep(NSCharacterSet::uppercaseLetterCharacterSet());
    return bitmapRep.bytes.data();
}

CharacterSetRep lowerCharacterSetRep() {
    static const RepStorage bitmapRep(NSCharacterSet::lowercaseLetterCharacterSet());
    return bitmapRep.bytes.data();
}

CharacterSetRep digitCharacterSetRep() {
    static const RepStorage bitmapRep(NSCharacterSet::decimalDigitCharacterSet());
    return bitmapRep.bytes.data();
}

CharacterSetRep alphaNumCharacterSetRep() {
    static const RepStorage bitmapRep(NSCharacterSet::alphanumericCharacterSet());
    return bitmapRep.bytes.data();
}

CharacterSetRep alphaCharacterSetRep() {
    static const RepStorage bitmapRep(NSCharacterSet::letterCharacterSet());
    return bitmapRep.bytes.data();
}

char16_t firstAlphaCharacter() {
    static const char16_t minChar = [] {
        const CharacterSetRep rep = alphaCharacterSetRep();
        for (unsigned unit = 0; unit <= 0xFFFF; ++unit)
            if (unitIsInBitmap(rep, static_cast<char16_t>(unit)))
                return static_cast<char16_t>(unit);
        return char16_t(0);
    }();
    return minChar;
}

char16_t lastAlphaCharacter() {
    static const char16_t maxChar = [] {
        const CharacterSetRep rep = alphaCharacterSetRep();
        for (unsigned unit = 0xFFFF; unit > 0; --unit)
            if (unitIsInBitmap(rep, static_cast<char16_t>(unit)))
                return static_cast<char16_t>(unit);
        return char16_t(0);
    }();
    return maxChar;
}

bool characterPartOfSet(std::u16string_view string, CharacterSetRep rep) {
    return rep && firstUnitInBitmap(string.data(), string.size(), rep) < string.size();
}

bool charactersPartOfSet(std::u16string_view string, CharacterSetRep rep, bool emptyResult) {
    if (string.empty())
        return emptyResult;
    return rep && firstUnitNotInBitmap(string.data(), string.size(), rep) == string.size();
}

bool containsDigitCharacter(std::u16string_view string) {
    return characterPartOfSet(string, digitCharacterSetRep());
}

bool containsWhiteCharacter(std::u16string_view string) {
    return characterPartOfSet(string, whiteCharacterSetRep());
}

bool containsAlphaCharacter(std::u16string_view string) {
    return characterPartOfSet(string, alphaCharacterSetRep());
}

bool containsAlphaNumCharacter(std::u16string_view string) {
    return characterPartOfSet(string, alphaNumCharacterSetRep());
}

bool containsCharacterPartOfCharacterSetRep(std::u16string_view string, CharacterSetRep rep) {
    return characterPartOfSet(string, rep);
}

bool isAlphaNumString(std::u16string_view string) {
    return charactersPartOfSet(string, alphaNumCharacterSetRep(), false);
}

bool isAlphaString(std::u16string_view string) {
    return charactersPartOfSet(string, alphaCharacterSetRep(), false);
}

bool isDigitString(std::u16string_view string) {
    return charactersPartOfSet(string, digitCharacterSetRep(), false);
}

bool isWhiteString(const NSString& string) {
    return !string.isNil() && charactersPartOfSet(string, whiteCharacterSetRep(), true);
}

bool isSpaceString(const NSString& string) {
    return !string.isNil() && charactersPartOfSet(string, spaceCharacterSetRep(), true);
}

} // namespace kelvo
