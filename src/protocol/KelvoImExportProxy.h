#pragma once

#include "protocol/KelvoImExport.h"

#include <cstdint>
#include <memory>

namespace kelvo {

class NSConnection;

/// The root object at the other end of a conversation.
class KelvoImExportProxy : public KelvoImExport {
public:
    /// The name that the latest request had; 0 before the first.
    virtual std::uint64_t latestToken() const = 0;
};

/// Each operation sends its request and waits for the answer, at most for the connection's time-outs. Must not be called from within an event of the thread's
/// run loop.
///
/// Throws NSException: NSPortTimeoutException when no answer came in time, NSInvalidReceivePortException when
/// the conversation broke off, NSInvalidArgumentException when an argument cannot be sent, and whatever the
/// operation itself threw at the other end, by name and reason.
std::unique_ptr<KelvoImExportProxy> rootProxyForConnection(NSConnection& connection);

} // namespace kelvo
