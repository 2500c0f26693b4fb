#pragma once

#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Value.h"

#include <cstdint>

namespace kelvo {

// Category KelvoDictionaryExtensions of dictionaries and mutable dictionaries. A nil dictionary has no
// objects, and a nil key none either.

/// The object, or the default when there is none.
Value objectForKey_default(const NSDictionary& dictionary, const Value& key, const Value& defaultObject);
/// The object whose key is that number.
Value objectForCode(const NSDictionary& dictionary, std::int32_t code);
Value objectForCode_default(const NSDictionary& dictionary, std::int32_t code, const Value& defaultObject);

/// The object, whatever it is: that it is a string is not looked at.
Value stringForKey(const NSDictionary& dictionary, const Value& key);
Value stringForKey_default(const NSDictionary& dictionary, const Value& key, const Value& defaultObject);

// The object as a number: what a number's own conversions give (NSNumber.h), and of a string the number that
// it begins with (NSStringNumbers.h); the default, or 0, when there is none. Any other object throws
// NSException (NSInvalidArgumentException), NSNull too.

/// Its intValue.
std::int32_t integerForKey(const NSDictionary& dictionary, const Value& key);
std::int32_t integerForKey_default(const NSDictionary& dictionary, const Value& key,
                                   std::int32_t defaultNumber);
/// The lowest 32 bits.
std::uint32_t unsignedIntForKey(const NSDictionary& dictionary, const Value& key);
std::uint32_t unsignedIntForKey_default(const NSDictionary& dictionary, const Value& key,
                                        std::uint32_t defaultNumber);
/// All 64 bits, without a sign: what setUnsignedLong_forKey has stored, -1 as the largest number.
std::uint64_t unsignedLongForKey(const NSDictionary& dictionary, const Value& key);
std::uint64_t unsignedLongForKey_default(const NSDictionary& dictionary, const Value& key,
                                         std::uint64_t defaultNumber);
std::int64_t longLongForKey(const NSDictionary& dictionary, const Value& key);
std::int64_t longLongForKey_default(const NSDictionary& dictionary, const Value& key,
                                    std::int64_t defaultNumber);
float floatForKey(const NSDictionary& dictionary, const Value& key);
float floatForKey_default(const NSDictionary& dictionary, const Value& key, float defaultNumber);
double doubleForKey(const NSDictionary& dictionary, const Value& key);
double doubleForKey_default(const NSDictionary& dictionary, const Value& key, double defaultNumber);
/// Of a string whether it says yes (boolValue in text/StringComparison.h).
bool boolForKey(const NSDictionary& dictionary, const Value& key);
bool boolForKey_default(const NSDictionary& dictionary, const Value& key, bool defaultAnswer);

/// A text in the user's language. The object is either the text or a dictionary of its translations, of which
/// the first counts that NSBundle::preferredLocalizations names, else that under "English". The default when
/// there is none; what is not a string is no translation.
NSString localizedStringForKey_default(const NSDictionary& dictionary, const Value& key,
                                       const NSString& defaultString);
/// Nil when there is none.
NSString localizedStringForKey(const NSDictionary& dictionary, const Value& key);

/// The dictionary itself, so that callers need not care what they hold.
inline NSDictionary dictionaryRepresentation(const NSDictionary& dictionary) {
    return dictionary;
}

// Storing. A nil key throws NSException (NSInvalidArgumentException).

/// Nil throws NSException (NSInvalidArgumentException).
void setString_forKey(NSMutableDictionary& dictionary, const NSString& string, const Value& key);
/// Nil removes the key.
void setOrRemoveObject_forKey(NSMutableDictionary& dictionary, const Value& object, const Value& key);
/// Nil and the empty string remove the key.
void setOrRemoveString_forKey(NSMutableDictionary& dictionary, const NSString& string, const Value& key);
void setBool_forKey(NSMutableDictionary& dictionary, bool answer, const Value& key);
void setInteger_forKey(NSMutableDictionary& dictionary, std::int32_t number, const Value& key);
void setUnsignedInt_forKey(NSMutableDictionary& dictionary, std::uint32_t number, const Value& key);
/// Numbers are held with a sign: from 2^63 on they are shown as negative ones.
void setUnsignedLong_forKey(NSMutableDictionary& dictionary, std::uint64_t number, const Value& key);
void setLongLong_forKey(NSMutableDictionary& dictionary, std::int64_t number, const Value& key);
void setFloat_forKey(NSMutableDictionary& dictionary, float number, const Value& key);
void setDouble_forKey(NSMutableDictionary& dictionary, double number, const Value& key);

} // namespace kelvo
