#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/files/NSBundle.h"

#include <memory>
#include <typeinfo>
#include <vector>

namespace kelvo {

// Category NSObjectKelvoExtensions.

/// The named property; nil, and nothing thrown, when it cannot be had.
Value getSafeValueForKey(const NSObject& object, const NSString& key);
/// Changes the named property. False, and nothing thrown, when it cannot be changed; a nil key is not tried.
bool setSafeValue_forKey(NSObject& object, const Value& value, const NSString& key);

/// Whether the class of that name is the object's, or one that it derives from. False for nil.
bool isKindOfClassFromString(const NSObject& object, const NSString& name);
/// Whether that is the name of the object's own class. False for nil.
bool classDescriptionIsEqualTo(const NSObject& object, const NSString& name);

/// The bundle that the object's class came with, see NSBundle::bundleForClass.
NSBundle bundle(const NSObject& object);

/// Cancels what the target is still to perform with this selector and an equal argument, and then performs it:
/// after the delay, in the current thread's run loop and the given modes, or at once when the delay is not
/// above 0. So of many calls in a row the last one counts. What the target throws at once is let through.
void cancelPreviousPerformRequestsAndPerformSelector_withObject_afterDelay(
    const std::shared_ptr<NSObject>& target, const NSString& selector, const Value& argument,
    double delaySeconds);
void cancelPreviousPerformRequestsAndPerformSelector_withObject_afterDelay_inModes(
    const std::shared_ptr<NSObject>& target, const NSString& selector, const Value& argument,
    double delaySeconds, const std::vector<NSString>& modes);

/// Logs that the argument with which the message came makes no sense. NSNull is no such argument.
void NSLogInvalidObj(const Value& object, const NSString& selector);

namespace NSObjectKelvoExtensions {

/// The bundle that the class came with.
template <typename Class>
NSBundle bundle() {
    return NSBundle::bundleForClass(typeid(Class));
}

} // namespace NSObjectKelvoExtensions

} // namespace kelvo
