#include "markup/HiddenText.h"

#include "markup/PlainTextContext.h"
#include "markup/TagAttributes.h"
#include "platform/foundation/encodings/NSStringNumbers.h"
#include "text/CharacterSetReps.h"
#include "text/FoldingTables.h"
#include "text/UnicharCompare.h"

namespace kelvo {

namespace {

constexpr std::size_t shortestJunkTag = 16;
/// Places further off than this are out of sight on any screen.
constexpr std::int32_t lastPlaceInSight = -1000;
constexpr std::size_t shortestText = 100;
constexpr std::size_t fewestStretches = 5;
constexpr std::size_t unitsPerStretch = 5;

/// `needle` is in upper case. Returns npos when it is not there.
std::size_t findIgnoringCase(std::u16string_view text, std::string_view needle) {
    const char16_t* upper = initUpperCharsTable();
    const auto wanted = [&](std::size_t index) { return static_cast<unsigned char>(needle[index]); };
    for (std::size_t start = 0; start + needle.size() <= text.size(); ++start) {
        std::size_t index = 0;
        while (index < needle.size() && upper[text[start + index]] == wanted(index))
            ++index;
        if (index == needle.size())
            return start;
    }
    return text.npos;
}

bool equalsIgnoringCase(std::u16string_view left, std::u16string_view right) {
    return left.size() == right.size() &&
           fastCaseInsensitiveCompareUnichars(left.data(), left.size(), right.data(), right.size()) == 0;
}

/// Every test for junk needs a ":" or the two letters in the middle of "hidden". Most tags have neither, and
/// this loop without a branch tells so at a fraction of what reading an attribute costs.
bool mayBeJunk(std::u16string_view tag) {
    const auto isD = [&](std::size_t index) -> unsigned { return (tag[index] | 0x20) == u'd'; };
    unsigned found = 0;
    for (std::size_t index = 1; index < tag.size(); ++index)
        found |= static_cast<unsigned>(tag[index] == u':') | (isD(index - 1) & isD(index));
    return found != 0;
}

bool containsInOrder(std::u16string_view text, std::u16string_view first, std::u16string_view second) {
    const std::size_t at = text.find(first);
    return at != text.npos && text.find(second, at + first.size()) != text.npos;
}

/// The bits of the names at the beginning of `text`.
std::uint32_t bitsOfNames(std::u16string_view text) {
    const CharacterSetRep alphaNum = alphaNumCharacterSetRep();
    std::uint32_t bits = 0;
    while (true) {
        text.remove_prefix(firstUnitInBitmap(text.data(), text.size(), alphaNum));
        const std::u16string_view word =
            text.substr(0, firstUnitNotInBitmap(text.data(), text.size(), alphaNum));
        if (equalsIgnoringCase(word, u"all"))
            bits |= markerAll;
        else if (equalsIgnoringCase(word, u"index"))
            bits |= markerIndex;
        else if (equalsIgnoringCase(word, u"snippet"))
            bits |= markerSnippet;
        else if (equalsIgnoringCase(word, u"anchor"))
            bits |= markerAnchor;
        else
            return bits;
        text.remove_prefix(word.size());
    }
}

} // namespace

bool isJunkDivision(std::u16string_view tag) {
    if (tag.size() < shortestJunkTag || !mayBeJunk(tag))
        return false;
    if (equalsIgnoringCase(attributeValueOfTag(tag, "CLASS", false), u"hidden"))
        return true;
    if (containsInOrder(tag, u"visibility", u"hidden") || containsInOrder(tag, u"display:", u"none"))
        return true;
    const std::u16string_view style = attributeValueOfTag(tag, "STYLE", false);
    if (findIgnoringCase(style, "POSITION:ABSOLUTE") == style.npos)
        return false;
    return intValue(attributeOfStyleWithName(style, "top")) < lastPlaceInSight ||
           intValue(attributeOfStyleWithName(style, "left")) < lastPlaceInSight;
}

FontEffect effectOfFontTag(std::u16string_view tag, std::u16string_view bodyColor) {
    FontEffect effect{};
    if (!bodyColor.empty())
        effect.hidesText = equalsIgnoringCase(attributeValueOfTag(tag, "COLOR", false), bodyColor);
    if (!effect.hidesText) {
        const std::u16string_view style = attributeValueOfTag(tag, "STYLE", false);
        if (findIgnoringCase(style, "FONT-SIZE") != style.npos) {
            const std::size_t points = findIgnoringCase(style, "PT");
            if (points != style.npos && points > 1) {
                const char16_t before = style[points - 2], digit = style[points - 1];
                const bool isLonger =
                    before == u'.' || (before <= 0xFF && unitIsInBitmap(digitCharacterSetRep(), before));
                effect.hidesText = !isLonger && digit >= u'1' && digit <= u'4';
            }
        }
    }
    effect.isFeedDate = attributeValueOfTag(tag, "CLASS", false) == u"feed_date";
    return effect;
}

std::uint32_t googleBits(std::u16string_view comment, std::uint32_t bits) {
    std::size_t at = findIgnoringCase(comment, "GOOGLEON:");
    if (at != comment.npos)
        bits |= bitsOfNames(comment.substr(at + 9));
    at = findIgnoringCase(comment, "GOOGLEOFF:");
    if (at != comment.npos)
        bits &= ~bitsOfNames(comment.substr(at + 10));
    return bits;
}

bool readsLikeText(std::u16string_view run) {
    const CharacterSetRep white = whiteCharacterSetRep(), alphaNum = alphaNumCharacterSetRep();
    while (!run.empty() && unitIsInBitmap(white, run.back()))
        run.remove_suffix(1);
    if (run.size() < shortestText)
        return false;
    std::size_t stretches = 0;
    bool wasAlphaNum = true;
    for (const char16_t unit : run) {
        const bool isAlphaNum = unitIsInBitmap(alphaNum, unit);
        stretches += wasAlphaNum && !isAlphaNum;
        wasAlphaNum = isAlphaNum;
    }
    return stretches >= fewestStretches && run.size() > stretches * unitsPerStretch;
}

} // namespace kelvo
