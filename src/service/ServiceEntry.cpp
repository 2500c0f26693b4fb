#include "service/ServiceEntry.h"

#include "platform/appkit/NSApplication.h"
#include "platform/foundation/NSAutoreleasePool.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/connections/NSConnection.h"
#include "platform/foundation/connections/NSRunLoop.h"
#include "platform/foundation/processes/ProcessFacts.h"
#include "platform/ledger/RequestLedger.h"
#include "protocol/KelvoImExportAdapter.h"
#include "protocol/Operations.h"
#include "protocol/ServiceLedger.h"
#include "service/PlumwickHelper.h"

#include <exception>

namespace kelvo {
namespace {

void openLedger(RequestLedger& ledger) {
    for (const RequestRecord& lost : ledger.open(pathOfServiceLedger())) {
        const NSString given =
            lost.path.isNil() ? stringWithFormat(u"%llu bytes", lost.byteCount) : lost.path;
        NSLog(u"The service ended while it was at work on %@ of %@ (request %llu).",
              selectorOfOperation(static_cast<Operation>(lost.operation)), given, lost.sequence);
    }
}

} // namespace

void runService() {
    // What this system brings for the platform is installed beside its programs.
    setPlatformRoot(folderOfThisProgram());
    NSAutoreleasePool outermostPool;
    NSConnection& connection = NSConnection::defaultConnection();
    const auto ledger = std::make_shared<RequestLedger>();
    connection.setRootObject(vendedObject(std::make_shared<PlumwickHelper>(), ledger));
    if (connection.registerName(KelvoImExport::registeredName))
        openLedger(*ledger);
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
