#pragma once

#include "protocol/KelvoImExport.h"

#include <memory>

namespace kelvo {

class NSVendedObject;

/// What a connection vends for a root object: takes each request off the wire, has the root object perform it
/// from the top of the run loop, and puts the result on the wire.
std::shared_ptr<NSVendedObject> vendedObject(std::shared_ptr<KelvoImExport> rootObject);

} // namespace kelvo
