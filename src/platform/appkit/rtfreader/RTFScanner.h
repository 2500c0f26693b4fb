#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvo {

/// One piece of RTF source.
struct RTFToken {
    enum class Kind : std::uint8_t {
        end,
        groupOpen,
        groupClose,
        /// `bytes` is the name without the backslash.
        word,
        /// `parameter` is the character after the backslash; every kind of line end is '\n'.
        symbol,
        /// `\'hh`: `parameter` is the byte.
        hexByte,
        /// Not empty, without line ends and NUL bytes.
        text,
        /// What `\bin` announced, as much of it as is there.
        binary
    };

    Kind kind = Kind::end;
    bool hasParameter = false;
    /// Held within plus and minus 0x7FFFFFFF when the source says more.
    std::int32_t parameter = 0;
    std::string_view bytes{};
};

/// Cuts RTF source into tokens, in linear time and without memory of its own. Takes any bytes.
class RTFScanner {
public:
    /// `source` must stay valid.
    explicit RTFScanner(std::string_view source) : next_(source.data()), end_(next_ + source.size()) {}

    RTFToken next();
    /// Passes over the rest of the innermost open group, up to the brace that closes it.
    void skipGroup();

private:
    RTFToken word();
    RTFToken backslash();
    std::string_view binary(std::int32_t length);

    const char* next_;
    const char* end_;
};

} // namespace kelvo
