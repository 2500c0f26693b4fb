#include "platform/foundation/encodings/TextCodec.h"

#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/EncodingTable.h"
#include "platform/foundation/units/UTF8.h"

#include <algorithm>

namespace kelvo {

namespace {

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

} // namespace

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

bool encodeLossily(TextCodec& codec, std::u16string_view units, std::string& bytes, bool isEnd) {
    // Codecs make room for all that they are given, so that a text full of substitutes would take quadratic
    // time were the whole rest given to them after each.
    constexpr std::size_t shortPiece = 32;
    constexpr std::size_t longPiece = 65536;
    bool isExact = true;
    std::size_t piece = shortPiece;
    bool isClosed = !isEnd;
    while (!units.empty()) {
        std::size_t length = std::min(piece, units.size());
        if (length < units.size() && isLeadSurrogate(units[length - 1]))
            --length;
        isClosed = !isEnd || length == units.size();
        const std::size_t taken = codec.encode(units.substr(0, length), bytes, isEnd && isClosed);
        units.remove_prefix(taken);
        piece = std::min(piece * 2, longPiece);
        if (taken == length)
            continue;
        isExact = false;
        isClosed = !isEnd;
        piece = shortPiece;
        const std::size_t characterLength =
            units.size() > 1 && isLeadSurrogate(units[0]) && isTrailSurrogate(units[1]) ? 2 : 1;
        encodeSubstitute(codec, units.substr(0, characterLength), bytes);
        units.remove_prefix(characterLength);
    }
    if (!isClosed)
        codec.encode({}, bytes, true);
    return isExact;
}

} // namespace kelvo
