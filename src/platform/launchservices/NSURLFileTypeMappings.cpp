#include "platform/launchservices/NSURLFileTypeMappings.h"

#include "platform/foundation/Value.h"
#include "platform/launchservices/DeclaredTypes.h"
#include "platform/launchservices/UTType.h"

#include <algorithm>
#include <string_view>

namespace kelvo {

namespace {

DeclaredType declaredType(const NSString& identifier) {
    const auto types = declaredTypes();
    const auto found = std::ranges::find(types, identifier.UTF8String(), &DeclaredType::identifier);
    return found == types.end() ? DeclaredType{} : *found;
}

NSArray partsOf(std::string_view list) {
    NSMutableArray parts = NSMutableArray::array();
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        parts.addObject(NSString::stringWithUTF8String(list.substr(0, end)));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return parts.copy();
}

NSString firstOf(const NSArray& strings) {
    return strings.count() == 0 ? nullptr : strings.objectAtIndex(0).string();
}

} // namespace

const NSURLFileTypeMappings& NSURLFileTypeMappings::sharedMappings() {
    static const NSURLFileTypeMappings mappings;
    return mappings;
}

NSString NSURLFileTypeMappings::MIMETypeForExtension(const NSString& extension) const {
    return firstOf(partsOf(declaredType(typeWithFilenameExtension(extension, ItemKind::file)).MIMETypes));
}

NSArray NSURLFileTypeMappings::extensionsForMIMEType(const NSString& type) const {
    return partsOf(declaredType(typeWithMIMEType(type)).extensions);
}

NSString NSURLFileTypeMappings::preferredExtensionForMIMEType(const NSString& type) const {
    return firstOf(extensionsForMIMEType(type));
}

} // namespace kelvo
