#include "platform/foundation/NSMutableString.h"

#include "platform/foundation/LargePages.h"
#include "platform/foundation/NSException.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

namespace kelvo {

NSMutableString::NSMutableString(const NSString& string) {
    if (!string.isNil())
        *this = stringWithCharacters(string);
}

NSMutableString::NSMutableString(const NSMutableString& other) {
    if (!other.isNil())
        *this = stringWithCharacters(other);
}

NSMutableString::~NSMutableString() {
    std::free(units_);
}

NSMutableString NSMutableString::stringWithCapacity(std::size_t capacityInUnits) {
    const std::size_t size = checkedSizeInBytes(capacityInUnits, sizeof(char16_t));
    NSMutableString result;
    result.units_ = static_cast<char16_t*>(std::malloc(std::max(size, sizeof(char16_t))));
    if (!result.units_)
        throw std::bad_alloc();
    preferLargePages(result.units_, size);
    result.capacity_ = capacityInUnits;
    return result;
}

NSMutableString NSMutableString::stringWithCharacters(std::u16string_view units) {
    NSMutableString result = stringWithCapacity(units.size());
    result.appendString(units);
    return result;
}

void NSMutableString::makeRoom(std::size_t additionalUnits) {
    constexpr std::size_t mostUnits = maximumSizeInBytes / sizeof(char16_t);
    if (additionalUnits > mostUnits)
        checkedSizeInBytes(additionalUnits, sizeof(char16_t));
    const std::size_t needed = length_ + additionalUnits;
    if (!units_ || needed <= capacity_)
        return;
    checkedSizeInBytes(needed, sizeof(char16_t));
    reserve(std::max(needed, std::min(mostUnits, capacity_ + capacity_ / 2 + 16)));
}

void NSMutableString::reserve(std::size_t capacityInUnits) {
    if (!units_ || capacityInUnits <= capacity_)
        return;
    void* grown = std::realloc(units_, checkedSizeInBytes(capacityInUnits, sizeof(char16_t)));
    if (!grown)
        throw std::bad_alloc();
    units_ = static_cast<char16_t*>(grown);
    preferLargePages(units_, capacityInUnits * sizeof(char16_t));
    capacity_ = capacityInUnits;
}

bool NSMutableString::overlaps(std::u16string_view text) const noexcept {
    return !text.empty() && std::less_equal<>()(static_cast<const char16_t*>(units_), text.data()) &&
           std::less<>()(text.data(), static_cast<const char16_t*>(units_) + capacity_);
}

void NSMutableString::appendString(std::u16string_view tail) {
    replaceCharactersInRange_withString({length_, 0}, tail);
}

void NSMutableString::insertString_atIndex(std::u16string_view text, std::size_t index) {
    replaceCharactersInRange_withString({index, 0}, text);
}

void NSMutableString::deleteCharactersInRange(NSRange range) {
    replaceCharactersInRange_withString(range, {});
}

void NSMutableString::replaceCharactersInRange_withString(NSRange range, std::u16string_view text) {
    if (!units_)
        return;
    if (!rangeFits(range, length_))
        throw NSException(NSRangeException, u"The range passes the end of the string.");
    if (overlaps(text)) {
        const std::u16string own(text);
        replaceCharactersInRange_withString(range, own);
        return;
    }
    if (text.size() > range.length)
        makeRoom(text.size() - range.length);
    char16_t* hole = units_ + range.location;
    const std::size_t tailLength = length_ - range.location - range.length;
    if (tailLength > 0 && text.size() != range.length)
        std::memmove(hole + text.size(), hole + range.length, tailLength * sizeof(char16_t));
    if (!text.empty())
        std::memcpy(hole, text.data(), text.size() * sizeof(char16_t));
    length_ = range.location + text.size() + tailLength;
}

void NSMutableString::setString(std::u16string_view text) {
    replaceCharactersInRange_withString({0, length_}, text);
}

void NSMutableString::setLength(std::size_t lengthInUnits) {
    if (!units_)
        return;
    reserve(lengthInUnits);
    length_ = lengthInUnits;
}

NSString NSMutableString::copy() const {
    return isNil() ? NSString() : NSString(characters());
}

NSString NSMutableString::takeString() {
    if (isNil())
        return nullptr;
    NSMutableString taken(std::move(*this));
    const std::size_t length = std::exchange(taken.length_, 0);
    taken.capacity_ = 0;
    return NSString::stringWithCharactersNoCopy(std::exchange(taken.units_, nullptr), length);
}

void NSMutableString::swap(NSMutableString& other) noexcept {
    std::swap(units_, other.units_);
    std::swap(length_, other.length_);
    std::swap(capacity_, other.capacity_);
}

} // namespace kelvo
