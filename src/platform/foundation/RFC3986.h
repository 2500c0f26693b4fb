#pragma once

#include "platform/foundation/NSMutableString.h"

#include <optional>
#include <string>
#include <string_view>

namespace kelvo::rfc3986 {

/// The parts of a URI or a relative reference, as views into the string that was parsed. An absent part
/// differs from one that is there and empty; the path is always there. Every function here takes time linear
/// in its input.
struct Components {
    std::optional<std::u16string_view> scheme;
    /// Everything between "//" and the path; what it consists of are the next four.
    std::optional<std::u16string_view> authority;
    std::optional<std::u16string_view> user;
    std::optional<std::u16string_view> password;
    /// With the brackets of an IP literal. Present whenever the authority is.
    std::optional<std::u16string_view> host;
    std::optional<std::u16string_view> port;
    std::u16string_view path;
    std::optional<std::u16string_view> query;
    std::optional<std::u16string_view> fragment;
};

/// Exactly the grammar of RFC 3986, appendix A ("URI-reference"); absent when `string` does not match. The
/// empty string matches: it is the reference to the base itself.
std::optional<Components> parse(std::u16string_view string);

/// The reference resolved against a base (section 5.2), as a string that parses into the resolved components:
/// where a path without an authority would begin with two slashes, "/." is put before it, and where a path
/// without scheme and authority would begin with a segment holding a colon, "./". A base without a scheme
/// gives a result without one.
NSMutableString resolve(const Components& reference, const Components& base);

/// Section 5.2.4.
NSMutableString removeDotSegments(std::u16string_view path);

/// The string with every unit that the grammar does not allow where it stands percent-escaped as UTF-8
/// (unpaired surrogates as U+FFFD), so that it parses. Nil where escaping cannot help: in a port that is no
/// number and in brackets that hold no IP address. A string that parses is unchanged.
NSMutableString escapeToMatch(std::u16string_view string);

/// The bytes that the percent escapes stand for; everything else as UTF-8. A percent sign without two digits
/// stays.
std::string decodePercentEscapes(std::u16string_view string);
/// For the path of a URI with an authority: percent-escapes every byte that a path may not hold.
void appendEscapedPath(NSMutableString& result, std::string_view bytes);

} // namespace kelvo::rfc3986
