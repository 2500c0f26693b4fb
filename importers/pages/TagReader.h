#pragma once

#include "platform/foundation/units/ASCII.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace kelvo::importers {

/// A name of an element or attribute in lower case, which compares with text; empty when it is longer than any that
/// matters or not ASCII.
class LowerCaseName {
public:
    LowerCaseName() = default;
    explicit LowerCaseName(std::u16string_view name) {
        if (name.size() > characters_.size())
            return;
        for (const char16_t unit : name) {
            if (unit >= 0x80) {
                length_ = 0;
                return;
            }
            characters_[length_++] = static_cast<char>(asciiLowerCase(unit));
        }
    }

    operator std::string_view() const { return {characters_.data(), length_}; }
    friend bool operator==(const LowerCaseName& name, std::string_view text) {
        return std::string_view(name) == text;
    }

private:
    std::array<char, 24> characters_{};
    std::size_t length_ = 0;
};

struct TagAttribute {
    LowerCaseName name;
    /// As it stands in the tag; empty for an attribute without a value, too.
    std::u16string_view value;
};

/// The attributes of a tag one after the other, as browsers tell them apart; each part of the tag is passed once. What
/// the markup's other readers cannot tell is that an attribute is there which has no value.
class TagReader {
public:
    /// From "<" to ">".
    explicit TagReader(std::u16string_view tag);
    /// False when there is none left.
    bool takeAttribute(TagAttribute& attribute);

private:
    void skip(std::u16string_view units);
    std::u16string_view take(std::size_t length);

    std::u16string_view rest_;
};

} // namespace kelvo::importers
