#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

namespace kelvo::cli {

/// The text of RTFD bytes for people: what stands in it as a file (pictures, as a rule) is there as its name
/// in brackets. Nil when they are no RTFD.
NSString textOfRichText(const NSData& rtfd);
/// The same of the text itself. Nil for nil.
NSString textOfRichText(const NSAttributedString& text);

} // namespace kelvo::cli
