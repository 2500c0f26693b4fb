#include "platform/appkit/NSApplication.h"

namespace kelvo {

const std::shared_ptr<NSApplication>& NSApplication::sharedApplication() {
    static const std::shared_ptr<NSApplication> application(new NSApplication);
    return application;
}

NSString NSApplication::className() const {
    return u"NSApplication";
}

} // namespace kelvo
