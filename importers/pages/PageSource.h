#pragma once

#include "importers/pages/PageFacts.h"
#include "platform/foundation/NSString.h"
#include "platform/webkit/WebResource.h"

#include <string>
#include <string_view>

namespace kelvo::importers {

/// The source of a page: by its byte-order mark, the charset that came with it, or that it declares. One that tells its
/// charset in no way is UTF-8 when it can be, else in the West's most common one.
NSString sourceOfMarkup(const WebResource& page);

/// What somebody reads of a page that is part of something else; see textOfPage(). `charset` came with it, and may be nil.
std::u16string textOfMarkup(std::string_view bytes, const NSString& charset, PageFacts* facts);

} // namespace kelvo::importers
