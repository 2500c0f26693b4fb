#include "cli/Printable.h"

#include "platform/foundation/NSFileManager.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ctime>

namespace kelvo::cli {
namespace {

bool isControl(char16_t unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
}

/// Marks, embeddings, overrides and isolates, with which a text can show its letters in another order than
/// they have; and the two separators, which some programs take for line ends.
bool turnsOrBreaksLines(char16_t unit) {
    return unit == 0x061C || unit == 0x200E || unit == 0x200F || (unit >= 0x2028 && unit <= 0x202E) ||
           (unit >= 0x2066 && unit <= 0x2069);
}

/// Those that are no line ends to files of text and terminals.
bool isLineEnd(char16_t unit) {
    return unit == u'\f' || unit == 0x2028 || unit == 0x2029;
}

enum class Bytes : std::uint8_t { notThere, asSurrogates };

class Escaper {
public:
    Escaper(LineEnds lineEnds, Bytes bytes) : lineEnds_(lineEnds), bytes_(bytes) {}

    std::string escape(std::u16string_view text) {
        for (std::size_t index = 0; index < text.size(); ++index) {
            const char16_t unit = text[index];
            const bool isKept = lineEnds_ == LineEnds::kept && (unit == u'\n' || unit == u'\t');
            const bool isPair =
                (unit & 0xFC00) == 0xD800 && index + 1 < text.size() && (text[index + 1] & 0xFC00) == 0xDC00;
            if (isPair) {
                plain_ += unit;
                plain_ += text[++index];
            } else if (lineEnds_ == LineEnds::kept && unit == u'\r') {
                if (index + 1 == text.size() || text[index + 1] != u'\n')
                    plain_ += u'\n';
            } else if (lineEnds_ == LineEnds::kept && isLineEnd(unit)) {
                plain_ += u'\n';
            } else if (isControl(unit) && !isKept) {
                put(fmt::format("\\x{:02X}", static_cast<unsigned>(unit)));
            } else if (turnsOrBreaksLines(unit)) {
                put(fmt::format("\\u{{{:04X}}}", static_cast<unsigned>(unit)));
            } else if (bytes_ == Bytes::asSurrogates && unit >= 0xDC80 && unit <= 0xDCFF) {
                put(fmt::format("\\x{:02X}", static_cast<unsigned>(unit) - 0xDC00));
            } else {
                plain_ += unit;
            }
        }
        return UTF8StringOfCharacters(plain_);
    }

private:
    void put(const std::string& ascii) { plain_.append(ascii.begin(), ascii.end()); }

    LineEnds lineEnds_;
    Bytes bytes_;
    std::u16string plain_;
};

} // namespace

std::string printable(std::u16string_view text, LineEnds lineEnds) {
    return Escaper(lineEnds, Bytes::notThere).escape(text);
}

NSString withLineFeeds(const NSString& text) {
    std::u16string units(text.characters());
    std::ranges::replace_if(units, isLineEnd, u'\n');
    return NSString(std::u16string_view(units));
}

std::string printableFileName(std::string_view bytes) {
    const NSString name = NSFileManager::defaultManager().stringWithFileSystemRepresentation(bytes);
    return Escaper(LineEnds::escaped, Bytes::asSurrogates).escape(name);
}

std::string printableByteCount(std::uint64_t bytes) {
    if (bytes < 1000)
        return fmt::format("{} {}", bytes, bytes == 1 ? "byte" : "bytes");
    constexpr std::array<const char*, 4> units{"KB", "MB", "GB", "TB"};
    double count = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    // 999.95 would be shown as 1000.0.
    while (count >= 999.95 && unit + 1 < units.size()) {
        count /= 1000;
        ++unit;
    }
    return fmt::format("{:.1f} {}", count, units[unit]);
}

std::string printableMilliseconds(double milliseconds) {
    if (milliseconds >= 1000)
        return fmt::format("{:.2f} s", milliseconds / 1000);
    return fmt::format("{:.{}f} ms", milliseconds, milliseconds < 10 ? 2 : 1);
}

std::string printableLocalTime(NSDate date) {
    // Ten thousand years to either side: what the calendar of the system has digits for.
    constexpr double farthest = 3.2e11;
    const double seconds = std::floor(date.timeIntervalSince1970());
    std::tm parts{};
    char text[32];
    if (std::abs(seconds) < farthest) {
        const auto time = static_cast<std::time_t>(seconds);
        if (localtime_r(&time, &parts) && std::strftime(text, sizeof text, "%F %T", &parts) > 0)
            return text;
    }
    return printable(date.description());
}

std::string printableUptime(double seconds) {
    const auto whole = static_cast<std::uint64_t>(std::max(seconds, 0.0));
    if (whole < 60)
        return fmt::format("{} s", whole);
    if (whole < 3600)
        return fmt::format("{} min {} s", whole / 60, whole % 60);
    if (whole < 86400)
        return fmt::format("{} h {} min", whole / 3600, whole / 60 % 60);
    return fmt::format("{} d {} h", whole / 86400, whole / 3600 % 24);
}

} // namespace kelvo::cli
