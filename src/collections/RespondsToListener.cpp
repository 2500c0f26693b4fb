#include "collections/RespondsToListener.h"

#include "platform/foundation/NSLog.h"

namespace kelvo {

const std::shared_ptr<RespondsToListener>& RespondsToListener::sharedInstance() {
    static const auto _listener = std::make_shared<RespondsToListener>();
    return _listener;
}

NSString RespondsToListener::className() const {
    return u"RespondsToListener";
}

bool RespondsToListener::respondsToSelector(const NSString& selector) const {
    const bool responds = NSObject::respondsToSelector(selector);
    if (!responds)
        NSLog(u"%@", selector);
    return responds;
}

} // namespace kelvo
