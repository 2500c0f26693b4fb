#include "client/ServiceLauncher.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/processes/NSTask.h"
#include "protocol/KelvoImExport.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace kelvo {
namespace {

using Clock = std::chrono::steady_clock;

std::unique_ptr<NSConnection> connectionIfAny() {
    return NSConnection::connectionWithRegisteredName(KelvoImExport::registeredName);
}

} // namespace

std::unique_ptr<NSConnection> startService(const NSString& program, double timeoutSeconds) {
    const auto lock =
        PortLock::lock(socketPathOfPortName(KelvoImExport::registeredName), ".start", timeoutSeconds);
    // Whoever held the lock may have started it.
    if (auto connection = connectionIfAny())
        return connection;
    if (!lock)
        throw NSException(NSPortException, u"Another client has been starting the service for too long.");
    if (program.isNil())
        throw NSException(NSPortException,
                          u"The service's program PlumwickHelper was found neither beside this "
                          u"program, nor among the installed helper programs, nor on PATH.");

    NSTask service;
    service.setLaunchPath(program);
    service.setStandardInput(NSFileHandle::fileHandleWithNullDevice());
    service.setStandardOutput(NSFileHandle::fileHandleWithNullDevice());
    service.setStandardError(NSFileHandle::fileHandleWithNullDevice());
    service.setSession(NSTask::Session::own);
    service.launch();

    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(timeoutSeconds));
    auto pause = std::chrono::microseconds(500);
    constexpr auto longestPause = std::chrono::microseconds(50'000);
    while (Clock::now() < end) {
        if (auto connection = connectionIfAny()) {
            // A copy that was started by hand at the same moment has the name; ours would run on unreachable.
            if (connection->peerProcessIdentifier() != service.processIdentifier())
                service.terminate();
            return connection;
        }
        if (!service.isRunning())
            throw NSException(NSPortException,
                              stringWithFormat(u"%@ ended as soon as it was started.", program));
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, longestPause);
    }
    service.terminate();
    throw NSException(NSPortException, stringWithFormat(u"%@ was started and does not answer.", program));
}

} // namespace kelvo
