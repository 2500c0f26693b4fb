#include "collections/NSObjectKelvoExtensions.h"

#include "platform/foundation/NSLog.h"
#include "platform/foundation/connections/NSRunLoop.h"

#include <exception>

namespace kelvo {

Value getSafeValueForKey(const NSObject& object, const NSString& key) {
    try {
        return object.valueForKey(key);
    } catch (const std::exception&) {
        return nullptr;
    }
}

bool setSafeValue_forKey(NSObject& object, const Value& value, const NSString& key) {
    if (key.isNil())
        return false;
    try {
        object.setValue_forKey(value, key);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool isKindOfClassFromString(const NSObject& object, const NSString& name) {
    return object.isKindOfClass(name);
}

bool classDescriptionIsEqualTo(const NSObject& object, const NSString& name) {
    return !name.isNil() && object.className() == name;
}

NSBundle bundle(const NSObject& object) {
    return NSBundle::bundleForClass(typeid(object));
}

void cancelPreviousPerformRequestsAndPerformSelector_withObject_afterDelay(
    const std::shared_ptr<NSObject>& target, const NSString& selector, const Value& argument,
    double delaySeconds) {
    cancelPreviousPerformRequestsAndPerformSelector_withObject_afterDelay_inModes(
        target, selector, argument, delaySeconds, {NSDefaultRunLoopMode});
}

void cancelPreviousPerformRequestsAndPerformSelector_withObject_afterDelay_inModes(
    const std::shared_ptr<NSObject>& target, const NSString& selector, const Value& argument,
    double delaySeconds, const std::vector<NSString>& modes) {
    if (!target)
        return;
    NSRunLoop& loop = NSRunLoop::currentRunLoop();
    loop.cancelPerformSelector_target_argument(selector, target, argument);
    if (delaySeconds > 0)
        loop.performSelector_target_argument_afterDelay_inModes(selector, target, argument, delaySeconds,
                                                                modes);
    else
        target->performSelector_withObject(selector, argument);
}

void NSLogInvalidObj(const Value& object, const NSString& selector) {
    if (!object.isNull())
        NSLog(u"%@: Invalid argument '%@'.", selector, object);
}

} // namespace kelvo
