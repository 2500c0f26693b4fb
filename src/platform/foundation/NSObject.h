#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <memory>

namespace KELVO_PUBLIC kelvo {

class Value;

/// The small polymorphic base of what needs key-value access, a class name, or to be the target of a run
/// loop's delayed perform. Held by std::shared_ptr and never copied.
class NSObject : public std::enable_shared_from_this<NSObject> {
public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject();

    virtual NSString className() const;
    /// The class name, unless a class says more.
    virtual NSString description() const;

    /// Whether the object's class or one that it derives from has that name. A class that others derive from
    /// says so by an override, which adds its own name to what its base says. False for nil.
    virtual bool isKindOfClass(const NSString& name) const;

    /// The named property. The base knows none and throws NSException (NSUndefinedKeyException).
    virtual Value valueForKey(const NSString& key) const;
    /// Changes the named property. The base knows none and throws NSException (NSUndefinedKeyException).
    virtual void setValue_forKey(const Value& value, const NSString& key);

    /// Performs the named message; how a run loop reaches its target. The base knows none and throws
    /// NSException (NSInvalidArgumentException).
    virtual Value performSelector_withObject(const NSString& selector, const Value& argument);
    /// Whether performSelector_withObject knows the message; who gives an object to others as a delegate may be
    /// asked. The base knows none.
    virtual bool respondsToSelector(const NSString& selector) const;

protected:
    /// For overriders, on a key they do not know.
    [[noreturn]] void throwUndefinedKey(const NSString& key) const;
};

} // namespace kelvo
