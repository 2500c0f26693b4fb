#include "collections/NSObjectKelvoExtensions.h"
#include "collections/RespondsToListener.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/connections/NSRunLoop.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>

namespace kelvo {
namespace {

class Base : public NSObject {
public:
    std::string heard;

    NSString className() const override { return u"Base"; }
    bool isKindOfClass(const NSString& name) const override {
        return name == u"Base" || NSObject::isKindOfClass(name);
    }
    Value valueForKey(const NSString& key) const override {
        if (key == u"full")
            throw std::bad_alloc();
        return key == u"known" ? value_ : NSObject::valueForKey(key);
    }
    void setValue_forKey(const Value& value, const NSString& key) override {
        if (key != u"known" && !key.isNil())
            return NSObject::setValue_forKey(value, key);
        value_ = value;
    }
    Value performSelector_withObject(const NSString& selector, const Value& argument) override {
        heard += selector.UTF8String() + argument.string().UTF8String() + " ";
        return nullptr;
    }

private:
    Value value_;
};

class Derived final : public Base {
public:
    NSString className() const override { return u"Derived"; }
    NSString description() const override { return u"something else"; }
};

TEST(ObjectExtensionsTest, AccessNeverFails) {
    Derived object;
    EXPECT_TRUE(setSafeValue_forKey(object, u"value", u"known"));
    EXPECT_EQ(getSafeValueForKey(object, u"known"), Value(u"value"));
    EXPECT_FALSE(setSafeValue_forKey(object, u"value", u"unknown") ||
                 setSafeValue_forKey(object, u"value", nullptr));
    for (const NSString& key : {NSString(u"unknown"), NSString(u"full"), NSString()})
        EXPECT_TRUE(getSafeValueForKey(object, key).isNil());
}

TEST(ObjectExtensionsTest, KnowsClassesByName) {
    const Derived object;
    for (const char16_t* name : {u"Derived", u"Base", u"NSObject"})
        EXPECT_TRUE(isKindOfClassFromString(object, name));
    for (const char16_t* name : {u"NSString", u"", static_cast<const char16_t*>(nullptr)})
        EXPECT_FALSE(isKindOfClassFromString(object, name) || classDescriptionIsEqualTo(object, name));
    EXPECT_TRUE(classDescriptionIsEqualTo(object, u"Derived"));
    EXPECT_FALSE(classDescriptionIsEqualTo(object, u"Base"));
    EXPECT_FALSE(isKindOfClassFromString(Base(), u"Derived"));
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
    EXPECT_EQ(bundle(object).bundlePath().UTF8String(), folder);
    EXPECT_EQ(NSObjectKelvoExtensions::bundle<Derived>().bundlePath().UTF8String(), folder);
    const std::streambuf& ofLibrary = *std::cout.rdbuf();
    EXPECT_NE(NSBundle::bundleForClass(typeid(ofLibrary)).bundlePath().UTF8String(), folder);
}

TEST(ObjectExtensionsTest, PerformsTheLastOfManyCalls) {
    const auto object = std::make_shared<Derived>(), other = std::make_shared<Derived>();
    const auto perform = [](const auto& target, const char16_t* argument, double delay) {
        cancelPreviousPerformRequestsAndPerformSelector_withObject_afterDelay(target, u"do", argument, delay);
    };
    for (int call = 0; call < 3; ++call)
        perform(object, u"1", 0.01);
    perform(object, u"2", 0.001);
    perform(other, u"1", 0.001);
    EXPECT_EQ(object->heard, "");
    cancelPreviousPerformRequestsAndPerformSelector_withObject_afterDelay_inModes(object, u"do", u"3", 0.001,
                                                                                  {u"mine"});
    NSRunLoop::currentRunLoop().run();
    EXPECT_EQ(object->heard, "do2 do1 ");
    EXPECT_EQ(other->heard, "do1 ");
    perform(object, u"3", 0);
    EXPECT_EQ(object->heard, "do2 do1 do3 ") << "at once";
    EXPECT_FALSE(NSRunLoop::currentRunLoop().runMode_beforeDate(u"mine", NSDate::date()))
        << "it was cancelled";
}

TEST(ObjectExtensionsTest, LogsWhatMakesNoSense) {
    const NSLogCapture log;
    const auto listener = RespondsToListener::sharedInstance();
    EXPECT_EQ(listener, RespondsToListener::sharedInstance());
    EXPECT_FALSE(listener->respondsToSelector(u"webView:%@:"));
    NSLogInvalidObj(u"100%", u"setX:");
    NSLogInvalidObj(NSNull(), u"setX:");
    NSLogInvalidObj(nullptr, u"setY:");
    EXPECT_EQ(log.messages(), (std::vector<NSString>{u"webView:%@:", u"setX:: Invalid argument '100%'.",
                                                     u"setY:: Invalid argument '(null)'."}));
}

} // namespace
} // namespace kelvo
