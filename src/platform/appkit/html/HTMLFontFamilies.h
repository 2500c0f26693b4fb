#pragma once

#include "platform/foundation/NSString.h"

#include <string_view>

namespace kelvo {

struct HTMLFontFamily {
    NSString name;
    bool isFixedPitch = false;
};

/// The family that a page's list of families (as in CSS: names between commas, quoted or not) means to a
/// reader of rich text: the first that every system has or that is a generic name, for which Times, Helvetica
/// and Courier stand in; else the first that the page names.
HTMLFontFamily fontFamilyOfList(std::u16string_view families);

} // namespace kelvo
