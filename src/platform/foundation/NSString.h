#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/Visibility.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace KELVO_PUBLIC kelvo {

/// Immutable UTF-16 text, shared by reference; copying is one counted pointer.
///
/// Default-constructed it is nil. Nil is not the empty string, but both have length 0. Any 16-bit units may
/// occur, U+0000 and unpaired surrogates among them. A handle may be copied and destroyed on any thread.
///
/// Every operation that makes a string throws NSException (NSMallocException) when the contents would pass
/// maximumSizeInBytes.
class NSString {
public:
    NSString() noexcept = default;
    NSString(std::nullptr_t) noexcept {}
    /// NUL-terminated units; a null pointer gives nil.
    NSString(const char16_t* units);
    explicit NSString(std::u16string_view units);
    NSString(const NSString& other) noexcept : rep_(other.rep_) { retain(); }
    NSString(NSString&& other) noexcept : rep_(other.rep_) { other.rep_ = nullptr; }
    NSString& operator=(const NSString& other) noexcept {
        NSString copy(other);
        swap(copy);
        return *this;
    }
    NSString& operator=(NSString&& other) noexcept {
        NSString taken(static_cast<NSString&&>(other));
        swap(taken);
        return *this;
    }
    ~NSString() { release(); }

    /// The shared empty string.
    static const NSString& string();
    /// Nil when the bytes are not well-formed UTF-8.
    static NSString stringWithUTF8String(std::string_view bytes);
    /// Always a string: each ill-formed sequence becomes U+FFFD.
    static NSString stringByRepairingUTF8String(std::string_view bytes);
    /// Latin 1: each byte becomes the unit of the same number.
    static NSString stringWithLatin1Bytes(std::string_view bytes);
    /// Takes over `units`, which malloc made and which holds at least `length` units; nothing is copied. The
    /// block is freed with the string, or at once when this throws. A null pointer with length 0 gives the
    /// empty string.
    static NSString stringWithCharactersNoCopy(char16_t* units, std::size_t length);

    bool isNil() const noexcept { return rep_ == nullptr; }
    /// In UTF-16 code units; 0 for nil.
    std::size_t length() const noexcept { return rep_ ? rep_->length : 0; }
    bool isEmpty() const noexcept { return length() == 0; }
    /// Direct storage, always available, valid as long as any handle on this string; empty for nil.
    std::u16string_view characters() const noexcept {
        return rep_ ? std::u16string_view(rep_->units, rep_->length) : std::u16string_view();
    }
    operator std::u16string_view() const noexcept { return characters(); }
    /// Throws NSException (NSRangeException) at or past the end.
    char16_t characterAtIndex(std::size_t index) const;

    /// The very same object: both nil, or both on the same storage.
    bool isIdenticalTo(const NSString& other) const noexcept { return rep_ == other.rep_; }

    /// Throws NSException (NSRangeException) when the range passes the end. The whole range gives the
    /// receiver.
    NSString substringWithRange(NSRange range) const;
    NSString substringFromIndex(std::size_t index) const;
    NSString substringToIndex(std::size_t index) const;
    /// The receiver and then `tail`. Nil receiver: nil.
    NSString stringByAppendingString(std::u16string_view tail) const;

    /// UTF-8 bytes; each unpaired surrogate becomes U+FFFD. Empty for nil.
    std::string UTF8String() const;

    void swap(NSString& other) noexcept {
        Rep* rep = rep_;
        rep_ = other.rep_;
        other.rep_ = rep;
    }

    /// Unit by unit. Nil equals nil alone, not the empty string.
    friend bool operator==(const NSString& left, const NSString& right) noexcept {
        return left.rep_ == right.rep_ ||
               (left.rep_ && right.rep_ && left.characters() == right.characters());
    }
    friend bool operator==(const NSString& left, const char16_t* right) {
        return right ? !left.isNil() && left.characters() == right : left.isNil();
    }

private:
    /// What is not well-formed becomes U+FFFD.
    static NSString stringByDecodingUTF8(std::string_view bytes, bool* hadErrors);
    // The units follow the header in one block, or in a malloc block of their own that was taken over.
    struct Rep {
        std::atomic<std::uint32_t> references;
        std::size_t length;
        const char16_t* units;
        void* ownedBlock;
    };

    explicit NSString(Rep* rep) noexcept : rep_(rep) {}
    static Rep* makeRep(std::size_t length, char16_t** units);
    static void destroy(Rep* rep) noexcept;
    void retain() const noexcept {
        if (rep_)
            rep_->references.fetch_add(1, std::memory_order_relaxed);
    }
    void release() noexcept {
        if (rep_ && rep_->references.fetch_sub(1, std::memory_order_acq_rel) == 1)
            destroy(rep_);
    }

    Rep* rep_ = nullptr;
};

/// UTF-8 bytes of any units; each unpaired surrogate becomes U+FFFD.
KELVO_PUBLIC std::string UTF8StringOfCharacters(std::u16string_view units);

/// `count` times `unitSizeInBytes`; throws NSException (NSMallocException) when that passes
/// maximumSizeInBytes.
KELVO_PUBLIC std::size_t checkedSizeInBytes(std::size_t count, std::size_t unitSizeInBytes);

} // namespace kelvo

template <>
struct std::hash<kelvo::NSString> {
    std::size_t operator()(const kelvo::NSString& string) const noexcept {
        return std::hash<std::u16string_view>()(string.characters());
    }
};
