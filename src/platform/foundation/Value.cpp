#include "platform/foundation/Value.h"

#include "platform/foundation/OldStylePropertyListWriter.h"

#include <cmath>

namespace kelvo {
namespace {

std::size_t mix(std::size_t seed, std::size_t hash) {
    return seed ^ (hash + 0x9E3779B97F4A7C15u + (seed << 6) + (seed >> 2));
}

} // namespace

AttributedText::~AttributedText() = default;

bool Value::isIdenticalTo(const Value& other) const noexcept {
    if (kind() != other.kind())
        return false;
    switch (kind()) {
    case Kind::string:
        return std::get<NSString>(held_).isIdenticalTo(std::get<NSString>(other.held_));
    case Kind::data:
        return std::get<NSData>(held_).isIdenticalTo(std::get<NSData>(other.held_));
    case Kind::url:
        return std::get<NSURL>(held_).isIdenticalTo(std::get<NSURL>(other.held_));
    case Kind::array:
        return std::get<NSArray>(held_).isIdenticalTo(std::get<NSArray>(other.held_));
    case Kind::dictionary:
        return std::get<NSDictionary>(held_).isIdenticalTo(std::get<NSDictionary>(other.held_));
    case Kind::attributedText:
        return attributedText() == other.attributedText();
    default:
        return *this == other;
    }
}

NSString Value::description() const {
    return descriptionOfValue(*this);
}

bool operator==(const Value& left, const Value& right) {
    if (left.isAttributedText() && right.isAttributedText())
        return left.isIdenticalTo(right) || left.attributedText()->isEqualToText(*right.attributedText());
    return left.held_ == right.held_;
}

std::size_t Value::hash() const {
    const auto seed = static_cast<std::size_t>(kind());
    switch (kind()) {
    case Kind::nil:
    case Kind::null:
        return seed;
    case Kind::number:
        return std::get<NSNumber>(held_).hash();
    case Kind::string:
        return std::hash<NSString>()(std::get<NSString>(held_));
    case Kind::data:
        return std::hash<std::string_view>()(std::get<NSData>(held_).characters());
    case Kind::date:
        return std::hash<double>()(std::get<NSDate>(held_).timeIntervalSinceReferenceDate());
    case Kind::url:
        return std::hash<NSString>()(std::get<NSURL>(held_).absoluteString());
    case Kind::array:
        return mix(seed, std::get<NSArray>(held_).count());
    case Kind::dictionary:
        // Equal dictionaries may differ in order, so only the count takes part.
        return mix(seed, std::get<NSDictionary>(held_).count());
    case Kind::size:
        return mix(std::hash<float>()(std::get<NSSize>(held_).width),
                   std::hash<float>()(std::get<NSSize>(held_).height));
    case Kind::color:
        return std::hash<float>()(std::get<NSColor>(held_).red);
    case Kind::attributedText:
        return mix(seed, std::hash<NSString>()(attributedText()->plainString()));
    case Kind::object:
        return std::hash<std::shared_ptr<NSObject>>()(std::get<std::shared_ptr<NSObject>>(held_));
    }
    return seed;
}

} // namespace kelvo
