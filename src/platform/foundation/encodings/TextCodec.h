#pragma once

#include "platform/foundation/encodings/CFStringEncodings.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

/// Converts one text between an encoding and UTF-16. Making one takes a few microseconds at most once the
/// encoding has been used. A codec serves one thread at a time.
class TextCodec {
public:
    struct Progress {
        std::size_t bytesRead = 0;
        std::size_t unitsWritten = 0;
        /// Something was not valid in the encoding and became U+FFFD.
        bool hadErrors = false;
        /// There is more to come: call again with the bytes that are left, even if none are left.
        bool isOutputFull = false;
    };

    virtual ~TextCodec() = default;

    /// Decodes as much as fits. `bytes` reach to the end of the text: a sequence that they cut off becomes
    /// U+FFFD. Nothing is allocated, and a surrogate pair is never split; with room for fewer than two units
    /// nothing may be written. Units past the end of the result, but within the capacity, may have been
    /// overwritten.
    virtual Progress decode(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) = 0;

    /// Appends the bytes of leading units, up to the first character that the encoding cannot hold (an
    /// unpaired surrogate for all but the UTF-16 encodings), and returns how many units that were. `isEnd`
    /// says that nothing follows these units: then the closing escape sequence is appended once all have been
    /// taken.
    virtual std::size_t encode(std::u16string_view units, std::string& bytes, bool isEnd) = 0;

    /// What stands at the beginning of a file: the byte-order mark of UTF-16 and UTF-32, nothing in the
    /// others.
    virtual std::string_view preamble() const { return {}; }

    /// Forgets the text it was on, to begin another.
    virtual void reset() {}

    /// How many units one byte can become at most.
    virtual std::size_t mostUnitsPerByte() const { return 1; }
};

/// Null when the encoding is not available.
std::unique_ptr<TextCodec> makeTextCodec(CFStringEncoding encoding);

/// Appends the bytes of all units. What the encoding cannot hold loses its diacritics, if that helps, or
/// becomes U+FFFD (an unpaired surrogate, if the encoding has that) or a question mark. `isEnd` as for
/// encode. Returns whether nothing was lost.
bool encodeLossily(TextCodec& codec, std::u16string_view units, std::string& bytes, bool isEnd);

struct EncodingRow;

// The makers of each kind of codec; null when the library does not have it.
std::unique_ptr<TextCodec> makeUnicodeCodec(const EncodingRow& row);
std::unique_ptr<TextCodec> makeTableCodec(const EncodingRow& row);
std::unique_ptr<TextCodec> makeNonLossyASCIICodec();
std::unique_ptr<TextCodec> makeICUCodec(const char* name);
std::unique_ptr<TextCodec> makeIconvCodec(const char* name);

} // namespace kelvo
