#include "markup/EntityTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <mutex>
#include <vector>

namespace kelvo {

const char* const entityNames[entityCount] = {
    // Accented letters of Latin 1, in pairs.
    "AElig", "aelig", "Aacute", "aacute", "Acirc", "acirc", "Agrave", "agrave", "Aring", "aring", "Atilde",
    "atilde", "Auml", "auml", "Ccedil", "ccedil", "ETH", "eth", "Eacute", "eacute", "Ecirc", "ecirc",
    "Egrave", "egrave", "Euml", "euml", "Iacute", "iacute", "Icirc", "icirc", "Igrave", "igrave", "Iuml",
    "iuml", "Ntilde", "ntilde", "Oacute", "oacute", "Ocirc", "ocirc", "Ograve", "ograve", "Oslash", "oslash",
    "Otilde", "otilde", "Ouml", "ouml", "THORN", "thorn", "Uacute", "uacute", "Ucirc", "ucirc", "Ugrave",
    "ugrave", "Uuml", "uuml", "Yacute", "yacute", "yuml", "szlig",
    // The rest of Latin 1, in code order.
    "nbsp", "iexcl", "cent", "pound", "curren", "yen", "brvbar", "sect", "uml", "copy", "ordf", "laquo",
    "not", "shy", "reg", "macr", "deg", "plusmn", "sup2", "sup3", "acute", "micro", "para", "middot", "sup1",
    "ordm", "raquo", "frac14", "frac12", "frac34", "iquest", "times", "divide",
    // Greek letters, punctuation, letterlike symbols, arrows, mathematics, shapes, in code order.
    "Alpha", "Beta", "Gamma", "Delta", "Epsilon", "Zeta", "Eta", "Theta", "Iota", "Kappa", "Lambda", "Mu",
    "Nu", "Xi", "Omicron", "Pi", "Rho", "Sigma", "Tau", "Upsilon", "Phi", "Chi", "Psi", "Omega", "alpha",
    "beta", "gamma", "delta", "epsilon", "zeta", "eta", "theta", "iota", "kappa", "lambda", "mu", "nu", "xi",
    "omicron", "pi", "rho", "sigmaf", "sigma", "tau", "upsilon", "phi", "chi", "psi", "omega", "thetasym",
    "upsih", "piv", "bull", "hellip", "prime", "Prime", "oline", "frasl", "image", "weierp", "real", "trade",
    "alefsym", "larr", "uarr", "rarr", "darr", "harr", "crarr", "lArr", "uArr", "rArr", "dArr", "hArr",
    "forall", "part", "exist", "empty", "nabla", "isin", "notin", "ni", "prod", "sum", "minus", "lowast",
    "radic", "prop", "infin", "ang", "and", "or", "cap", "cup", "int", "there4", "sim", "cong", "asymp", "ne",
    "equiv", "le", "ge", "sub", "sup", "nsub", "sube", "supe", "oplus", "otimes", "perp", "sdot", "lceil",
    "rceil", "lfloor", "rfloor", "lang", "rang", "loz", "spades", "clubs", "hearts", "diams",
    // Latin Extended-A, spacing marks and general punctuation.
    "OElig", "oelig", "Scaron", "scaron", "Yuml", "circ", "tilde", "ensp", "emsp", "thinsp", "zwnj", "zwj",
    "lrm", "rlm", "ndash", "mdash", "lsquo", "rsquo", "sbquo", "ldquo", "rdquo", "bdquo", "dagger", "Dagger",
    "permil", "lsaquo", "rsaquo", "euro"};

const char16_t entityCharacters[entityCount + 1] = {
    0x00C6, 0x00E6, 0x00C1, 0x00E1, 0x00C2, 0x00E2, 0x00C0, 0x00E0, 0x00C5, 0x00E5, 0x00C3, 0x00E3, 0x00C4,
    0x00E4, 0x00C7, 0x00E7, 0x00D0, 0x00F0, 0x00C9, 0x00E9, 0x00CA, 0x00EA, 0x00C8, 0x00E8, 0x00CB, 0x00EB,
    0x00CD, 0x00ED, 0x00CE, 0x00EE, 0x00CC, 0x00EC, 0x00CF, 0x00EF, 0x00D1, 0x00F1, 0x00D3, 0x00F3, 0x00D4,
    0x00F4, 0x00D2, 0x00F2, 0x00D8, 0x00F8, 0x00D5, 0x00F5, 0x00D6, 0x00F6, 0x00DE, 0x00FE, 0x00DA, 0x00FA,
    0x00DB, 0x00FB, 0x00D9, 0x00F9, 0x00DC, 0x00FC, 0x00DD, 0x00FD, 0x00FF, 0x00DF, 0x00A0, 0x00A1, 0x00A2,
    0x00A3, 0x00A4, 0x00A5, 0x00A6, 0x00A7, 0x00A8, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF,
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B9, 0x00BA, 0x00BB, 0x00BC, 0x00BD,
    0x00BE, 0x00BF, 0x00D7, 0x00F7, 0x0391, 0x0392, 0x0393, 0x0394, 0x0395, 0x0396, 0x0397, 0x0398, 0x0399,
    0x039A, 0x039B, 0x039C, 0x039D, 0x039E, 0x039F, 0x03A0, 0x03A1, 0x03A3, 0x03A4, 0x03A5, 0x03A6, 0x03A7,
    0x03A8, 0x03A9, 0x03B1, 0x03B2, 0x03B3, 0x03B4, 0x03B5, 0x03B6, 0x03B7, 0x03B8, 0x03B9, 0x03BA, 0x03BB,
    0x03BC, 0x03BD, 0x03BE, 0x03BF, 0x03C0, 0x03C1, 0x03C2, 0x03C3, 0x03C4, 0x03C5, 0x03C6, 0x03C7, 0x03C8,
    0x03C9, 0x03D1, 0x03D2, 0x03D6, 0x2022, 0x2026, 0x2032, 0x2033, 0x203E, 0x2044, 0x2111, 0x2118, 0x211C,
    0x2122, 0x2135, 0x2190, 0x2191, 0x2192, 0x2193, 0x2194, 0x21B5, 0x21D0, 0x21D1, 0x21D2, 0x21D3, 0x21D4,
    0x2200, 0x2202, 0x2203, 0x2205, 0x2207, 0x2208, 0x2209, 0x220B, 0x220F, 0x2211, 0x2212, 0x2217, 0x221A,
    0x221D, 0x221E, 0x2220, 0x2227, 0x2228, 0x2229, 0x222A, 0x222B, 0x2234, 0x223C, 0x2245, 0x2248, 0x2260,
    0x2261, 0x2264, 0x2265, 0x2282, 0x2283, 0x2284, 0x2286, 0x2287, 0x2295, 0x2297, 0x22A5, 0x22C5, 0x2308,
    0x2309, 0x230A, 0x230B, 0x2329, 0x232A, 0x25CA, 0x2660, 0x2663, 0x2665, 0x2666, 0x0152, 0x0153, 0x0160,
    0x0161, 0x0178, 0x02C6, 0x02DC, 0x2002, 0x2003, 0x2009, 0x200C, 0x200D, 0x200E, 0x200F, 0x2013, 0x2014,
    0x2018, 0x2019, 0x201A, 0x201C, 0x201D, 0x201E, 0x2020, 0x2021, 0x2030, 0x2039, 0x203A, 0x20AC, 0,
};

namespace {

// Characters to names: an index into the table for each character of the span, or noEntity.
constexpr std::uint16_t noEntity = 0xFFFF;
std::vector<std::uint16_t> entityIndexes;
char16_t firstEntityCharacter = 0;

// Names to characters: each name as a number, a byte for each letter, in an open hash table at most a quarter
// full, so that a look-up takes one probe and hardly ever two.
struct NameSlot {
    std::uint64_t name;
    char16_t character;
};
constexpr std::size_t longestName = 8;
constexpr unsigned slotBits = 10;
std::array<NameSlot, 1u << slotBits> nameSlots;

std::size_t slotOfName(std::uint64_t name) {
    return name * 0x9E3779B97F4A7C15u >> (64 - slotBits);
}

std::once_flag conversionTablesOnce;

} // namespace

void initConversionTables() {
    std::call_once(conversionTablesOnce, [] {
        const auto [first, last] = std::minmax_element(entityCharacters, entityCharacters + entityCount);
        firstEntityCharacter = *first;
        entityIndexes.assign(*last - *first + 1u, noEntity);
        for (std::size_t index = 0; index < entityCount; ++index) {
            entityIndexes[entityCharacters[index] - *first] = static_cast<std::uint16_t>(index);
            std::uint64_t name = 0;
            for (const char* letter = entityNames[index]; *letter != 0; ++letter)
                name = name << 8 | static_cast<unsigned char>(*letter);
            std::size_t slot = slotOfName(name);
            while (nameSlots[slot].name != 0)
                slot = (slot + 1) % nameSlots.size();
            nameSlots[slot] = {name, entityCharacters[index]};
        }
    });
}

const char* entityNameOfCharacter(char16_t unit) {
    initConversionTables();
    const std::size_t offset = static_cast<std::size_t>(unit) - firstEntityCharacter;
    if (offset >= entityIndexes.size() || entityIndexes[offset] == noEntity)
        return nullptr;
    return entityNames[entityIndexes[offset]];
}

char16_t characterOfEntityName(std::u16string_view text) {
    if (text.size() > longestName)
        return 0;
    std::uint64_t name = 0;
    for (const char16_t unit : text) {
        if (unit == 0 || unit > 0xFF)
            return 0;
        name = name << 8 | unit;
    }
    initConversionTables();
    for (std::size_t slot = slotOfName(name); nameSlots[slot].name != 0;
         slot = (slot + 1) % nameSlots.size()) {
        if (nameSlots[slot].name == name)
            return nameSlots[slot].character;
    }
    return 0;
}

} // namespace kelvo
