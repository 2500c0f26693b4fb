#include "platform/appkit/rtfreader/RTFCharacters.h"

namespace kelvo {

std::span<const RTFCharacterWord> rtfCharacterWords() {
    static constexpr RTFCharacterWord words[] = {
        {"tab", u'\t'},      {"line", 0x2028},    {"lbr", 0x2028},       {"softline", 0x2028},
        {"page", u'\f'},     {"column", u'\f'},   {"bullet", 0x2022},    {"emdash", 0x2014},
        {"endash", 0x2013},  {"emspace", 0x2003}, {"enspace", 0x2002},   {"qmspace", 0x2005},
        {"lquote", 0x2018},  {"rquote", 0x2019},  {"ldblquote", 0x201C}, {"rdblquote", 0x201D},
        {"ltrmark", 0x200E}, {"rtlmark", 0x200F}, {"zwj", 0x200D},       {"zwnj", 0x200C},
        {"zwbo", 0x200B},    {"zwnbo", 0x2060},
    };
    return words;
}

char16_t rtfCharacterOfSymbol(char symbol) {
    switch (symbol) {
    case '~':
        return 0xA0;
    case '_':
        return 0x2011;
    case '-':
        return 0xAD;
    case '\t':
        return u'\t';
    default:
        return 0;
    }
}

} // namespace kelvo
