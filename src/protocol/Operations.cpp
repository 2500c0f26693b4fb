#include "protocol/Operations.h"

#include "protocol/KelvoImExport.capnp.h"

#include <capnp/schema.h>

namespace kelvo {
namespace {

/// The annotation's number in the schema.
constexpr std::uint64_t selectorAnnotation = 0x82e1d822a292143a;

} // namespace

NSString selectorOfOperation(Operation operation) {
    const auto methods = capnp::Schema::from<wire::KelvoImExport>().getMethods();
    if (static_cast<std::size_t>(operation) >= operationCount)
        return nullptr;
    for (const auto annotation : methods[static_cast<unsigned>(operation)].getProto().getAnnotations()) {
        if (annotation.getId() == selectorAnnotation)
            return NSString::stringByRepairingUTF8String(annotation.getValue().getText().cStr());
    }
    return nullptr;
}

} // namespace kelvo
