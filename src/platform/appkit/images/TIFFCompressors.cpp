#include "platform/appkit/images/TIFFCompressors.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

namespace kelvo {

namespace {

constexpr std::uint32_t clearCode = 256;
constexpr std::uint32_t endCode = 257;
constexpr std::uint32_t firstStringCode = 258;
/// Whoever adds this one starts anew.
constexpr std::uint32_t lastStringCode = 4094;
constexpr unsigned leastWidth = 9;
constexpr std::size_t longestRun = 128;

/// Codes of 9 to 12 bits, the most significant first, as many bits as the reader expects who has seen all before.
class CodeWriter {
public:
    explicit CodeWriter(std::vector<std::uint8_t>& out) : out_(out) {}

    void write(std::uint32_t code) {
        bits_ = bits_ << width_ | code;
        for (count_ += width_; count_ >= 8; count_ -= 8)
            out_.push_back(static_cast<std::uint8_t>(bits_ >> (count_ - 8)));
    }
    /// With the new string both sides count one more. TIFF widens the codes one string early.
    std::uint32_t nextString() {
        const std::uint32_t code = next_++;
        if (code == (1U << width_) - 1)
            ++width_;
        return code;
    }
    void startAnew() {
        write(clearCode);
        next_ = firstStringCode;
        width_ = leastWidth;
    }
    void finish() {
        write(endCode);
        if (count_ > 0)
            out_.push_back(static_cast<std::uint8_t>(bits_ << (8 - count_)));
    }

private:
    std::vector<std::uint8_t>& out_;
    std::uint64_t bits_ = 0;
    unsigned count_ = 0;
    unsigned width_ = leastWidth;
    std::uint32_t next_ = firstStringCode;
};

/// Strings by the code of all but their last byte, and that byte. At most a quarter full, because a search that goes on
/// costs more than the room.
class StringTable {
public:
    StringTable() { clear(); }

    void clear() { slots_.fill(empty); }
    /// The slot of that string, or the one where it belongs.
    std::uint32_t& slotOf(std::uint32_t prefix, std::uint8_t last) {
        const std::uint32_t key = prefix << 8 | last;
        std::size_t index = (key * 0x9E3779B1U) >> (32 - indexBits);
        while (slots_[index] != empty && slots_[index] >> codeBits != key)
            index = (index + 1) % slots_.size();
        return slots_[index];
    }
    static bool isEmpty(std::uint32_t slot) { return slot == empty; }
    static std::uint32_t codeOf(std::uint32_t slot) { return slot & ((1U << codeBits) - 1); }
    static std::uint32_t slotWith(std::uint32_t prefix, std::uint8_t last, std::uint32_t code) {
        return (prefix << 8 | last) << codeBits | code;
    }

private:
    static constexpr unsigned indexBits = 14;
    static constexpr unsigned codeBits = 12;
    /// No code is that large.
    static constexpr std::uint32_t empty = std::numeric_limits<std::uint32_t>::max();

    std::array<std::uint32_t, std::size_t{1} << indexBits> slots_;
};

} // namespace

void compressWithLZW(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& out) {
    CodeWriter writer(out);
    writer.startAnew();
    if (!bytes.empty()) {
        StringTable strings;
        std::uint32_t prefix = bytes.front();
        for (const std::uint8_t byte : bytes.subspan(1)) {
            std::uint32_t& slot = strings.slotOf(prefix, byte);
            if (!StringTable::isEmpty(slot)) {
                prefix = StringTable::codeOf(slot);
                continue;
            }
            writer.write(prefix);
            const std::uint32_t code = writer.nextString();
            slot = StringTable::slotWith(prefix, byte, code);
            if (code == lastStringCode) {
                writer.startAnew();
                strings.clear();
            }
            prefix = byte;
        }
        writer.write(prefix);
        // The reader adds a string for it, whether we do or not.
        writer.nextString();
    }
    writer.finish();
}

void compressRowWithPackBits(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& out) {
    const auto runAt = [&](std::size_t at) {
        const std::size_t end = std::min(bytes.size(), at + longestRun);
        std::size_t next = at + 1;
        while (next < end && bytes[next] == bytes[at])
            ++next;
        return next - at;
    };
    for (std::size_t at = 0; at < bytes.size();) {
        if (const std::size_t run = runAt(at); run > 1) {
            out.push_back(static_cast<std::uint8_t>(257 - run));
            out.push_back(bytes[at]);
            at += run;
            continue;
        }
        // Two alike within others are cheaper as they are.
        std::size_t end = at + 1;
        while (end < bytes.size() && end - at < longestRun && runAt(end) < 3)
            ++end;
        out.push_back(static_cast<std::uint8_t>(end - at - 1));
        out.insert(out.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                   bytes.begin() + static_cast<std::ptrdiff_t>(end));
        at = end;
    }
}

} // namespace kelvo
