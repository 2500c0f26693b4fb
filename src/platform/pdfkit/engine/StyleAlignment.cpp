#include "platform/pdfkit/engine/StyleAlignment.h"

#include <algorithm>

namespace kelvo {
namespace {

/// Where two texts have parted, so many equal letters close by bring them together again, and so many anywhere.
constexpr std::size_t lettersToMeetNearby = 4;
constexpr std::size_t nearbyLetters = 256;
constexpr std::size_t lettersToMeet = 8;
/// For each letter so many others may be looked at on the search for such places; after that no more are looked for.
constexpr std::size_t looksPerLetter = 64;

bool isBlank(char32_t character) {
    return character <= U' ' || character == 0xA0 || character == 0x1680 ||
           (character >= 0x2000 && character <= 0x200B) || character == 0x2028 || character == 0x2029 ||
           character == 0x202F || character == 0x205F || character == 0x3000 || character == 0xFEFF;
}

bool isDirectionMark(char32_t character) {
    return character == 0x200E || character == 0x200F || (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

bool isLetter(char32_t character) {
    return !isBlank(character) && !isDirectionMark(character);
}

/// The letters of a text, and where each begins.
struct PlacedLetters {
    explicit PlacedLetters(std::u16string_view text) {
        letters.reserve(text.size());
        places.reserve(text.size());
        for (std::size_t place = 0; place < text.size();) {
            const auto start = static_cast<std::uint32_t>(place);
            if (const char32_t character = characterAt(text, &place); isLetter(character)) {
                letters.push_back(character);
                places.push_back(start);
            }
        }
    }

    std::u32string letters;
    std::vector<std::uint32_t> places;
};

/// Walks through the letters of a text and finds each among the others.
class Alignment {
public:
    Alignment(std::u32string_view text, std::u32string_view others)
        : text_(text), others_(others), looksLeft_(looksPerLetter * (text.size() + others.size())) {}

    /// The place of the text's next letter among the others, or their count when it is not found.
    std::size_t next() {
        if (there_ >= others_.size() || text_[here_] != others_[there_])
            there_ = meetingPlace();
        const bool isFound = there_ < others_.size() && text_[here_] == others_[there_];
        ++here_;
        return isFound ? there_++ : others_.size();
    }

private:
    /// Where to go on; where it is now when they do not meet.
    std::size_t meetingPlace() {
        const std::u32string_view few = text_.substr(here_, lettersToMeetNearby);
        const std::u32string_view many = text_.substr(here_, lettersToMeet);
        if (const std::size_t place = found(few, there_, nearbyLetters); place != others_.npos)
            return place;
        if (many.size() < lettersToMeet)
            return there_;
        for (const std::size_t from : {there_, std::size_t{0}}) {
            if (const std::size_t place = found(many, from, others_.size()); place != others_.npos)
                return place;
        }
        return there_;
    }

    std::size_t found(std::u32string_view letters, std::size_t from, std::size_t most) {
        const std::u32string_view stretch =
            others_.substr(std::min(from, others_.size()), std::min(most, looksLeft_));
        const std::size_t place = stretch.find(letters);
        looksLeft_ -= std::min(looksLeft_, place == stretch.npos ? stretch.size() : place);
        return place == stretch.npos ? place : from + place;
    }

    std::u32string_view text_;
    std::u32string_view others_;
    std::size_t here_ = 0;
    std::size_t there_ = 0;
    std::size_t looksLeft_;
};

} // namespace

char32_t characterAt(std::u16string_view text, std::size_t* place) {
    const char32_t unit = text[(*place)++];
    if ((unit & 0xFC00) != 0xD800 || *place == text.size() || (text[*place] & 0xFC00) != 0xDC00)
        return unit;
    return 0x10000 + ((unit & 0x3FF) << 10 | (static_cast<char32_t>(text[(*place)++]) & 0x3FF));
}

void StyledLetters::add(char32_t character, std::uint32_t style) {
    if (!isLetter(character))
        return;
    letters.push_back(character);
    styles.push_back(style);
}

std::size_t letterCount(std::u16string_view text) {
    return PlacedLetters(text).letters.size();
}

std::vector<StyleRun> alignedStyles(std::u16string_view text, const StyledLetters& letters) {
    const PlacedLetters own(text);
    std::vector<StyleRun> runs;
    if (text.empty())
        return runs;
    // The run that is being extended begins at `begin`.
    std::uint32_t begin = 0;
    std::uint32_t style = 0;
    bool isKnown = false;
    Alignment alignment(own.letters, letters.letters);
    for (const std::uint32_t place : own.places) {
        const std::size_t other = alignment.next();
        if (other >= letters.styles.size() || (isKnown && letters.styles[other] == style))
            continue;
        // What stands before the first letter that is known looks like it.
        if (isKnown) {
            runs.push_back({place - begin, style});
            begin = place;
        }
        style = letters.styles[other];
        isKnown = true;
    }
    runs.push_back({static_cast<std::uint32_t>(text.size()) - begin, style});
    return runs;
}

} // namespace kelvo
