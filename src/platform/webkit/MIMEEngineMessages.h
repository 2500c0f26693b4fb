#pragma once

namespace kelvo::mimeengine {

// What the stand-in for MIME HTML and plumwick-mime-engine say to each other.

inline constexpr const char* programName = "plumwick-mime-engine";
/// The base of messages that have no address of their own (RFC 2557, section 5).
inline constexpr const char16_t* schemeWithoutAddress = u"thismessage";

// A message: the bytes of the file. Its answer is nil when that is no message that can be a page, or a dictionary:

/// Data: the contents of all parts, one after the other.
inline constexpr const char16_t* contentsKey = u"Contents";
/// A string: the address that those of the parts are resolved against.
inline constexpr const char16_t* baseKey = u"Base";
/// A string: the Content-ID of the part to begin with; missing when the message names none.
inline constexpr const char16_t* startKey = u"Start";
/// A boolean: the parts are those of one page, whatever they are.
inline constexpr const char16_t* relatedKey = u"Related";
/// An array of dictionaries, in the order of the message:
inline constexpr const char16_t* partsKey = u"Parts";
/// Numbers: where the contents of the part are.
inline constexpr const char16_t* placeKey = u"Place";
inline constexpr const char16_t* lengthKey = u"Length";
/// Strings: the MIME type in lower case; the rest are missing where the part has none.
inline constexpr const char16_t* typeKey = u"Type";
inline constexpr const char16_t* charsetKey = u"Charset";
inline constexpr const char16_t* contentIDKey = u"ContentID";
/// Resolved.
inline constexpr const char16_t* addressKey = u"Address";

} // namespace kelvo::mimeengine
