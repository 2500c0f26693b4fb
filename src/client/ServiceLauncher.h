#pragma once

#include "platform/foundation/connections/NSConnection.h"

#include <memory>

namespace kelvo {

/// Starts the service and gives a conversation with it. A lock lets one client at a time do so; a service
/// that another client has started meanwhile is taken as well. Throws NSException (NSPortException) when the
/// program is missing, ends at once, or does not answer within the time.
std::unique_ptr<NSConnection> startService(const NSString& program, double timeoutSeconds);

} // namespace kelvo
