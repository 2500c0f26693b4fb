#include "platform/foundation/TextCodec.h"

#include "platform/foundation/CFString.h"
#include "platform/foundation/EncodingTable.h"

#include <algorithm>

namespace kelvo {

namespace {

bool isLead(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}

bool isTrail(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

} // namespace

void encodeSubstitute(TextCodec& codec, std::u16string_view character, std::string& bytes) {
    if (character.size() == 1 && (character[0] & 0xF800) == 0xD800 &&
        codec.encode(u"\uFFFD", bytes, false) == 1)
        return;
    NSMutableString plain = NSMutableString::stringWithCharacters(character);
    CFStringFold(plain, kCFCompareDiacriticInsensitive);
    if (!plain.isEmpty() && plain.characters() != character) {
        const std::size_t before = bytes.size();
        if (codec.encode(plain, bytes, false) == plain.length())
            return;
        bytes.resize(before);
    }
    codec.encode(u"?", bytes, false);
}

std::unique_ptr<TextCodec> makeTextCodec(CFStringEncoding encoding) {
    using Kind = EncodingRow::Kind;
    const EncodingRow* row = encodingRow(encoding);
    if (!row)
        return nullptr;
    switch (row->kind) {
    case Kind::None:
        return nullptr;
    case Kind::ICU:
        if (auto codec = makeTableCodec(*row))
            return codec;
        return makeICUCodec(row->source);
    case Kind::Iconv:
        return makeIconvCodec(row->source);
    case Kind::IconvPage:
    case Kind::OwnPage:
    case Kind::Pairs:
        return makeTableCodec(*row);
    case Kind::NonLossyASCII:
        return makeNonLossyASCIICodec();
    default:
        return makeUnicodeCodec(*row);
    }
}

bool encodeLossily(TextCodec& codec, std::u16string_view units, std::string& bytes) {
    bool isExact = true;
    for (;;) {
        units.remove_prefix(codec.encode(units, bytes, true));
        if (units.empty())
            return isExact;
        isExact = false;
        const std::size_t length = units.size() > 1 && isLead(units[0]) && isTrail(units[1]) ? 2 : 1;
        encodeSubstitute(codec, units.substr(0, length), bytes);
        units.remove_prefix(length);
        if (units.empty()) {
            codec.encode({}, bytes, true);
            return isExact;
        }
    }
}

} // namespace kelvo
