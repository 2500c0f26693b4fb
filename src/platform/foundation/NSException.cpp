#include "platform/foundation/NSException.h"

#include <utility>

namespace kelvo {

NSException::NSException(NSString name, NSString reason)
    : name_(std::move(name)),
      reason_(std::move(reason)),
      text_(name_.UTF8String() + ": " + reason_.UTF8String()) {}

} // namespace kelvo
