#include "platform/foundation/PropertyListLimits.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSStringFormat.h"

#include <utility>

namespace kelvo {

void throwPropertyListError(NSString reason) {
    throw NSException(NSGenericException, std::move(reason));
}

NSString propertyListReasonWithLine(const NSString& reason, std::int64_t line) {
    return stringWithFormat(u"%@ (line %lld).", reason.substringToIndex(reason.length() - 1), line);
}

} // namespace kelvo
