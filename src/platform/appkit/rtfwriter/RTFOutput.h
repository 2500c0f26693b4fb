#pragma once

#include "platform/foundation/LargePages.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {

/// Lengths in twips (1/20 point), rounded; what no page could hold is held at a million.
std::int32_t rtfTwips(double points);
/// `value` times `factor`, rounded and held within ±limit; 0 for not-a-number.
std::int32_t rtfNumber(double value, double factor, std::int32_t limit = 1'000'000);

/// RTF source under construction: 7-bit bytes.
class RTFOutput {
public:
    const std::string& bytes() const noexcept { return bytes_; }
    std::string takeBytes() { return std::move(bytes_); }
    std::size_t size() const noexcept { return bytes_.size(); }
    void reserve(std::size_t sizeInBytes) {
        bytes_.reserve(sizeInBytes);
        preferLargePages(bytes_.data(), bytes_.capacity());
    }
    void clear() {
        bytes_.clear();
        needsDelimiter_ = false;
    }

    /// Braces and the like, as they are. What ends in a control word is written with word().
    void raw(std::string_view source) {
        bytes_ += source;
        needsDelimiter_ = false;
    }
    /// `name` without the backslash.
    void word(std::string_view name) {
        bytes_.push_back('\\');
        bytes_ += name;
        needsDelimiter_ = true;
    }
    void word(std::string_view name, std::int32_t parameter);
    /// Puts what another output holds before everything.
    void prepend(const RTFOutput& other) { bytes_.insert(0, other.bytes_); }
    /// The words that another output holds.
    void words(const RTFOutput& other) {
        bytes_ += other.bytes_;
        needsDelimiter_ = other.needsDelimiter_;
    }
    /// Text of the document, any units: a line feed becomes the end of a paragraph, U+2028 and U+000C their
    /// words. Throws NSException (NSMallocException) when the source passes maximumSizeInBytes.
    void text(std::u16string_view units);
    /// Any units that are not of the text itself: names, titles, addresses.
    void string(std::u16string_view units);
    /// Bytes of a file's name: those that are not printable ASCII as hexadecimal.
    void fileName(std::string_view name);

private:
    void delimit() {
        if (needsDelimiter_)
            bytes_.push_back(' ');
        needsDelimiter_ = false;
    }

    std::string bytes_;
    bool needsDelimiter_ = false;
};

} // namespace kelvo
