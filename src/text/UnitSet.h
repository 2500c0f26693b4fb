#pragma once

#include "platform/foundation/units/UnitScan.h"
#include "text/UnitBitmap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {

/// The units of a list that comes with a call: a few stay a list, and a bitmap, which costs more to fill than a short
/// text to look through, is made of many. Copies what it is given.
class UnitSet {
public:
    /// `textLength`: how many units are going to be looked at.
    explicit UnitSet(std::size_t textLength) : limit_(textLength <= shortText ? most : atOnce) {}
    UnitSet(std::u16string_view members, std::size_t textLength) : UnitSet(textLength) {
        for (const char16_t unit : members)
            add(unit);
    }

    void add(char16_t unit) {
        if (!bitmap_ && (isListed(unit) || list(unit)))
            return;
        if (!bitmap_) {
            bitmap_.emplace();
            for (std::size_t index = 0; index < count_; ++index)
                bitmap_->add(units_[index]);
        }
        bitmap_->add(unit);
    }

    bool contains(char16_t unit) const {
        return bitmap_ ? unitIsInBitmap(bitmap_->rep(), unit) : isListed(unit);
    }

    /// The first member among the units, else their count.
    std::size_t firstIn(const char16_t* units, std::size_t count) const {
        if (bitmap_)
            return firstUnitInBitmap(units, count, bitmap_->rep());
        if (count_ == 0)
            return count;
        if (count_ <= atOnce)
            return firstUnitEqualTo(units, count, listed());
        std::size_t index = 0;
        while (index < count && !isListed(units[index]))
            ++index;
        return index;
    }

    /// Removes the members in place; the number of units that are left.
    std::size_t removeFrom(char16_t* units, std::size_t count) const {
        const std::size_t first = firstIn(units, count);
        if (count - first > shortText && !bitmap_) {
            UnitBitmap bitmap;
            for (std::size_t index = 0; index < count_; ++index)
                bitmap.add(units_[index]);
            return removeWhere(units, first, count,
                               [&](char16_t unit) { return unitIsInBitmap(bitmap.rep(), unit); });
        }
        return removeWhere(units, first, count, [&](char16_t unit) { return contains(unit); });
    }

    /// The same from `first` on, for anything that tells what goes.
    template <class Goes>
    static std::size_t removeWhere(char16_t* units, std::size_t first, std::size_t count, Goes goes) {
        std::size_t kept = first;
        for (std::size_t index = first; index < count; ++index) {
            const char16_t unit = units[index];
            // Storing first and advancing by the test costs less than a branch that no one can predict.
            units[kept] = unit;
            kept += !goes(unit);
        }
        return kept;
    }

private:
    /// What one scan looks for at once, and past what a list is slower than a bitmap even on short texts.
    static constexpr std::size_t atOnce = 4, most = 16;
    static constexpr std::size_t shortText = 128;

    bool isListed(char16_t unit) const {
        if (!(lowBits_ >> (unit & 63) & 1))
            return false;
        for (std::size_t index = 0; index < count_; ++index)
            if (units_[index] == unit)
                return true;
        return false;
    }
    bool list(char16_t unit) {
        if (count_ == limit_)
            return false;
        units_[count_++] = unit;
        lowBits_ |= std::uint64_t{1} << (unit & 63);
        return true;
    }
    UnitsToFind listed() const {
        const auto at = [&](std::size_t index) { return units_[index < count_ ? index : 0]; };
        return {{at(0), at(1), at(2), at(3)}, static_cast<unsigned>(count_)};
    }

    std::array<char16_t, most> units_;
    std::size_t count_ = 0;
    /// The lowest six bits of each, most of the time all that is needed to see that a unit is not listed.
    std::uint64_t lowBits_ = 0;
    std::size_t limit_;
    std::optional<UnitBitmap> bitmap_;
};

} // namespace kelvo
