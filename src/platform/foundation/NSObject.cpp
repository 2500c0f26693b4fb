#include "platform/foundation/NSObject.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"

namespace kelvo {

NSObject::~NSObject() = default;

NSString NSObject::className() const {
    return u"NSObject";
}

NSString NSObject::description() const {
    return className();
}

bool NSObject::isKindOfClass(const NSString& name) const {
    return !name.isNil() && (name == className() || name == u"NSObject");
}

Value NSObject::valueForKey(const NSString& key) const {
    throwUndefinedKey(key);
}

void NSObject::setValue_forKey(const Value&, const NSString& key) {
    throwUndefinedKey(key);
}

Value NSObject::performSelector_withObject(const NSString& selector, const Value&) {
    throw NSException(NSInvalidArgumentException, className()
                                                      .stringByAppendingString(u" does not understand ")
                                                      .stringByAppendingString(selector)
                                                      .stringByAppendingString(u"."));
}

bool NSObject::respondsToSelector(const NSString&) const {
    return false;
}

void NSObject::throwUndefinedKey(const NSString& key) const {
    throw NSException(NSUndefinedKeyException, className()
                                                   .stringByAppendingString(u" has no property named ")
                                                   .stringByAppendingString(key)
                                                   .stringByAppendingString(u"."));
}

} // namespace kelvo
