#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/Visibility.h"

#include <cstdint>
#include <memory>
#include <variant>

namespace KELVO_PUBLIC kelvo {

/// What a handle on attributed text refers to. The handle, and the attributes, are NSAttributedString's, on a floor above;
/// all that a tree needs to know of the text stands here.
class AttributedText {
public:
    AttributedText() = default;
    AttributedText(const AttributedText&) = delete;
    AttributedText& operator=(const AttributedText&) = delete;
    virtual ~AttributedText();

    virtual NSString plainString() const = 0;
    /// Equal text with equal attributes.
    virtual bool isEqualToText(const AttributedText& other) const = 0;
};

/// One node of a property-list tree: whatever can be an element of an array, a value of a dictionary, a
/// format argument or a result. Default-constructed it is nil; made from a nil handle it is nil as well.
///
/// At most 32 bytes; copying copies a handle. Trees are destroyed by recursion, so whoever builds one from a
/// file bounds its depth to maximumDepth.
class Value {
public:
    enum class Kind : std::uint8_t {
        nil,
        null,
        number,
        string,
        data,
        date,
        url,
        array,
        dictionary,
        size,
        color,
        attributedText,
        object
    };
    /// The most levels of containers within containers that readers build and the wire carries.
    static constexpr std::size_t maximumDepth = 512;

    Value() noexcept = default;
    Value(std::nullptr_t) noexcept {}
    Value(NSNull null) noexcept : held_(null) {}
    Value(NSNumber number) noexcept : held_(number) {}
    Value(const char16_t* string) : Value(NSString(string)) {}
    Value(NSString string) noexcept {
        if (!string.isNil())
            held_ = static_cast<NSString&&>(string);
    }
    Value(NSData data) noexcept {
        if (!data.isNil())
            held_ = static_cast<NSData&&>(data);
    }
    Value(NSDate date) noexcept : held_(date) {}
    Value(NSURL url) noexcept {
        if (!url.isNil())
            held_ = static_cast<NSURL&&>(url);
    }
    Value(NSArray array) noexcept {
        if (!array.isNil())
            held_ = static_cast<NSArray&&>(array);
    }
    Value(const NSMutableArray& array) noexcept : Value(array.copy()) {}
    Value(NSDictionary dictionary) noexcept {
        if (!dictionary.isNil())
            held_ = static_cast<NSDictionary&&>(dictionary);
    }
    Value(const NSMutableDictionary& dictionary) noexcept : Value(dictionary.copy()) {}
    Value(NSSize size) noexcept : held_(size) {}
    Value(NSColor color) noexcept : held_(color) {}
    /// NSAttributedString converts itself.
    Value(std::shared_ptr<const AttributedText> text) noexcept {
        if (text)
            held_ = static_cast<std::shared_ptr<const AttributedText>&&>(text);
    }
    Value(std::shared_ptr<NSObject> object) noexcept {
        if (object)
            held_ = static_cast<std::shared_ptr<NSObject>&&>(object);
    }
    // Numbers are boxed by name (NSNumber::numberWithInt and its like), so that their kind is always meant.
    template <typename T>
    requires std::is_arithmetic_v<T> Value(T)
    = delete;

    Kind kind() const noexcept { return static_cast<Kind>(held_.index()); }
    bool isNil() const noexcept { return kind() == Kind::nil; }
    bool isNull() const noexcept { return kind() == Kind::null; }
    bool isNumber() const noexcept { return kind() == Kind::number; }
    bool isString() const noexcept { return kind() == Kind::string; }
    bool isData() const noexcept { return kind() == Kind::data; }
    bool isDate() const noexcept { return kind() == Kind::date; }
    bool isURL() const noexcept { return kind() == Kind::url; }
    bool isArray() const noexcept { return kind() == Kind::array; }
    bool isDictionary() const noexcept { return kind() == Kind::dictionary; }
    bool isSize() const noexcept { return kind() == Kind::size; }
    bool isColor() const noexcept { return kind() == Kind::color; }
    bool isAttributedText() const noexcept { return kind() == Kind::attributedText; }
    bool isObject() const noexcept { return kind() == Kind::object; }

    /// The held value when it is of that kind; else nil, or null for the kinds that have no nil.
    const NSNumber* numberIfAny() const noexcept { return std::get_if<NSNumber>(&held_); }
    const NSDate* dateIfAny() const noexcept { return std::get_if<NSDate>(&held_); }
    const NSSize* sizeIfAny() const noexcept { return std::get_if<NSSize>(&held_); }
    const NSColor* colorIfAny() const noexcept { return std::get_if<NSColor>(&held_); }
    NSString string() const { return heldOr<NSString>(); }
    NSData data() const { return heldOr<NSData>(); }
    NSURL url() const { return heldOr<NSURL>(); }
    NSArray array() const { return heldOr<NSArray>(); }
    NSDictionary dictionary() const { return heldOr<NSDictionary>(); }
    std::shared_ptr<const AttributedText> attributedText() const {
        return heldOr<std::shared_ptr<const AttributedText>>();
    }
    std::shared_ptr<NSObject> object() const { return heldOr<std::shared_ptr<NSObject>>(); }

    /// The shared storage is the same, or, for kinds without shared storage, the values are equal.
    bool isIdenticalTo(const Value& other) const noexcept;
    /// What "%@" shows: strings as they are, numbers in decimal, containers in the old-style property-list
    /// form, nil as "(null)".
    NSString description() const;

    /// Deep. Objects are equal when they are the same object.
    KELVO_PUBLIC_FRIEND bool operator==(const Value& left, const Value& right);
    /// Equal values have equal hashes.
    std::size_t hash() const;

private:
    template <typename T>
    T heldOr() const {
        const T* held = std::get_if<T>(&held_);
        return held ? *held : T();
    }

    // In the order of Kind.
    std::variant<std::monostate, NSNull, NSNumber, NSString, NSData, NSDate, NSURL, NSArray, NSDictionary,
                 NSSize, NSColor, std::shared_ptr<const AttributedText>, std::shared_ptr<NSObject>>
        held_;
};

static_assert(sizeof(Value) <= 32);

struct NSMutableDictionary::Pair {
    Value object;
    Value key;
};

} // namespace kelvo
