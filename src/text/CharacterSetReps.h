#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/NSCharacterSet.h"
#include "platform/foundation/units/UnitScan.h"

#include <string_view>

namespace kelvo {

/// A character-set rep: 8,192 bytes, one bit for each of the 65,536 code units, in the layout that
/// unitIsInBitmap reads and that NSCharacterSet::bitmapRepresentation has. The named reps are made on first
/// use from any thread, and live as long as the process. Loops fetch a rep once.
using CharacterSetRep = const std::uint8_t*;

inline constexpr std::size_t characterSetRepSizeInBytes = 8192;

/// No member.
CharacterSetRep emptyCharacterSetRep();
/// White space and line ends, and what counts as white here besides: U+0000, U+0003 (end of text), U+FFFC (an
/// attachment), U+FEFF (the byte-order mark) and U+00A0.
CharacterSetRep whiteCharacterSetRep();
/// Horizontal spaces but U+00A0, and U+0000.
CharacterSetRep spaceCharacterSetRep();
CharacterSetRep upperCharacterSetRep();
CharacterSetRep lowerCharacterSetRep();
CharacterSetRep digitCharacterSetRep();
/// Letters, marks and numbers.
CharacterSetRep alphaNumCharacterSetRep();
/// Letters.
CharacterSetRep alphaCharacterSetRep();

/// Category Bitmap: the bytes of the set's bitmapRepresentation, valid as long as the set.
inline CharacterSetRep bitmap(const NSCharacterSet& set) {
    return set.bitmapRepresentation().bytes().data();
}

/// The lowest and the highest code unit of the alphabetic rep; 0 if it had none.
char16_t firstAlphaCharacter();
char16_t lastAlphaCharacter();

/// Whether at least one unit is in the rep; false for a null rep.
bool characterPartOfSet(std::u16string_view string, CharacterSetRep rep);
/// Whether every unit is in the rep. An empty string gives `emptyResult`, and a null rep has no member.
bool charactersPartOfSet(std::u16string_view string, CharacterSetRep rep, bool emptyResult);

// The same as messages to a string. Nil gives false from all of them.

bool containsDigitCharacter(std::u16string_view string);
bool containsWhiteCharacter(std::u16string_view string);
bool containsAlphaCharacter(std::u16string_view string);
bool containsAlphaNumCharacter(std::u16string_view string);
bool containsCharacterPartOfCharacterSetRep(std::u16string_view string, CharacterSetRep rep);
bool isAlphaNumString(std::u16string_view string);
bool isAlphaString(std::u16string_view string);
bool isDigitString(std::u16string_view string);
/// True for the empty string, which is why these two must tell it from nil.
bool isWhiteString(const NSString& string);
bool isSpaceString(const NSString& string);

} // namespace kelvo
