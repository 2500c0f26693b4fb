#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <string_view>

namespace KELVO_PUBLIC kelvo {

/// UTF-16 text that can be changed, in a growable buffer that this object alone owns. Default-constructed it
/// is nil: changing nil does nothing. Copying copies the text. Not for use from two threads at once.
///
/// Growing throws NSException (NSMallocException) when the contents would pass maximumSizeInBytes.
class NSMutableString {
public:
    NSMutableString() noexcept = default;
    NSMutableString(std::nullptr_t) noexcept {}
    /// A mutable copy of the text; nil gives nil.
    explicit NSMutableString(const NSString& string);
    NSMutableString(const NSMutableString& other);
    NSMutableString(NSMutableString&& other) noexcept { swap(other); }
    NSMutableString& operator=(NSMutableString other) noexcept {
        swap(other);
        return *this;
    }
    ~NSMutableString();

    /// An empty string.
    static NSMutableString string() { return stringWithCapacity(0); }
    /// An empty string with room for that many units. Pages of a large reserve that are never written never
    /// become resident.
    static NSMutableString stringWithCapacity(std::size_t capacityInUnits);
    static NSMutableString stringWithCharacters(std::u16string_view units);

    bool isNil() const noexcept { return units_ == nullptr; }
    std::size_t length() const noexcept { return length_; }
    bool isEmpty() const noexcept { return length_ == 0; }
    std::size_t capacity() const noexcept { return capacity_; }
    /// Valid until the next change.
    std::u16string_view characters() const noexcept { return {units_, length_}; }
    operator std::u16string_view() const noexcept { return characters(); }
    /// The same units for writing in place; null for nil.
    char16_t* mutableCharacters() noexcept { return units_; }

    void appendString(std::u16string_view tail);
    void appendCharacter(char16_t unit) {
        if (length_ == capacity_)
            makeRoom(1);
        if (units_)
            units_[length_++] = unit;
    }
    /// These throw NSException (NSRangeException) when the range or index passes the end.
    void insertString_atIndex(std::u16string_view text, std::size_t index);
    void deleteCharactersInRange(NSRange range);
    void replaceCharactersInRange_withString(NSRange range, std::u16string_view text);
    void setString(std::u16string_view text);
    /// Makes the text that many units long; new units are unset and must be written before they are read.
    void setLength(std::size_t lengthInUnits);
    /// Room for that many units in all.
    void reserve(std::size_t capacityInUnits);

    /// An immutable copy; nil gives nil.
    NSString copy() const;
    /// The text as an immutable string without copying it; the receiver is nil afterwards.
    NSString takeString() noexcept(false);
    std::string UTF8String() const { return UTF8StringOfCharacters(characters()); }

    void swap(NSMutableString& other) noexcept;

    /// Unit by unit. Nil equals nil alone.
    friend bool operator==(const NSMutableString& left, const NSMutableString& right) noexcept {
        return left.isNil() == right.isNil() && left.characters() == right.characters();
    }
    friend bool operator==(const NSMutableString& left, const char16_t* right) {
        return right ? !left.isNil() && left.characters() == right : left.isNil();
    }

private:
    void makeRoom(std::size_t additionalUnits);
    bool overlaps(std::u16string_view text) const noexcept;

    char16_t* units_ = nullptr;
    std::size_t length_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace kelvo
