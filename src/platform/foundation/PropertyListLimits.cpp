#include "platform/foundation/PropertyListLimits.h"

#include "platform/foundation/NSException.h"

#include <utility>

namespace kelvo {

void throwPropertyListError(NSString reason) {
    throw NSException(NSGenericException, std::move(reason));
}

} // namespace kelvo
