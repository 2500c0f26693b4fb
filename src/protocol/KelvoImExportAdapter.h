#pragma once

#include "protocol/KelvoImExport.h"

#include <memory>

namespace kelvo {

class NSVendedObject;
class RequestLedger;

/// What a connection vends for a root object: takes each request off the wire, has the root object perform it
/// from the top of the run loop, and puts the result on the wire. While the root object is at work RequestNotes::current()
/// gathers what is learnt of the request; what became of it goes into the ledger, which may be null.
std::shared_ptr<NSVendedObject> vendedObject(std::shared_ptr<KelvoImExport> rootObject,
                                             std::shared_ptr<RequestLedger> ledger);

} // namespace kelvo
