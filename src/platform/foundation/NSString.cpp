#include "platform/foundation/NSString.h"

#include "platform/foundation/NSException.h"

#include <unicode/ustring.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace kelvo {

std::size_t checkedSizeInBytes(std::size_t count, std::size_t unitSizeInBytes) {
    if (unitSizeInBytes != 0 && count > maximumSizeInBytes / unitSizeInBytes)
        throw NSException(NSMallocException, u"The contents would pass 2147483646 bytes.");
    return count * unitSizeInBytes;
}

NSString::Rep* NSString::makeRep(std::size_t length, char16_t** units) {
    const std::size_t size = checkedSizeInBytes(length, sizeof(char16_t));
    void* block = std::malloc(sizeof(Rep) + size);
    if (!block)
        throw std::bad_alloc();
    auto* storage = reinterpret_cast<char16_t*>(static_cast<char*>(block) + sizeof(Rep));
    if (units)
        *units = storage;
    return new (block) Rep{1, length, storage, nullptr};
}

void NSString::destroy(Rep* rep) noexcept {
    std::free(rep->ownedBlock);
    rep->~Rep();
    std::free(rep);
}

NSString::NSString(const char16_t* units)
    : NSString(units ? NSString(std::u16string_view(units)) : NSString()) {}

NSString::NSString(std::u16string_view units) {
    char16_t* storage = nullptr;
    rep_ = makeRep(units.size(), &storage);
    if (!units.empty())
        std::memcpy(storage, units.data(), units.size() * sizeof(char16_t));
}

const NSString& NSString::string() {
    static const NSString empty{std::u16string_view()};
    return empty;
}

NSString NSString::stringWithUTF8String(std::string_view bytes) {
    // A UTF-8 sequence never has fewer bytes than UTF-16 units, so one conversion into room for bytes.size()
    // units is enough.
    checkedSizeInBytes(bytes.size(), sizeof(char16_t));
    char16_t small[256];
    auto* units = bytes.size() <= std::size(small)
                      ? small
                      : static_cast<char16_t*>(std::malloc(bytes.size() * sizeof(char16_t)));
    if (!units)
        throw std::bad_alloc();
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(units, static_cast<std::int32_t>(bytes.size()), &length, bytes.data(),
                  static_cast<std::int32_t>(bytes.size()), &status);
    if (units == small)
        return U_FAILURE(status) ? NSString()
                                 : NSString(std::u16string_view(small, static_cast<std::size_t>(length)));
    if (U_FAILURE(status)) {
        std::free(units);
        return nullptr;
    }
    return stringWithCharactersNoCopy(units, static_cast<std::size_t>(length));
}

NSString NSString::stringByRepairingUTF8String(std::string_view bytes) {
    NSString wellFormed = stringWithUTF8String(bytes);
    if (!wellFormed.isNil())
        return wellFormed;
    auto* units = static_cast<char16_t*>(std::malloc(bytes.size() * sizeof(char16_t)));
    if (!units)
        throw std::bad_alloc();
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(units, static_cast<std::int32_t>(bytes.size()), &length, bytes.data(),
                         static_cast<std::int32_t>(bytes.size()), 0xFFFD, nullptr, &status);
    return stringWithCharactersNoCopy(units, U_FAILURE(status) ? 0 : static_cast<std::size_t>(length));
}

NSString NSString::stringWithLatin1Bytes(std::string_view bytes) {
    char16_t* storage = nullptr;
    NSString result(makeRep(bytes.size(), &storage));
    std::transform(bytes.begin(), bytes.end(), storage,
                   [](char byte) { return static_cast<char16_t>(static_cast<unsigned char>(byte)); });
    return result;
}

NSString NSString::stringWithCharactersNoCopy(char16_t* units, std::size_t length) {
    Rep* rep = nullptr;
    try {
        checkedSizeInBytes(length, sizeof(char16_t));
        rep = makeRep(0, nullptr);
    } catch (...) {
        std::free(units);
        throw;
    }
    if (units) {
        // Give back what was reserved and not used, once that is worth a call.
        if (void* fitted = std::realloc(units, std::max<std::size_t>(length, 1) * sizeof(char16_t)))
            units = static_cast<char16_t*>(fitted);
        rep->ownedBlock = units;
        rep->units = units;
        rep->length = length;
    }
    return NSString(rep);
}

char16_t NSString::characterAtIndex(std::size_t index) const {
    if (index >= length())
        throw NSException(NSRangeException, u"The index lies past the end of the string.");
    return rep_->units[index];
}

NSString NSString::substringWithRange(NSRange range) const {
    if (!rangeFits(range, length()))
        throw NSException(NSRangeException, u"The range passes the end of the string.");
    if (range.length == length())
        return *this;
    return NSString(characters().substr(range.location, range.length));
}

NSString NSString::substringFromIndex(std::size_t index) const {
    return substringWithRange({index, index <= length() ? length() - index : 0});
}

NSString NSString::substringToIndex(std::size_t index) const {
    return substringWithRange({0, index});
}

NSString NSString::stringByAppendingString(std::u16string_view tail) const {
    if (isNil() || tail.empty())
        return *this;
    char16_t* storage = nullptr;
    NSString result(makeRep(length() + tail.size(), &storage));
    std::copy(tail.begin(), tail.end(), std::copy(characters().begin(), characters().end(), storage));
    return result;
}

std::string NSString::UTF8String() const {
    return UTF8StringOfCharacters(characters());
}

std::string UTF8StringOfCharacters(std::u16string_view units) {
    // The cheap guess, one byte a unit, is right for ASCII; three bytes a unit always suffice.
    std::string bytes(units.size(), '\0');
    for (;;) {
        std::int32_t length = 0;
        UErrorCode status = U_ZERO_ERROR;
        u_strToUTF8WithSub(bytes.data(),
                           static_cast<std::int32_t>(std::min(bytes.size(), maximumSizeInBytes)), &length,
                           units.data(), static_cast<std::int32_t>(units.size()), 0xFFFD, nullptr, &status);
        if (status != U_BUFFER_OVERFLOW_ERROR) {
            bytes.resize(U_FAILURE(status) ? 0 : static_cast<std::size_t>(length));
            return bytes;
        }
        bytes.resize(checkedSizeInBytes(static_cast<std::size_t>(length), 1));
    }
}

} // namespace kelvo
