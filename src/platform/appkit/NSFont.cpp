#include "platform/appkit/NSFont.h"

namespace kelvo {

const NSString& NSFont::defaultFamilyName() {
    static const NSString name(u"Helvetica");
    return name;
}

} // namespace kelvo
