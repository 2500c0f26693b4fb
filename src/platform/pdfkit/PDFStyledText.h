#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSDictionary.h"

namespace kelvo {

/// What the engine has made of a page with its styles (PDFEngineMessages.h). Nil when there is no text.
/// Throws NSException (EngineCrashedException) for what it cannot have made.
NSAttributedString attributedStringOfStyledText(const NSDictionary& page);

} // namespace kelvo
