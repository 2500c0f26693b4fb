#include "platform/foundation/NSString.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/units/UTF8.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>

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

namespace {

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

} // namespace

NSString NSString::stringByDecodingUTF8(std::string_view bytes, bool* hadErrors) {
    // A UTF-8 sequence never has fewer bytes than UTF-16 units.
    checkedSizeInBytes(bytes.size(), sizeof(char16_t));
    char16_t small[256];
    const bool isShort = bytes.size() <= std::size(small);
    auto* const units =
        isShort ? small : static_cast<char16_t*>(std::malloc(bytes.size() * sizeof(char16_t)));
    if (!units)
        throw std::bad_alloc();
    const UTF8Decoding decoding = decodeUTF8(asBytes(bytes), units, bytes.size());
    *hadErrors = decoding.hadErrors;
    return isShort ? NSString(std::u16string_view(small, decoding.unitsWritten))
                   : stringWithCharactersNoCopy(units, decoding.unitsWritten);
}

NSString NSString::stringWithUTF8String(std::string_view bytes) {
    bool hadErrors = false;
    NSString string = stringByDecodingUTF8(bytes, &hadErrors);
    return hadErrors ? NSString() : string;
}

NSString NSString::stringByRepairingUTF8String(std::string_view bytes) {
    bool hadErrors = false;
    return stringByDecodingUTF8(bytes, &hadErrors);
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
    // Most text is short and needs little more than one byte a unit: what is too much is given back.
    std::string bytes;
    for (std::size_t read = 0;;) {
        const std::size_t start = bytes.size();
        bytes.resize(checkedSizeInBytes(start + (units.size() - read) * 3, 1));
        const UTF8Encoding encoding =
            encodeUTF8(units.substr(read), reinterpret_cast<std::uint8_t*>(bytes.data()) + start);
        bytes.resize(start + encoding.bytesWritten);
        read += encoding.unitsRead;
        if (read == units.size())
            break;
        appendUTF8Character(bytes, replacementCharacter);
        ++read;
    }
    if (bytes.capacity() > bytes.size() * 2)
        bytes.shrink_to_fit();
    return bytes;
}

} // namespace kelvo
