#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>

namespace kelvo {

enum class NSJSONWritingOptions : std::uint8_t {
    /// One line without blanks.
    compact = 0,
    /// One element or pair a line, two blanks a level.
    prettyPrinted = 1,
};

class NSJSONSerialization {
public:
    /// The tree as JSON in UTF-8, without a line end. Any value may stand at the top level.
    ///
    /// Nil and NSNull are null, and so are infinities and not-a-number, which JSON lacks. Other floating
    /// numbers have the shortest form that reads back to the same number of their width; booleans are true
    /// and false. Dictionaries keep their order; unpaired surrogates become U+FFFD.
    ///
    /// Throws NSException (NSInvalidArgumentException) when the tree has a kind of value that JSON lacks
    /// (data, dates, URLs, sizes, colours, objects), a key that is no string, more than Value::maximumDepth
    /// levels or more than 4,194,304 values.
    static NSData dataWithJSONObject_options(const Value& object, NSJSONWritingOptions options);
};

} // namespace kelvo
