#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

#include <string>
#include <string_view>

namespace kelvo::importers {

/// In which encoding tags were written that do not say it: players of a country put the bytes of its encoding where the
/// format has Latin 1, or none. All such tags of one file are judged together, since one word alone says little.
class TagEncoding {
public:
    /// As FFmpeg gives it: in UTF-8, made of Latin 1, or as it stood in the file.
    void add(std::string_view tag);
    /// When all have been added; a text that cannot be of the encoding, because it is Unicode already, comes as it is.
    NSString textOf(std::string_view tag) const;

private:
    NSStringEncoding judged() const;

    /// Of tags that are not plain ASCII, each with a line feed behind it.
    std::string bytes_;
    mutable NSStringEncoding encoding_ = kCFStringEncodingInvalidId;
};

} // namespace kelvo::importers
