#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"

#include <memory>

namespace kelvo {

/// The text of a document that is being worked on.
class NSTextStorage : public NSMutableAttributedString {
public:
    using NSMutableAttributedString::NSMutableAttributedString;

    /// The text of RTFD bytes, or null when they are none; `documentAttributes` (may be null) is set to
    /// what the document says of itself, to nil on failure.
    static std::shared_ptr<NSTextStorage> initWithRTFD_documentAttributes(const NSData& data,
                                                                          NSDictionary* documentAttributes);
};

} // namespace kelvo
