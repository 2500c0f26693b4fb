#include "platform/imageio/engine/JPEGPasses.h"

#include "platform/imageio/engine/ByteReader.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kelvo {
namespace {

constexpr std::uint8_t scanMarker = 0xDA;

bool isFrame(std::uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// How much of the frame of a JPEG there is, of all its channels.
std::uint64_t coefficientBytesOfFrame(const ByteReader& reader, std::size_t frame, std::size_t channels) {
    std::uint64_t samples = 0;
    std::uint64_t densest = 1;
    for (std::size_t channel = 0; channel < channels; ++channel) {
        const std::uint8_t factors = reader.number8(frame + 11 + 3 * channel).value_or(0x11);
        const std::uint64_t density = static_cast<std::uint64_t>(factors >> 4U) * (factors & 0xFU);
        samples += density;
        densest = std::max(densest, density);
    }
    const std::uint64_t pixels =
        std::uint64_t{reader.number16(frame + 5).value_or(0)} * reader.number16(frame + 7).value_or(0);
    return pixels * samples / densest * sizeof(std::int16_t);
}

/// Where the pixels of a pass end: at the next marker that does not belong to them.
std::size_t endOfPass(std::string_view bytes, std::size_t place) {
    for (;;) {
        place = bytes.find('\xFF', place);
        if (place == bytes.npos || place + 1 >= bytes.size())
            return bytes.size();
        const auto next = static_cast<std::uint8_t>(bytes[place + 1]);
        const bool isRestart = next >= 0xD0 && next <= 0xD7;
        if (next != 0 && next != 0xFF && !isRestart)
            return place;
        place += next == 0xFF ? 1 : 2;
    }
}

/// Of each channel and each of its coefficients, how many of the last bits are not known yet.
class Coverage {
public:
    void setFrame(const ByteReader& reader, std::size_t frame, bool isProgressive) {
        isProgressive_ = isProgressive;
        channels_ = std::min<std::size_t>(reader.number8(frame + 9).value_or(0), unknown_.size());
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            names_[channel] = reader.number8(frame + 10 + 3 * channel).value_or(0);
            unknown_[channel].fill(nothingKnown);
        }
    }

    void addPass(const ByteReader& reader, std::size_t pass) {
        const std::size_t count = reader.number8(pass + 4).value_or(0);
        const std::size_t band = pass + 5 + 2 * count;
        const std::size_t first = isProgressive_ ? reader.number8(band).value_or(0) : 0;
        const std::size_t last = isProgressive_ ? reader.number8(band + 1).value_or(0) : coefficients - 1;
        const int bits = isProgressive_ ? reader.number8(band + 2).value_or(0) & 0xF : 0;
        for (std::size_t index = 0; index < count; ++index) {
            const std::uint8_t name = reader.number8(pass + 5 + 2 * index).value_or(0);
            for (std::size_t channel = 0; channel < channels_; ++channel) {
                for (std::size_t one = first;
                     names_[channel] == name && one <= std::min(last, coefficients - 1); ++one)
                    unknown_[channel][one] = bits;
            }
        }
    }

    bool isWhole() const {
        return channels_ > 0 &&
               std::all_of(unknown_.begin(), unknown_.begin() + static_cast<std::ptrdiff_t>(channels_),
                           [](const auto& channel) {
                               return std::all_of(channel.begin(), channel.end(),
                                                  [](int bits) { return bits == 0; });
                           });
    }

private:
    static constexpr std::size_t coefficients = 64;
    static constexpr int nothingKnown = 99;

    bool isProgressive_ = false;
    std::size_t channels_ = 0;
    std::array<std::uint8_t, 4> names_{};
    std::array<std::array<int, coefficients>, 4> unknown_{};
};

} // namespace

std::uint64_t coefficientBytesOfJPEG(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::big);
    std::uint64_t bytesOfFrame = 0;
    std::size_t channels = 0;
    bool isProgressive = false;
    for (std::size_t place = 2; reader.number8(place) == 0xFF;) {
        const std::uint8_t marker = reader.number8(place + 1).value_or(0);
        if (marker == 0xFF) {
            ++place;
            continue;
        }
        const std::uint16_t length = reader.number16(place + 2).value_or(0);
        // The channels of the first pass: where some are missing, others follow.
        if (marker == scanMarker)
            return isProgressive || reader.number8(place + 4).value_or(0) < channels ? bytesOfFrame : 0;
        if (length < 2)
            return 0;
        if (isFrame(marker)) {
            isProgressive = (marker & 3U) == 2;
            channels = reader.number8(place + 9).value_or(0);
            bytesOfFrame = coefficientBytesOfFrame(reader, place, channels);
        }
        place += 2 + std::size_t{length};
    }
    return 0;
}

bool hasAllPassesOfJPEG(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::big);
    Coverage coverage;
    for (std::size_t place = 2; reader.number8(place) == 0xFF;) {
        const std::uint8_t marker = reader.number8(place + 1).value_or(0);
        if (marker == 0xFF) {
            ++place;
            continue;
        }
        const std::size_t length = reader.number16(place + 2).value_or(0);
        if (length < 2)
            break;
        if (isFrame(marker))
            coverage.setFrame(reader, place, (marker & 3U) == 2);
        const std::size_t end = place + 2 + length;
        if (marker == scanMarker && end <= bytes.size())
            coverage.addPass(reader, place);
        place = marker == scanMarker ? endOfPass(bytes, end) : end;
        if (coverage.isWhole())
            return true;
    }
    return false;
}

} // namespace kelvo
