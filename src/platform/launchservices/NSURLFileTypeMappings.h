#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

/// Extensions and MIME types by each other, after the table of declared types. Letters count the same in either case;
/// nil and what nobody has declared give nil.
class NSURLFileTypeMappings {
public:
    static const NSURLFileTypeMappings& sharedMappings();

    /// The usual MIME type of files with that extension.
    NSString MIMETypeForExtension(const NSString& extension) const;
    /// All extensions of that MIME type, the usual one first; empty when there is none.
    NSArray extensionsForMIMEType(const NSString& type) const;
    NSString preferredExtensionForMIMEType(const NSString& type) const;

private:
    NSURLFileTypeMappings() = default;
};

} // namespace kelvo
