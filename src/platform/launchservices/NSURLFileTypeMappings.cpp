#include "platform/launchservices/NSURLFileTypeMappings.h"

#include "platform/foundation/Value.h"
#include "platform/launchservices/UTType.h"

namespace kelvo {

namespace {

NSString firstOf(const NSArray& strings) {
    return strings.count() == 0 ? nullptr : strings.objectAtIndex(0).string();
}

} // namespace

const NSURLFileTypeMappings& NSURLFileTypeMappings::sharedMappings() {
    static const NSURLFileTypeMappings mappings;
    return mappings;
}

NSString NSURLFileTypeMappings::MIMETypeForExtension(const NSString& extension) const {
    return firstOf(UTTypeCopyAllTagsWithClass(typeWithFilenameExtension(extension, ItemKind::file),
                                              UTTagClass::MIMEType));
}

NSArray NSURLFileTypeMappings::extensionsForMIMEType(const NSString& type) const {
    return UTTypeCopyAllTagsWithClass(typeWithMIMEType(type), UTTagClass::filenameExtension);
}

NSString NSURLFileTypeMappings::preferredExtensionForMIMEType(const NSString& type) const {
    return firstOf(extensionsForMIMEType(type));
}

} // namespace kelvo
