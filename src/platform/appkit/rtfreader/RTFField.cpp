#include "platform/appkit/rtfreader/RTFField.h"

#include "platform/foundation/units/ASCII.h"

namespace kelvo {
namespace {

constexpr bool isBlank(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r' || unit == 0xA0;
}

constexpr bool isQuote(char16_t unit) {
    return unit == u'"' || unit == 0x201C || unit == 0x201D;
}

/// The words of an instruction one by one. Inside of quotes a backslash protects quotes and itself.
class Words {
public:
    explicit Words(std::u16string_view text) : rest_(text) {}

    bool next(std::u16string& word) {
        while (!rest_.empty() && isBlank(rest_[0]))
            rest_.remove_prefix(1);
        if (rest_.empty())
            return false;
        word.clear();
        const bool isQuoted = isQuote(rest_[0]);
        if (isQuoted)
            rest_.remove_prefix(1);
        while (!rest_.empty() && (isQuoted ? !isQuote(rest_[0]) : !isBlank(rest_[0]))) {
            if (isQuoted && rest_[0] == u'\\' && rest_.size() > 1 && (rest_[1] == u'\\' || isQuote(rest_[1])))
                rest_.remove_prefix(1);
            word += rest_[0];
            rest_.remove_prefix(1);
        }
        if (isQuoted && !rest_.empty())
            rest_.remove_prefix(1);
        wasQuoted_ = isQuoted;
        return true;
    }
    /// A backslash and a letter.
    bool isSwitch(const std::u16string& word, char16_t letter) const {
        return !wasQuoted_ && word.size() == 2 && word[0] == u'\\' && (word[1] | 0x20) == letter;
    }
    bool isSwitch(const std::u16string& word) const { return !wasQuoted_ && word.starts_with(u'\\'); }

    /// What comes after the words so far, without the blanks around it.
    std::u16string_view rest() const {
        std::u16string_view rest = rest_;
        while (!rest.empty() && isBlank(rest.front()))
            rest.remove_prefix(1);
        while (!rest.empty() && isBlank(rest.back()))
            rest.remove_suffix(1);
        return rest;
    }

private:
    std::u16string_view rest_;
    bool wasQuoted_ = false;
};

std::optional<std::int32_t> number(std::u16string_view digits) {
    const bool isHex = digits.starts_with(u"0x") || digits.starts_with(u"0X");
    if (isHex)
        digits.remove_prefix(2);
    if (digits.empty() || digits.size() > 6)
        return std::nullopt;
    const int base = isHex ? 16 : 10;
    std::int32_t value = 0;
    for (const char16_t unit : digits) {
        const int digit = hexDigitValue(unit);
        if (digit < 0 || digit >= base)
            return std::nullopt;
        value = value * base + digit;
    }
    return value;
}

NSString linkOf(Words& words) {
    std::u16string address;
    std::u16string anchor;
    bool hasAddress = false;
    std::u16string word;
    while (words.next(word)) {
        if (words.isSwitch(word, u'l'))
            words.next(anchor);
        else if (words.isSwitch(word, u'o') || words.isSwitch(word, u't'))
            words.next(word); // A tip to show, or a frame to show it in.
        else if (!words.isSwitch(word) && !hasAddress) {
            address = word;
            hasAddress = true;
        }
    }
    if (!anchor.empty())
        address += u'#' + anchor;
    return address.empty() ? NSString() : NSString(std::u16string_view(address));
}

} // namespace

RTFField RTFField::parse(std::u16string_view instruction) {
    RTFField field;
    Words words(instruction);
    std::u16string word;
    if (!words.next(word))
        return field;
    if (equalsASCIIIgnoringCase(std::u16string_view(word), u"hyperlink")) {
        field.link = linkOf(words);
    } else if (equalsASCIIIgnoringCase(std::u16string_view(word), u"macrobutton") && words.next(word)) {
        field.text = words.rest();
    } else if (equalsASCIIIgnoringCase(std::u16string_view(word), u"symbol") && words.next(word)) {
        field.symbol = number(word);
        while (words.next(word)) {
            if (words.isSwitch(word, u'u'))
                field.isSymbolUnicode = true;
            else if (words.isSwitch(word, u'f') && words.next(word))
                field.symbolFont = NSString(std::u16string_view(word));
        }
    }
    return field;
}

} // namespace kelvo
