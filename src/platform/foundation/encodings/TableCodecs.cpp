#include "platform/foundation/encodings/EncodingPages.h"
#include "platform/foundation/encodings/EncodingTable.h"
#include "platform/foundation/encodings/TextCodec.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/foundation/units/VectorScan.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr char16_t replacement = 0xFFFD;

// From units back to codes in two steps: the high byte finds a block of 256. 0 stands for no code; code 0
// itself is never asked for.
class ReverseTable {
public:
    explicit ReverseTable(bool prefersLast) : prefersLast_(prefersLast) {}

    void add(char16_t unit, std::uint16_t code) {
        std::uint8_t& block = blockOfHighByte_[unit >> 8];
        if (block == 0) {
            blocks_.emplace_back();
            block = static_cast<std::uint8_t>(blocks_.size());
        }
        std::uint16_t& entry = blocks_[block - 1u][unit & 0xFF];
        if (entry == 0 || prefersLast_)
            entry = code;
    }

    std::uint16_t codeOf(char16_t unit) const {
        const std::uint8_t block = blockOfHighByte_[unit >> 8];
        return block == 0 ? std::uint16_t(0) : blocks_[block - 1u][unit & 0xFF];
    }

private:
    std::array<std::uint8_t, 256> blockOfHighByte_{};
    std::vector<std::array<std::uint16_t, 256>> blocks_;
    bool prefersLast_;
};

// A converter that decodes one character at a time, to draw tables from.
class Sampler {
public:
    explicit Sampler(const char* icuName) {
        UErrorCode status = U_ZERO_ERROR;
        converter_ = ucnv_open(icuName, &status);
        if (converter_)
            ucnv_setToUCallBack(converter_, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    }
    Sampler(const Sampler&) = delete;
    Sampler& operator=(const Sampler&) = delete;
    ~Sampler() { ucnv_close(converter_); }

    bool isOpen() const { return converter_ != nullptr; }
    bool isSingleByte() const { return ucnv_getMaxCharSize(converter_) == 1; }

    // U+FFFD when the bytes are not one character of the basic plane.
    char16_t characterOf(std::span<const std::uint8_t> bytes) const {
        char16_t units[4];
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length =
            ucnv_toUChars(converter_, units, 4, reinterpret_cast<const char*>(bytes.data()),
                          static_cast<std::int32_t>(bytes.size()), &status);
        return U_SUCCESS(status) && length == 1 ? units[0] : replacement;
    }

private:
    UConverter* converter_ = nullptr;
};

struct Page {
    std::array<char16_t, 256> units;
    ReverseTable bytes;
    bool isASCIICompatible = true;
    bool isLatin1 = true;
    std::vector<std::pair<std::uint8_t, std::u16string_view>> sequences;

    Page(const std::array<char16_t, 256>& table, bool prefersLast) : units(table), bytes(prefersLast) {
        for (std::size_t byte = 0; byte < units.size(); ++byte) {
            if (units[byte] != replacement)
                bytes.add(units[byte], static_cast<std::uint16_t>(byte));
            isLatin1 = isLatin1 && units[byte] == byte;
            isASCIICompatible = isASCIICompatible && (byte >= 0x80 || units[byte] == byte);
            if (const auto sequence = encodingPageSequence(units[byte]); !sequence.empty())
                sequences.emplace_back(static_cast<std::uint8_t>(byte), sequence);
        }
    }
};

class PageCodec final : public TextCodec {
public:
    explicit PageCodec(const Page& page) : page_(page) {}

    Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) override {
        if (!page_.sequences.empty())
            return decodeWithSequences(bytes, units, capacity);
        // So much is ASCII alone where looking for more of it is worth the entry.
        constexpr std::size_t block = 32;
        const auto isASCII = [](const std::uint8_t* bytesOfBlock) {
            std::array<std::uint64_t, block / sizeof(std::uint64_t)> words;
            std::memcpy(words.data(), bytesOfBlock, sizeof words);
            return ((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080) == 0;
        };
        Progress progress;
        const std::size_t length = std::min(bytes.size(), capacity);
        const std::uint8_t* source = bytes.data();
        std::size_t index = 0;
        if (page_.isLatin1) {
            widenBytes(source, length, units);
            index = length;
        }
        unsigned undefined = 0;
        for (; length - index >= block; index += block) {
            if (page_.isASCIICompatible && isASCII(source + index)) {
                index += widenASCIIPrefix(source + index, length - index, units + index);
                if (length - index < block)
                    break;
            }
            char16_t* const target = units + index;
            for (std::size_t place = 0; place < block; ++place)
                target[place] = page_.units[source[index + place]];
            // By themselves these comparisons become a few of vectors.
            for (std::size_t place = 0; place < block; ++place)
                undefined |= target[place] == replacement;
        }
        for (; index < length; ++index) {
            units[index] = page_.units[source[index]];
            undefined |= units[index] == replacement;
        }
        progress.hadErrors = undefined != 0;
        progress.bytesRead = progress.unitsWritten = length;
        progress.isOutputFull = length < bytes.size();
        return progress;
    }

    std::size_t encode(std::u16string_view units, std::string& bytes, bool isEnd) override {
        if (page_.sequences.empty())
            return encodeHere(units, bytes);
        // The beginning of a sequence waits for the next call to see whether the sequence goes on.
        if (heldUnit_ != 0) {
            std::u16string joined(1, std::exchange(heldUnit_, u'\0'));
            joined += units;
            const std::size_t taken = encode(joined, bytes, isEnd);
            if (taken > 0)
                return taken - 1;
            encodeHere(u"?", bytes);
        }
        const bool isHeld = !isEnd && !units.empty() && beginsSequence(units.back());
        const std::size_t length = units.size() - (isHeld ? 1 : 0);
        const std::size_t taken = encodeHere(units.substr(0, length), bytes);
        if (!isHeld || taken < length)
            return taken;
        heldUnit_ = units.back();
        return units.size();
    }

    void reset() override { heldUnit_ = 0; }

    std::size_t mostUnitsPerByte() const override { return page_.sequences.empty() ? 1 : 2; }

private:
    std::size_t encodeHere(std::u16string_view units, std::string& bytes) const {
        const std::size_t start = bytes.size();
        bytes.resize(start + units.size());
        auto* target = reinterpret_cast<std::uint8_t*>(bytes.data()) + start;
        std::size_t read = 0;
        std::size_t written = 0;
        while (read < units.size()) {
            if (page_.isASCIICompatible && units[read] < 0x80) {
                const std::size_t ascii =
                    narrowASCIIPrefix(units.data() + read, units.size() - read, target + written);
                read += ascii;
                written += ascii;
                continue;
            }
            const std::size_t sequenceLength = sequenceAt(units.substr(read), target[written]);
            if (sequenceLength > 0) {
                read += sequenceLength;
                ++written;
                continue;
            }
            const std::uint16_t byte = isNoncharacter(units[read]) ? 0 : page_.bytes.codeOf(units[read]);
            if (byte == 0 && units[read] != page_.units[0])
                break;
            target[written++] = static_cast<std::uint8_t>(byte);
            ++read;
        }
        bytes.resize(start + written);
        return read;
    }

    static bool isNoncharacter(char16_t unit) { return unit >= 0xFDD0 && unit <= 0xFDEF; }

    Progress decodeWithSequences(std::span<const std::uint8_t> bytes, char16_t* units,
                                 std::size_t capacity) const {
        Progress progress;
        std::size_t written = 0;
        while (progress.bytesRead < bytes.size()) {
            const std::span<const std::uint8_t> rest = bytes.subspan(progress.bytesRead);
            if (page_.isASCIICompatible && rest[0] < 0x80 && written < capacity) {
                const std::size_t ascii =
                    widenASCIIPrefix(rest.data(), std::min(rest.size(), capacity - written), units + written);
                progress.bytesRead += ascii;
                written += ascii;
                continue;
            }
            const char16_t unit = page_.units[rest[0]];
            const std::u16string_view sequence = encodingPageSequence(unit);
            if (capacity - written < std::max<std::size_t>(sequence.size(), 1)) {
                progress.isOutputFull = true;
                break;
            }
            if (sequence.empty())
                units[written++] = unit;
            else
                written += sequence.copy(units + written, sequence.size());
            progress.hadErrors = progress.hadErrors || unit == replacement;
            ++progress.bytesRead;
        }
        progress.unitsWritten = written;
        return progress;
    }

    // The length of the sequence at the beginning of the units that one byte stands for, or 0.
    std::size_t sequenceAt(std::u16string_view units, std::uint8_t& target) const {
        for (const auto& [byte, sequence] : page_.sequences)
            if (units.starts_with(sequence)) {
                target = byte;
                return sequence.size();
            }
        return 0;
    }

    bool beginsSequence(char16_t unit) const {
        return std::any_of(page_.sequences.begin(), page_.sequences.end(),
                           [unit](const auto& pair) { return pair.second.starts_with(unit); });
    }

    const Page& page_;
    char16_t heldUnit_ = 0;
};

constexpr std::size_t rowLength = 94;

// A bare set: each character is a row and a cell from 21 to 7E.
struct PairSet {
    std::vector<char16_t> units = std::vector<char16_t>(rowLength * rowLength, replacement);
    ReverseTable codes{false};
    // The bit that is set in the bytes that are written; both kinds are read.
    std::uint8_t highBit = 0;

    PairSet(const Sampler& sampler, std::uint8_t samplerBit, std::uint8_t writtenBit) : highBit(writtenBit) {
        for (std::size_t row = 0; row < rowLength; ++row)
            for (std::size_t cell = 0; cell < rowLength; ++cell) {
                const std::uint8_t bytes[] = {static_cast<std::uint8_t>((row + 0x21) | samplerBit),
                                              static_cast<std::uint8_t>((cell + 0x21) | samplerBit)};
                const char16_t unit = sampler.characterOf(bytes);
                if (unit == replacement)
                    continue;
                units[row * rowLength + cell] = unit;
                codes.add(unit, static_cast<std::uint16_t>((row + 0x21) << 8 | (cell + 0x21)));
            }
    }
};

// Controls and spaces, which the sets do not have, stand for themselves, so that lines stay lines.
class PairCodec final : public TextCodec {
public:
    explicit PairCodec(const PairSet& set) : set_(set) {}

    Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) override {
        Progress progress;
        std::size_t read = 0;
        std::size_t written = 0;
        for (; read < bytes.size() && written < capacity; ++written) {
            const std::uint8_t first = bytes[read++];
            if (first <= 0x20) {
                units[written] = first;
                continue;
            }
            units[written] = replacement;
            const std::uint8_t half = first & 0x80;
            const std::size_t row = (first & 0x7Fu) - 0x21u;
            const std::size_t cell = read < bytes.size() && (bytes[read] & 0x80) == half
                                         ? (bytes[read] & 0x7Fu) - 0x21u
                                         : rowLength;
            if (row < rowLength && cell < rowLength) {
                units[written] = set_.units[row * rowLength + cell];
                ++read;
            }
            progress.hadErrors = progress.hadErrors || units[written] == replacement;
        }
        progress.bytesRead = read;
        progress.unitsWritten = written;
        progress.isOutputFull = read < bytes.size();
        return progress;
    }

    std::size_t encode(std::u16string_view units, std::string& bytes, bool) override {
        for (std::size_t read = 0; read < units.size(); ++read) {
            if (units[read] <= 0x20) {
                bytes.push_back(static_cast<char>(units[read]));
                continue;
            }
            const std::uint16_t code = set_.codes.codeOf(units[read]);
            if (code == 0)
                return read;
            bytes.push_back(static_cast<char>(code >> 8 | set_.highBit));
            bytes.push_back(static_cast<char>((code & 0xFF) | set_.highBit));
        }
        return units.size();
    }

private:
    const PairSet& set_;
};

// ASCII with escapes: \\ for the backslash, \ooo (octal) for U+0080 to U+00FF, \uhhhh for every other unit.
class NonLossyASCIICodec final : public TextCodec {
public:
    // In what only looks like an escape the backslash becomes U+FFFD, and the rest stands for itself.
    Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) override {
        Progress progress;
        std::size_t read = 0;
        std::size_t written = 0;
        for (; read < bytes.size() && written < capacity; ++written) {
            const std::uint8_t byte = bytes[read];
            if (byte < 0x80 && byte != '\\') {
                units[written] = byte;
                ++read;
                continue;
            }
            const Escape escape = byte == '\\' ? escapeAt(bytes.subspan(read)) : Escape{};
            units[written] = escape.unit;
            progress.hadErrors = progress.hadErrors || escape.length == 0;
            read += std::max<std::size_t>(escape.length, 1);
        }
        progress.bytesRead = read;
        progress.unitsWritten = written;
        progress.isOutputFull = read < bytes.size();
        return progress;
    }

    std::size_t encode(std::u16string_view units, std::string& bytes, bool) override {
        for (char16_t unit : units) {
            if (unit == u'\\') {
                bytes += "\\\\";
            } else if (unit < 0x80) {
                bytes.push_back(static_cast<char>(unit));
            } else if (unit < 0x100) {
                bytes.push_back('\\');
                for (int shift = 6; shift >= 0; shift -= 3)
                    bytes.push_back(lowerHexDigits[unit >> shift & 7]);
            } else {
                bytes += "\\u";
                for (int shift = 12; shift >= 0; shift -= 4)
                    bytes.push_back(lowerHexDigits[unit >> shift & 15]);
            }
        }
        return units.size();
    }

private:
    struct Escape {
        std::size_t length = 0;
        char16_t unit = replacement;
    };

    static Escape numberAt(std::span<const std::uint8_t> digits, std::size_t start, std::size_t count,
                           unsigned base) {
        if (digits.size() < start + count)
            return {};
        unsigned number = 0;
        for (std::uint8_t digit : digits.subspan(start, count)) {
            const int value = hexDigitValue(digit);
            if (value < 0 || value >= static_cast<int>(base))
                return {};
            number = number * base + static_cast<unsigned>(value);
        }
        if (base == 8 && number > 0xFF)
            return {};
        return {start + count, static_cast<char16_t>(number)};
    }

    static Escape escapeAt(std::span<const std::uint8_t> bytes) {
        if (bytes.size() < 2)
            return {};
        if (bytes[1] == '\\')
            return {2, u'\\'};
        return bytes[1] == 'u' ? numberAt(bytes, 2, 4, 16) : numberAt(bytes, 1, 3, 8);
    }
};

std::unique_ptr<Page> pageFromICU(const char* name) {
    const Sampler sampler(name);
    if (!sampler.isOpen() || !sampler.isSingleByte())
        return nullptr;
    std::array<char16_t, 256> units;
    for (std::size_t byte = 0; byte < units.size(); ++byte) {
        const auto sample = static_cast<std::uint8_t>(byte);
        units[byte] = sampler.characterOf({&sample, 1});
    }
    // The vendor's own tables for its DOS pages exchange three controls. Files do not.
    bool hasASCII = true;
    for (std::size_t byte = 0x20; byte < 0x7F; ++byte)
        hasASCII = hasASCII && units[byte] == byte;
    for (std::size_t byte : {0x1A, 0x1C, 0x7F})
        if (hasASCII)
            units[byte] = static_cast<char16_t>(byte);
    return std::make_unique<Page>(units, false);
}

std::unique_ptr<Page> pageFromIconv(const char* name) {
    const auto codec = makeIconvCodec(name);
    if (!codec)
        return nullptr;
    std::array<char16_t, 256> units;
    for (std::size_t byte = 0; byte < units.size(); ++byte) {
        const auto sample = static_cast<std::uint8_t>(byte);
        units[byte] = replacement;
        codec->decode({&sample, 1}, &units[byte], 1);
    }
    return std::make_unique<Page>(units, false);
}

std::unique_ptr<Page> makePage(const EncodingRow& row) {
    switch (row.kind) {
    case EncodingRow::Kind::ICU:
        return pageFromICU(row.source);
    case EncodingRow::Kind::IconvPage:
        return pageFromIconv(row.source);
    default:
        if (const auto units = ownEncodingPage(row.encoding))
            return std::make_unique<Page>(*units, encodingPagePrefersLastByte(row.encoding));
        return nullptr;
    }
}

std::unique_ptr<PairSet> makePairSet(const EncodingRow& row) {
    const Sampler sampler(row.source);
    if (!sampler.isOpen())
        return nullptr;
    // The converters for several sets at once, and the one for Korean, know the pairs by their high bits.
    const bool isShifted =
        std::string_view(row.source).starts_with("EUC") || row.encoding == kCFStringEncodingKSC_5601_87;
    return std::make_unique<PairSet>(sampler, isShifted ? 0x80 : 0,
                                     row.encoding == kCFStringEncodingKSC_5601_87 ? 0x80 : 0);
}

// Tables are drawn at first use and stay.
template <class Table, std::unique_ptr<Table> (*make)(const EncodingRow&)>
const Table* tableFor(const EncodingRow& row) {
    static std::mutex mutex;
    static std::map<CFStringEncoding, std::unique_ptr<Table>> tables;
    const std::lock_guard lock(mutex);
    const auto found = tables.find(row.encoding);
    return (found != tables.end() ? found : tables.emplace(row.encoding, make(row)).first)->second.get();
}

} // namespace

std::unique_ptr<TextCodec> makeTableCodec(const EncodingRow& row) {
    if (row.kind == EncodingRow::Kind::Pairs) {
        const PairSet* set = tableFor<PairSet, makePairSet>(row);
        return set ? std::make_unique<PairCodec>(*set) : nullptr;
    }
    const Page* page = tableFor<Page, makePage>(row);
    return page ? std::make_unique<PageCodec>(*page) : nullptr;
}

std::unique_ptr<TextCodec> makeNonLossyASCIICodec() {
    return std::make_unique<NonLossyASCIICodec>();
}

} // namespace kelvo
