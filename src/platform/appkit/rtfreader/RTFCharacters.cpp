#include "platform/appkit/rtfreader/RTFCharacters.h"

#include "platform/appkit/rtfreader/RTFWords.h"

namespace kelvo {

char16_t rtfCharacterOf(RTFWord word) {
    switch (word) {
    case RTFWord::tab:
        return u'\t';
    case RTFWord::line:
    case RTFWord::lbr:
    case RTFWord::softline:
        return 0x2028;
    case RTFWord::page:
    case RTFWord::column:
        return u'\f';
    case RTFWord::bullet:
        return 0x2022;
    case RTFWord::emdash:
        return 0x2014;
    case RTFWord::endash:
        return 0x2013;
    case RTFWord::emspace:
        return 0x2003;
    case RTFWord::enspace:
        return 0x2002;
    case RTFWord::qmspace:
        return 0x2005;
    case RTFWord::lquote:
        return 0x2018;
    case RTFWord::rquote:
        return 0x2019;
    case RTFWord::ldblquote:
        return 0x201C;
    case RTFWord::rdblquote:
        return 0x201D;
    case RTFWord::ltrmark:
        return 0x200E;
    case RTFWord::rtlmark:
        return 0x200F;
    case RTFWord::zwj:
        return 0x200D;
    case RTFWord::zwnj:
        return 0x200C;
    case RTFWord::zwbo:
        return 0x200B;
    case RTFWord::zwnbo:
        return 0x2060;
    default:
        return 0;
    }
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
