#include "service/ServiceEntry.h"

#include "platform/appkit/NSApplication.h"
#include "platform/foundation/NSAutoreleasePool.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/foundation/connections/NSRunLoop.h"
#include "protocol/KelvoImExportAdapter.h"
#include "service/PlumwickHelper.h"

#include <exception>

namespace kelvo {

void runService() {
    NSAutoreleasePool outermostPool;
    NSConnection& connection = NSConnection::defaultConnection();
    connection.setRootObject(vendedObject(std::make_shared<PlumwickHelper>()));
    connection.registerName(KelvoImExport::registeredName);
    connection.setIndependentConversationQueueing(true);
    connection.setRequestTimeout(KelvoImExport::timeoutSeconds);
    connection.setReplyTimeout(KelvoImExport::timeoutSeconds);
    NSApplication::sharedApplication();
    for (;;) {
        try {
            NSRunLoop::currentRunLoop().run();
        } catch (const std::exception& exception) {
            // A delayed perform that failed; requests answer for their own failures.
            NSLog(u"%@", NSString::stringByRepairingUTF8String(exception.what()));
        }
    }
}

} // namespace kelvo
