#include "collections/KelvoDictionaryExtensions.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/encodings/NSStringNumbers.h"
#include "platform/foundation/files/NSBundle.h"
#include "text/StringComparison.h"

namespace kelvo {

namespace {

/// One conversion of the two kinds of object that know it.
template <auto ofNumber, auto ofString, typename Number>
Number numberForKey(const NSDictionary& dictionary, const Value& key, Number defaultNumber) {
    const Value& object = dictionary.objectForKey(key);
    if (object.isNil())
        return defaultNumber;
    if (const NSNumber* const number = object.numberIfAny())
        return static_cast<Number>((number->*ofNumber)());
    if (object.isString())
        return static_cast<Number>(ofString(object.string()));
    throw NSException(NSInvalidArgumentException, u"What is asked for as a number is no number.");
}

} // namespace

Value objectForKey_default(const NSDictionary& dictionary, const Value& key, const Value& defaultObject) {
    const Value& object = dictionary.objectForKey(key);
    return object.isNil() ? defaultObject : object;
}

Value objectForCode(const NSDictionary& dictionary, std::int32_t code) {
    return objectForCode_default(dictionary, code, nullptr);
}

Value objectForCode_default(const NSDictionary& dictionary, std::int32_t code, const Value& defaultObject) {
    return objectForKey_default(dictionary, NSNumber::numberWithInt(code), defaultObject);
}

Value stringForKey(const NSDictionary& dictionary, const Value& key) {
    return dictionary.objectForKey(key);
}

Value stringForKey_default(const NSDictionary& dictionary, const Value& key, const Value& defaultObject) {
    return objectForKey_default(dictionary, key, defaultObject);
}

std::int32_t integerForKey(const NSDictionary& dictionary, const Value& key) {
    return integerForKey_default(dictionary, key, 0);
}

std::int32_t integerForKey_default(const NSDictionary& dictionary, const Value& key,
                                   std::int32_t defaultNumber) {
    return numberForKey<&NSNumber::intValue, intValue>(dictionary, key, defaultNumber);
}

std::uint32_t unsignedIntForKey(const NSDictionary& dictionary, const Value& key) {
    return unsignedIntForKey_default(dictionary, key, 0);
}

std::uint32_t unsignedIntForKey_default(const NSDictionary& dictionary, const Value& key,
                                        std::uint32_t defaultNumber) {
    return numberForKey<&NSNumber::longLongValue, longLongValue>(dictionary, key, defaultNumber);
}

std::uint64_t unsignedLongForKey(const NSDictionary& dictionary, const Value& key) {
    return unsignedLongForKey_default(dictionary, key, 0);
}

std::uint64_t unsignedLongForKey_default(const NSDictionary& dictionary, const Value& key,
                                         std::uint64_t defaultNumber) {
    return numberForKey<&NSNumber::longLongValue, longLongValue>(dictionary, key, defaultNumber);
}

std::int64_t longLongForKey(const NSDictionary& dictionary, const Value& key) {
    return longLongForKey_default(dictionary, key, 0);
}

std::int64_t longLongForKey_default(const NSDictionary& dictionary, const Value& key,
                                    std::int64_t defaultNumber) {
    return numberForKey<&NSNumber::longLongValue, longLongValue>(dictionary, key, defaultNumber);
}

float floatForKey(const NSDictionary& dictionary, const Value& key) {
    return floatForKey_default(dictionary, key, 0);
}

float floatForKey_default(const NSDictionary& dictionary, const Value& key, float defaultNumber) {
    return numberForKey<&NSNumber::floatValue, doubleValue>(dictionary, key, defaultNumber);
}

double doubleForKey(const NSDictionary& dictionary, const Value& key) {
    return doubleForKey_default(dictionary, key, 0);
}

double doubleForKey_default(const NSDictionary& dictionary, const Value& key, double defaultNumber) {
    return numberForKey<&NSNumber::doubleValue, doubleValue>(dictionary, key, defaultNumber);
}

bool boolForKey(const NSDictionary& dictionary, const Value& key) {
    return boolForKey_default(dictionary, key, false);
}

bool boolForKey_default(const NSDictionary& dictionary, const Value& key, bool defaultAnswer) {
    return numberForKey<&NSNumber::boolValue, boolValue>(dictionary, key, defaultAnswer);
}

NSString localizedStringForKey_default(const NSDictionary& dictionary, const Value& key,
                                       const NSString& defaultString) {
    const Value& object = dictionary.objectForKey(key);
    if (object.isString())
        return object.string();
    const NSDictionary translations = object.dictionary();
    for (const Value& language : NSBundle::preferredLocalizations()) {
        if (const Value& text = translations.objectForKey(language); text.isString())
            return text.string();
    }
    const Value& text = translations.objectForKey(u"English");
    return text.isString() ? text.string() : defaultString;
}

NSString localizedStringForKey(const NSDictionary& dictionary, const Value& key) {
    return localizedStringForKey_default(dictionary, key, nullptr);
}

void setString_forKey(NSMutableDictionary& dictionary, const NSString& string, const Value& key) {
    dictionary.setObject_forKey(string, key);
}

void setOrRemoveObject_forKey(NSMutableDictionary& dictionary, const Value& object, const Value& key) {
    if (object.isNil())
        dictionary.removeObjectForKey(key);
    else
        dictionary.setObject_forKey(object, key);
}

void setOrRemoveString_forKey(NSMutableDictionary& dictionary, const NSString& string, const Value& key) {
    setOrRemoveObject_forKey(dictionary, string.isEmpty() ? Value() : Value(string), key);
}

void setBool_forKey(NSMutableDictionary& dictionary, bool answer, const Value& key) {
    dictionary.setObject_forKey(NSNumber::numberWithBool(answer), key);
}

void setInteger_forKey(NSMutableDictionary& dictionary, std::int32_t number, const Value& key) {
    dictionary.setObject_forKey(NSNumber::numberWithInt(number), key);
}

void setUnsignedInt_forKey(NSMutableDictionary& dictionary, std::uint32_t number, const Value& key) {
    dictionary.setObject_forKey(NSNumber::numberWithUnsignedInt(number), key);
}

void setUnsignedLong_forKey(NSMutableDictionary& dictionary, std::uint64_t number, const Value& key) {
    dictionary.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(number)), key);
}

void setLongLong_forKey(NSMutableDictionary& dictionary, std::int64_t number, const Value& key) {
    dictionary.setObject_forKey(NSNumber::numberWithLongLong(number), key);
}

void setFloat_forKey(NSMutableDictionary& dictionary, float number, const Value& key) {
    dictionary.setObject_forKey(NSNumber::numberWithFloat(number), key);
}

void setDouble_forKey(NSMutableDictionary& dictionary, double number, const Value& key) {
    dictionary.setObject_forKey(NSNumber::numberWithDouble(number), key);
}

} // namespace kelvo
