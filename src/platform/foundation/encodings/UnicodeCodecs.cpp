#include "platform/foundation/encodings/EncodingTable.h"
#include "platform/foundation/encodings/TextCodec.h"
#include "platform/foundation/units/UTF8.h"
#include "platform/foundation/units/VectorScan.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace kelvo {

namespace {

constexpr char16_t replacement = 0xFFFD;

class UTF8Codec final : public TextCodec {
public:
    // A byte-order mark is a character.
    Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) override {
        const UTF8Decoding decoding = decodeUTF8(bytes, units, capacity);
        return {decoding.bytesRead, decoding.unitsWritten, decoding.hadErrors,
                decoding.bytesRead < bytes.size()};
    }

    std::size_t encode(std::u16string_view units, std::string& bytes, bool) override {
        const std::size_t start = bytes.size();
        bytes.resize(start + units.size() * 3);
        const UTF8Encoding encoding =
            encodeUTF8(units, reinterpret_cast<std::uint8_t*>(bytes.data()) + start);
        bytes.resize(start + encoding.bytesWritten);
        return encoding.unitsRead;
    }
};

// Little-endian, big-endian, or as the byte-order mark says.
enum class Order : std::uint8_t { Little, Big, Marked };

constexpr Order ownOrder = std::endian::native == std::endian::little ? Order::Little : Order::Big;

// UTF-16 and UTF-32. A marked text without a mark is big-endian; a mark is taken off. Bytes are written in
// the machine's own order where the encoding does not say which. An unpaired surrogate in UTF-16 is kept as
// it is.
template <class Unit>
class WideCodec final : public TextCodec {
public:
    explicit WideCodec(Order order) : order_(order) { WideCodec::reset(); }

    Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) override {
        constexpr std::size_t size = sizeof(Unit);
        Progress progress;
        std::size_t read = 0;
        if (isAtStart_ && order_ == Order::Marked && bytes.size() >= size) {
            if (unitAt(bytes, 0) == 0xFEFF) {
                read = size;
            } else if (swapped(unitAt(bytes, 0)) == 0xFEFF) {
                isSwapped_ = !isSwapped_;
                read = size;
            }
        }
        if (!bytes.empty())
            isAtStart_ = false;
        std::size_t written = 0;
        if constexpr (size == 2) {
            const std::size_t count = std::min((bytes.size() - read) / size, capacity);
            if (count > 0)
                std::memcpy(units, bytes.data() + read, count * size);
            if (isSwapped_)
                for (std::size_t index = 0; index < count; ++index)
                    units[index] = static_cast<char16_t>(units[index] << 8 | units[index] >> 8);
            written = count;
            // Half a pair at the end of the room waits for the other half.
            if (count == capacity && count > 0 && U16_IS_LEAD(units[count - 1]) &&
                bytes.size() - read - count * size >= size &&
                U16_IS_TRAIL(unitAt(bytes, read + count * size)))
                --written;
            read += written * size;
        } else {
            for (; bytes.size() - read >= size && written < capacity; read += size) {
                std::uint32_t character = unitAt(bytes, read);
                if (character > 0x10FFFF || U_IS_SURROGATE(character)) {
                    character = replacement;
                    progress.hadErrors = true;
                }
                if (character > 0xFFFF && capacity - written < 2)
                    break;
                U16_APPEND_UNSAFE(units, written, character);
            }
        }
        const std::size_t left = bytes.size() - read;
        if (left > 0 && left < size && written < capacity) {
            units[written++] = replacement;
            progress.hadErrors = true;
            read = bytes.size();
        }
        progress.bytesRead = read;
        progress.unitsWritten = written;
        progress.isOutputFull = read < bytes.size();
        return progress;
    }

    std::size_t encode(std::u16string_view units, std::string& bytes, bool) override {
        const bool isSwappedHere = order_ != Order::Marked && order_ != ownOrder;
        const std::size_t start = bytes.size();
        bytes.resize(start + units.size() * sizeof(Unit));
        char* target = bytes.data() + start;
        std::size_t read = 0;
        while (read < units.size()) {
            std::size_t next = read;
            UChar32 character = units[next++];
            if constexpr (sizeof(Unit) == 4) {
                next = read;
                U16_NEXT(units.data(), next, units.size(), character);
                if (U_IS_SURROGATE(character))
                    break;
            }
            const Unit unit =
                isSwappedHere ? swapped(static_cast<Unit>(character)) : static_cast<Unit>(character);
            std::memcpy(target, &unit, sizeof(unit));
            target += sizeof(unit);
            read = next;
        }
        bytes.resize(static_cast<std::size_t>(target - bytes.data()));
        return read;
    }

    std::string_view preamble() const override {
        static constexpr Unit mark = 0xFEFF;
        return order_ == Order::Marked ? std::string_view(reinterpret_cast<const char*>(&mark), sizeof(mark))
                                       : std::string_view();
    }

    void reset() override {
        isAtStart_ = true;
        isSwapped_ = (order_ == Order::Little ? Order::Little : Order::Big) != ownOrder;
    }

private:
    static Unit swapped(Unit unit) {
        if constexpr (sizeof(Unit) == 2)
            return __builtin_bswap16(unit);
        else
            return __builtin_bswap32(unit);
    }

    Unit unitAt(std::span<const std::uint8_t> bytes, std::size_t index) const {
        Unit unit;
        std::memcpy(&unit, bytes.data() + index, sizeof(unit));
        return isSwapped_ ? swapped(unit) : unit;
    }

    Order order_;
    bool isAtStart_ = true;
    bool isSwapped_ = false;
};

} // namespace

std::unique_ptr<TextCodec> makeUnicodeCodec(const EncodingRow& row) {
    using Kind = EncodingRow::Kind;
    switch (row.kind) {
    case Kind::UTF8:
        return std::make_unique<UTF8Codec>();
    case Kind::UTF16:
        return std::make_unique<WideCodec<std::uint16_t>>(Order::Marked);
    case Kind::UTF16BE:
        return std::make_unique<WideCodec<std::uint16_t>>(Order::Big);
    case Kind::UTF16LE:
        return std::make_unique<WideCodec<std::uint16_t>>(Order::Little);
    case Kind::UTF32:
        return std::make_unique<WideCodec<std::uint32_t>>(Order::Marked);
    case Kind::UTF32BE:
        return std::make_unique<WideCodec<std::uint32_t>>(Order::Big);
    case Kind::UTF32LE:
        return std::make_unique<WideCodec<std::uint32_t>>(Order::Little);
    default:
        return nullptr;
    }
}

} // namespace kelvo
