#include "protocol/ServiceLedger.h"

#include "platform/foundation/connections/NSPortName.h"
#include "protocol/KelvoImExport.h"

namespace kelvo {

std::string pathOfServiceLedger() {
    return socketPathOfPortName(KelvoImExport::registeredName) + ".ledger";
}

} // namespace kelvo
