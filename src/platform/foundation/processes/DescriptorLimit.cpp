#include "platform/foundation/processes/DescriptorLimit.h"

#include <optional>

#include <sys/resource.h>

namespace kelvo {
namespace {

/// Absent when the limit was not raised.
std::optional<rlim_t> formerLimit;

rlimit descriptorLimit() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    return limit;
}

bool setDescriptorLimit(rlim_t limit) {
    const rlimit changed{limit, descriptorLimit().rlim_max};
    return ::setrlimit(RLIMIT_NOFILE, &changed) == 0;
}

} // namespace

void raiseDescriptorLimit() {
    const rlimit limit = descriptorLimit();
    if (limit.rlim_cur < limit.rlim_max && setDescriptorLimit(limit.rlim_max))
        formerLimit = limit.rlim_cur;
}

FormerDescriptorLimit::FormerDescriptorLimit() {
    if (formerLimit)
        setDescriptorLimit(*formerLimit);
}

FormerDescriptorLimit::~FormerDescriptorLimit() {
    if (formerLimit)
        setDescriptorLimit(descriptorLimit().rlim_max);
}

} // namespace kelvo
