#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {

enum class ByteOrder : std::uint8_t { big, little };

/// Numbers in the bytes of a file; absent where it has ended.
class ByteReader {
public:
    ByteReader(std::string_view bytes, ByteOrder order) : bytes_(bytes), order_(order) {}

    std::optional<std::uint8_t> number8(std::size_t place) const {
        return place < bytes_.size() ? std::optional(static_cast<std::uint8_t>(bytes_[place])) : std::nullopt;
    }
    std::optional<std::uint16_t> number16(std::size_t place) const {
        const auto value = number(place, 2);
        return value ? std::optional(static_cast<std::uint16_t>(*value)) : std::nullopt;
    }
    std::optional<std::uint32_t> number32(std::size_t place) const { return number(place, 4); }

private:
    std::optional<std::uint32_t> number(std::size_t place, std::size_t size) const {
        if (place > bytes_.size() || bytes_.size() - place < size)
            return std::nullopt;
        std::uint32_t value = 0;
        for (std::size_t index = 0; index < size; ++index) {
            const std::size_t at = order_ == ByteOrder::big ? place + index : place + size - 1 - index;
            value = value << 8 | static_cast<std::uint8_t>(bytes_[at]);
        }
        return value;
    }

    std::string_view bytes_;
    ByteOrder order_;
};

} // namespace kelvo
