#pragma once

#include "markup/PlainTextContext.h"
#include "markup/TagScanner.h"

namespace kelvo {

/// The handler that only collects the text of the body, each run after one space, references decoded.
/// Nothing is collapsed and no tag but body, head and noframes is looked at.
bool SimplePlainTextHandler(const NSString& string, char16_t* characters, std::size_t nameLocation,
                            std::size_t nameLength, std::size_t tagLocation, std::size_t tagLength,
                            std::size_t textLocation, TagKind kind, void* context);

} // namespace kelvo
