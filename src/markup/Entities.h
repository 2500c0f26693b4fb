#pragma once

#include "platform/foundation/NSString.h"

#include <cstddef>

namespace kelvo {

/// Turns the character references in source[location, location + length) into characters. Writes to
/// `destination` from its first unit on, and returns the number of units written, which is never more than
/// `length`. The destination may be a place of its own with room for `length` units, or any place of the
/// source's array at or before source + location: in place it is source + location itself, and then the units
/// in front of the first change are not written.
///
/// Named references are those of EntityTable.h with names of at most 6 letters; numeric ones have at most 5
/// decimal or 4 hexadecimal digits, and what passes 65,535 wraps. The ";" may be missing. What is no
/// reference is text. "&nbsp" and "&apos" are always known.
///
/// - `standardEntities`: "&quot", "&amp", "&lt" and "&gt" are known too. Without it no reference gives a
///   double quote, "&", "<" or ">": it stays as it stands, so that decoding never makes markup.
/// - `onlyNumericEntities`: names of the table are not known.
/// - `nonUmlauted`: every unit that is written goes through the table of initUmlautsCharsTable.
std::size_t convertEntities2Characters(const char16_t* source, char16_t* destination, std::size_t location,
                                       std::size_t length, bool standardEntities, bool onlyNumericEntities,
                                       bool nonUmlauted);

// Whole strings. The receiver itself comes back when it is nil or shorter than 4 units, when nothing in it
// changes, and when there is no memory for the result.

NSString stringByConvertingEntitiesToCharacters_onlyNumericEntities_nonUmlauted(const NSString& string,
                                                                                bool standardEntities,
                                                                                bool onlyNumericEntities,
                                                                                bool nonUmlauted);
/// With the standard and the named references, umlauts kept.
NSString stringByConvertingEntitiesToCharacters(const NSString& string);
/// With the standard and the named references.
NSString stringByConvertingEntitiesToCharactersNonUmlauted(const NSString& string, bool nonUmlauted);
/// "&quot", "&amp", "&lt" and "&gt" alone, each with or without ";".
NSString stringByConvertingStandardEntitiesToCharacters(const NSString& string);

/// "&", the double quote, "<" and ">" as "&amp;", "&quot;", "&lt;" and "&gt;", and with `highCharacters` each
/// unit above 127 as "&#n;" in decimal. The receiver itself when there are none.
NSString stringByConvertingCharactersToEntities(const NSString& string, bool highCharacters);
/// The same without high characters.
NSString stringByConvertingCharactersToStandardEntities(const NSString& string);
/// The same with high characters.
NSString stringByConvertingHighCharactersToEntities(const NSString& string);

/// ASCII text in which each unit from 128 up is "&name;" where it has a name, else "&#n;" in decimal. "&",
/// "<", ">" and double quotes stay as they are. The receiver itself when it is ASCII, and when the result
/// would be too large.
NSString stringByConvertingCharactersToEntities(const NSString& string);

} // namespace kelvo
