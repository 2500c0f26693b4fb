#include "platform/foundation/RFC3986.h"

#include "platform/foundation/units/ASCII.h"
#include "platform/foundation/units/UTF8.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelvo::rfc3986 {
namespace {

// The sets of the grammar's appendix A, one bit each, for the 128 ASCII units.
enum Set : std::uint8_t {
    alphaSet = 1,
    digitSet = 2,
    hexSet = 4,
    schemeSet = 8,   // after its first letter
    regNameSet = 16, // unreserved / sub-delims
    userSet = 32,    // regName and ":"
    pathSet = 64,    // pchar and "/"
    querySet = 128   // pchar, "/" and "?"; the fragment's set too
};

constexpr std::array<std::uint8_t, 128> makeSets() {
    std::array<std::uint8_t, 128> sets{};
    for (char16_t c = 0; c < 128; ++c) {
        const bool alpha = isASCIILetter(c);
        const bool digit = isASCIIDigit(c);
        const bool regName =
            alpha || digit || std::u16string_view(u"-._~!$&'()*+,;=").find(c) != std::u16string_view::npos;
        const bool path = regName || c == ':' || c == '@' || c == '/';
        sets[c] = static_cast<std::uint8_t>(
            (alpha ? alphaSet : 0) | (digit ? digitSet : 0) | (hexDigitValue(c) >= 0 ? hexSet : 0) |
            (alpha || digit || c == '+' || c == '-' || c == '.' ? schemeSet : 0) |
            (regName ? regNameSet : 0) | (regName || c == ':' ? userSet : 0) | (path ? pathSet : 0) |
            (path || c == '?' ? querySet : 0));
    }
    return sets;
}

constexpr auto sets = makeSets();

bool isIn(char16_t unit, Set set) {
    return unit < sets.size() && (sets[unit] & set) != 0;
}

bool allIn(std::u16string_view text, Set set) {
    return std::ranges::all_of(text, [set](char16_t unit) { return isIn(unit, set); });
}

bool escapeStandsAt(std::u16string_view text, std::size_t index) {
    return text[index] == '%' && text.size() - index > 2 && isIn(text[index + 1], hexSet) &&
           isIn(text[index + 2], hexSet);
}

bool matches(std::u16string_view text, Set set) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (escapeStandsAt(text, i))
            i += 2;
        else if (!isIn(text[i], set))
            return false;
    }
    return true;
}

bool isScheme(std::u16string_view text) {
    return !text.empty() && isIn(text[0], alphaSet) && allIn(text, schemeSet);
}

bool isIPv4Address(std::u16string_view text) {
    for (int octets = 1;; ++octets) {
        const std::size_t length = std::min(text.find(u'.'), text.size());
        const std::u16string_view octet = text.substr(0, length);
        if (octet.empty() || octet.size() > 3 || !allIn(octet, digitSet) ||
            (octet.size() > 1 && octet[0] == '0') || (octet.size() == 3 && octet > u"255"))
            return false;
        if (length == text.size())
            return octets == 4;
        if (octets == 4)
            return false;
        text.remove_prefix(length + 1);
    }
}

// Groups separated by colons, the last of which may be an IPv4 address that counts as two; -1 when it is not
// that.
int countIPv6Groups(std::u16string_view text, bool mayEndInIPv4) {
    if (text.empty())
        return 0;
    for (int groups = 1; groups <= 8; ++groups) {
        const std::size_t length = std::min(text.find(u':'), text.size());
        const std::u16string_view group = text.substr(0, length);
        const bool isLast = length == text.size();
        if (isLast && mayEndInIPv4 && isIPv4Address(group))
            return groups + 1;
        if (group.empty() || group.size() > 4 || !allIn(group, hexSet))
            return -1;
        if (isLast)
            return groups;
        text.remove_prefix(length + 1);
    }
    return -1;
}

bool isIPv6Address(std::u16string_view text) {
    const std::size_t gap = text.find(u"::");
    if (gap == text.npos)
        return countIPv6Groups(text, true) == 8;
    const int before = countIPv6Groups(text.substr(0, gap), false);
    const int after = countIPv6Groups(text.substr(gap + 2), true);
    // The gap stands for at least one group.
    return before >= 0 && after >= 0 && before + after <= 7;
}

bool isIPLiteral(std::u16string_view text) {
    if (text.size() < 2 || text.front() != '[' || text.back() != ']')
        return false;
    text = text.substr(1, text.size() - 2);
    if (text.empty() || asciiLowerCase(text[0]) != 'v')
        return isIPv6Address(text);
    const std::size_t dot = text.find(u'.');
    return dot != text.npos && dot > 1 && allIn(text.substr(1, dot - 1), hexSet) && dot + 1 < text.size() &&
           allIn(text.substr(dot + 1), userSet);
}

// Splits at the delimiters without looking at what stands between them (appendix B). The last "@" ends the
// user information, and the last ":" after it and outside brackets begins the port.
Components split(std::u16string_view string) {
    Components parts;
    const std::size_t delimiter = string.find_first_of(u":/?#");
    if (delimiter != string.npos && string[delimiter] == ':' && isScheme(string.substr(0, delimiter))) {
        parts.scheme = string.substr(0, delimiter);
        string.remove_prefix(delimiter + 1);
    }
    if (const std::size_t hash = string.find(u'#'); hash != string.npos) {
        parts.fragment = string.substr(hash + 1);
        string = string.substr(0, hash);
    }
    if (const std::size_t mark = string.find(u'?'); mark != string.npos) {
        parts.query = string.substr(mark + 1);
        string = string.substr(0, mark);
    }
    if (string.starts_with(u"//")) {
        std::u16string_view authority = string.substr(2, std::min(string.find(u'/', 2), string.size()) - 2);
        string.remove_prefix(2 + authority.size());
        parts.authority = authority;
        if (const std::size_t at = authority.rfind(u'@'); at != authority.npos) {
            const std::u16string_view userInfo = authority.substr(0, at);
            const std::size_t colon = userInfo.find(u':');
            parts.user = userInfo.substr(0, colon);
            if (colon != userInfo.npos)
                parts.password = userInfo.substr(colon + 1);
            authority.remove_prefix(at + 1);
        }
        const std::size_t colon = authority.rfind(u':');
        if (colon != authority.npos && authority.find(u']', colon) == authority.npos) {
            parts.port = authority.substr(colon + 1);
            authority = authority.substr(0, colon);
        }
        parts.host = authority;
    }
    parts.path = string;
    return parts;
}

// Without scheme and authority a colon in the first segment would be read as the scheme's.
bool firstSegmentHoldsColon(std::u16string_view path) {
    const std::size_t delimiter = path.find_first_of(u":/");
    return delimiter != path.npos && path[delimiter] == ':';
}

void appendEscapedByte(NSMutableString& result, unsigned byte) {
    result.appendCharacter(u'%');
    result.appendCharacter(static_cast<char16_t>(upperHexDigits[byte >> 4 & 15]));
    result.appendCharacter(static_cast<char16_t>(upperHexDigits[byte & 15]));
}

void appendEscaped(NSMutableString& result, std::u16string_view text, Set set, bool escapesColons = false) {
    for (std::size_t i = 0; i < text.size();) {
        const char16_t unit = text[i];
        if ((isIn(unit, set) && !(escapesColons && unit == ':')) || escapeStandsAt(text, i)) {
            result.appendCharacter(unit);
            ++i;
            continue;
        }
        const char32_t character = nextCharacter(text, i);
        std::uint8_t bytes[4];
        const std::uint8_t* const end =
            writeUTF8Character(isSurrogate(character) ? replacementCharacter : character, bytes);
        for (const std::uint8_t* byte = bytes; byte != end; ++byte)
            appendEscapedByte(result, *byte);
    }
}

// Appends the resolved path with what keeps it from being read as another component.
void appendPath(NSMutableString& result, std::u16string_view path, bool hasScheme, bool hasAuthority) {
    if (!hasAuthority && path.starts_with(u"//"))
        result.appendString(u"/.");
    else if (!hasAuthority && !hasScheme && firstSegmentHoldsColon(path))
        result.appendString(u"./");
    result.appendString(path);
}

} // namespace

std::optional<Components> parse(std::u16string_view string) {
    const Components parts = split(string);
    if (parts.user && !matches(*parts.user, regNameSet))
        return std::nullopt;
    if (parts.password && !matches(*parts.password, userSet))
        return std::nullopt;
    if (parts.host && !isIPLiteral(*parts.host) && !matches(*parts.host, regNameSet))
        return std::nullopt;
    if (parts.port && !allIn(*parts.port, digitSet))
        return std::nullopt;
    if (!matches(parts.path, pathSet) || (parts.query && !matches(*parts.query, querySet)) ||
        (parts.fragment && !matches(*parts.fragment, querySet)))
        return std::nullopt;
    if (!parts.scheme && !parts.authority && firstSegmentHoldsColon(parts.path))
        return std::nullopt;
    return parts;
}

NSMutableString removeDotSegments(std::u16string_view path) {
    NSMutableString result = NSMutableString::stringWithCapacity(path.size());
    // A relative path's leading dot segments vanish; from then on each segment is taken with the slash before
    // it.
    while (path.starts_with(u"../") || path.starts_with(u"./"))
        path.remove_prefix(path[1] == '.' ? 3 : 2);
    if (path == u"." || path == u"..")
        return result;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find(u'/', 1), path.size());
        const std::u16string_view segment = path.substr(0, length);
        path.remove_prefix(length);
        const bool isParent = segment == u"/..";
        if (!isParent && segment != u"/.") {
            result.appendString(segment);
            continue;
        }
        if (isParent) {
            const std::size_t slash = result.characters().rfind(u'/');
            result.setLength(slash == std::u16string_view::npos ? 0 : slash);
        }
        if (path.empty())
            result.appendCharacter(u'/');
    }
    return result;
}

NSMutableString resolve(const Components& reference, const Components& base) {
    const auto scheme = reference.scheme ? reference.scheme : base.scheme;
    auto authority = reference.authority;
    auto query = reference.query;
    NSMutableString path;
    if (reference.scheme || reference.authority) {
        path = removeDotSegments(reference.path);
    } else {
        authority = base.authority;
        if (reference.path.empty()) {
            path = NSMutableString::stringWithCharacters(base.path);
            if (!query)
                query = base.query;
        } else if (reference.path[0] == '/') {
            path = removeDotSegments(reference.path);
        } else {
            NSMutableString merged =
                NSMutableString::stringWithCapacity(base.path.size() + reference.path.size() + 1);
            if (base.authority && base.path.empty())
                merged.appendCharacter(u'/');
            // Without a slash nothing of the base is kept: rfind's absent result plus one is zero.
            merged.appendString(base.path.substr(0, base.path.rfind(u'/') + 1));
            merged.appendString(reference.path);
            path = removeDotSegments(merged);
        }
    }

    NSMutableString result = NSMutableString::stringWithCapacity(path.length() + 64);
    if (scheme) {
        result.appendString(*scheme);
        result.appendCharacter(u':');
    }
    if (authority) {
        result.appendString(u"//");
        result.appendString(*authority);
    }
    appendPath(result, path, scheme.has_value(), authority.has_value());
    if (query) {
        result.appendCharacter(u'?');
        result.appendString(*query);
    }
    if (reference.fragment) {
        result.appendCharacter(u'#');
        result.appendString(*reference.fragment);
    }
    return result;
}

NSMutableString escapeToMatch(std::u16string_view string) {
    const Components parts = split(string);
    NSMutableString result = NSMutableString::stringWithCapacity(string.size());
    if (parts.scheme) {
        result.appendString(*parts.scheme);
        result.appendCharacter(u':');
    }
    if (parts.authority) {
        result.appendString(u"//");
        if (parts.user) {
            appendEscaped(result, *parts.user, regNameSet);
            if (parts.password) {
                result.appendCharacter(u':');
                appendEscaped(result, *parts.password, userSet);
            }
            result.appendCharacter(u'@');
        }
        const bool isBracketed = parts.host->starts_with(u'[');
        if ((isBracketed && !isIPLiteral(*parts.host)) || (parts.port && !allIn(*parts.port, digitSet)))
            return nullptr;
        if (isBracketed)
            result.appendString(*parts.host);
        else
            appendEscaped(result, *parts.host, regNameSet);
        if (parts.port) {
            result.appendCharacter(u':');
            result.appendString(*parts.port);
        }
    }
    std::u16string_view path = parts.path;
    if (!parts.scheme && !parts.authority) {
        const std::size_t end = std::min(path.find(u'/'), path.size());
        appendEscaped(result, path.substr(0, end), pathSet, true);
        path.remove_prefix(end);
    }
    appendEscaped(result, path, pathSet);
    if (parts.query) {
        result.appendCharacter(u'?');
        appendEscaped(result, *parts.query, querySet);
    }
    if (parts.fragment) {
        result.appendCharacter(u'#');
        appendEscaped(result, *parts.fragment, querySet);
    }
    return result;
}

std::string decodePercentEscapes(std::u16string_view string) {
    const auto isHex = [](char c) { return hexDigitValue(c) >= 0; };
    // The escapes are ASCII, so they look the same in UTF-8; decoding shortens and can be done in place.
    std::string bytes = UTF8StringOfCharacters(string);
    std::size_t length = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '%' && bytes.size() - i > 2 && isHex(bytes[i + 1]) && isHex(bytes[i + 2])) {
            bytes[length++] =
                static_cast<char>(hexDigitValue(bytes[i + 1]) * 16 + hexDigitValue(bytes[i + 2]));
            i += 2;
        } else {
            bytes[length++] = bytes[i];
        }
    }
    bytes.resize(length);
    return bytes;
}

void appendEscapedPath(NSMutableString& result, std::string_view bytes) {
    for (const char byte : bytes) {
        const auto unit = static_cast<unsigned char>(byte);
        if (isIn(unit, pathSet))
            result.appendCharacter(unit);
        else
            appendEscapedByte(result, unit);
    }
}

} // namespace kelvo::rfc3986
