#include "platform/pdfkit/PDFFontName.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <string>

namespace kelvo {
namespace {

constexpr std::size_t longestName = 256;
constexpr std::size_t lettersOfSubset = 6;

bool isUpper(char16_t unit) {
    return unit >= u'A' && unit <= u'Z';
}

bool isLower(char16_t unit) {
    return unit >= u'a' && unit <= u'z';
}

/// Files that hold only some of a font's characters say so by six letters before its name.
std::u16string_view withoutSubsetTag(std::u16string_view name) {
    const bool hasTag = name.size() > lettersOfSubset + 1 && name[lettersOfSubset] == u'+' &&
                        std::ranges::all_of(name.substr(0, lettersOfSubset), isUpper);
    return hasTag ? name.substr(lettersOfSubset + 1) : name;
}

/// Whether the style has the word as a word: not followed by a small letter, so that "Bold" is in "BoldItalic" and "It"
/// not in "Italian".
bool hasWord(std::u16string_view style, std::u16string_view word) {
    for (std::size_t place = style.find(word); place != style.npos; place = style.find(word, place + 1)) {
        const std::size_t end = place + word.size();
        if (end == style.size() || !isLower(style[end]))
            return true;
    }
    return false;
}

bool hasAnyWord(std::u16string_view style, std::initializer_list<std::u16string_view> words) {
    return std::ranges::any_of(words, [&](std::u16string_view word) { return hasWord(style, word); });
}

void removeSuffix(std::u16string_view& name, std::u16string_view suffix) {
    if (name.size() > suffix.size() && name.ends_with(suffix))
        name.remove_suffix(suffix.size());
}

/// "TimesNewRoman" is "Times New Roman", and "DejaVuSans" "DejaVu Sans".
std::u16string spaced(std::u16string_view name) {
    constexpr std::u16string_view oneWord[] = {u"DejaVu",   u"OpenType", u"TeX",    u"MathTime",
                                               u"PingFang", u"SimSun",   u"SimHei", u"FangSong"};
    std::u16string result;
    for (std::size_t place = 0; place < name.size();) {
        const auto word = std::ranges::find_if(
            oneWord, [&](std::u16string_view each) { return name.substr(place).starts_with(each); });
        const std::size_t length = word == std::end(oneWord) ? 1 : word->size();
        if (place > 0 && isUpper(name[place]) && isLower(name[place - 1]))
            result += u' ';
        result += name.substr(place, length);
        place += length;
    }
    return result;
}

} // namespace

NSFont fontWithPDFName(std::u16string_view name, float pointSize) {
    NSFont font;
    font.pointSize = pointSize;
    name = withoutSubsetTag(name.substr(0, longestName));
    const std::size_t end = std::min(name.find_first_of(u",-"), name.size());
    std::u16string_view family = name.substr(0, end);
    // Where nothing stands between them the words end the name.
    const std::u16string_view style = end < name.size() ? name.substr(end + 1) : name;
    const std::u16string lowered = asciiLowerCased(std::u16string(style));
    font.isBold = hasAnyWord(style, {u"Bold", u"Bd", u"Black", u"Heavy", u"Semibold", u"SemiBold", u"Demi",
                                     u"DemiBold", u"ExtraBold", u"Ultra"}) ||
                  lowered.starts_with(u"bold") || lowered.ends_with(u"bold");
    font.isItalic =
        hasAnyWord(style, {u"Italic", u"It", u"Oblique", u"Obl", u"Ital", u"Slanted", u"Kursiv"}) ||
        lowered.ends_with(u"italic") || lowered.ends_with(u"oblique");
    font.isFixedPitch = hasAnyWord(
        name, {u"Courier", u"Mono", u"Monospace", u"Consolas", u"Menlo", u"Monaco", u"Typewriter", u"Fixed"});
    removeSuffix(family, u"MT");
    removeSuffix(family, u"PS");
    if (end == name.size()) {
        for (const std::u16string_view word : {u"BoldItalic", u"BoldOblique", u"Italic", u"Oblique", u"Bold"})
            removeSuffix(family, word);
    }
    if (!family.empty())
        font.familyName = NSString(spaced(family));
    return font;
}

} // namespace kelvo
