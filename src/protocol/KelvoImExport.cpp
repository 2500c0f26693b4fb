#include "protocol/KelvoImExport.h"

namespace kelvo {

KelvoImExport::~KelvoImExport() = default;

} // namespace kelvo
