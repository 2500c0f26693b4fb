#include "platform/launchservices/MIMEMagic.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view header = "MIME-Magic\0\n"sv;
constexpr std::size_t longestReach = 1 << 20;
constexpr unsigned deepestLevel = 16;

} // namespace

/// The file from front to back.
class MIMEMagic::Reader {
public:
    explicit Reader(std::string_view file) : rest_(file) {}

    bool isAtEnd() const { return rest_.empty(); }
    bool isAtType() const { return rest_.starts_with('['); }
    bool take(std::string_view part) {
        if (!rest_.starts_with(part))
            return false;
        rest_.remove_prefix(part.size());
        return true;
    }
    /// Of decimal digits; absent when there are none and past any place that counts.
    std::optional<std::size_t> number() {
        std::size_t value = 0;
        std::size_t length = 0;
        for (; length < rest_.size() && isASCIIDigit(rest_[length]); ++length) {
            value = value * 10 + static_cast<std::size_t>(rest_[length] - '0');
            if (value > longestReach)
                return std::nullopt;
        }
        rest_.remove_prefix(length);
        return length > 0 ? std::optional(value) : std::nullopt;
    }
    std::optional<std::string> bytes(std::size_t count) {
        if (rest_.size() < count)
            return std::nullopt;
        std::string result(rest_.substr(0, count));
        rest_.remove_prefix(count);
        return result;
    }
    std::optional<std::string> upTo(char end) {
        const std::size_t length = rest_.find(end);
        auto result = length == std::string_view::npos ? std::nullopt : bytes(length);
        if (result)
            rest_.remove_prefix(1);
        return result;
    }

    /// "[50:image/png]" and a line feed. The rules are to follow.
    std::optional<Type> type(std::size_t& priority) {
        if (!take("["))
            return std::nullopt;
        const auto level = number();
        if (!level || !take(":"))
            return std::nullopt;
        auto name = upTo(']');
        if (!name || name->find('\n') != std::string::npos || !take("\n"))
            return std::nullopt;
        priority = *level;
        return Type{std::move(*name), {}};
    }

    /// "1>8=", the length of the value in two bytes, the value, and perhaps "&" and a mask of that length, "~2" and
    /// "+4". `levelAbove` is that of the rule before.
    std::optional<Rule> rule(std::optional<unsigned> levelAbove) {
        const bool isNested = !rest_.empty() && isASCIIDigit(rest_.front());
        const auto level = isNested ? number() : std::size_t{0};
        if (!level || *level > deepestLevel || *level > (levelAbove ? *levelAbove + 1 : 0) || !take(">"))
            return std::nullopt;
        const auto place = number();
        if (!place || !take("="))
            return std::nullopt;
        const auto size = bytes(2);
        if (!size)
            return std::nullopt;
        const std::size_t length =
            static_cast<unsigned char>((*size)[0]) << 8 | static_cast<unsigned char>((*size)[1]);
        auto value = bytes(length);
        if (!value || length == 0)
            return std::nullopt;
        Rule rule{static_cast<unsigned>(*level), *place, 1, std::move(*value), {}};
        if (take("&")) {
            auto mask = bytes(length);
            if (!mask)
                return std::nullopt;
            rule.mask = std::move(*mask);
        }
        const auto wordLength = take("~") ? number() : std::size_t{1};
        if (!wordLength || *wordLength == 0 || length % *wordLength != 0)
            return std::nullopt;
        const auto placeCount = take("+") ? number() : std::size_t{1};
        if (!placeCount || *placeCount == 0 || !take("\n"))
            return std::nullopt;
        rule.placeCount = *placeCount;
        // Words are written with the high byte first, and are meant in the order of the machine.
        if constexpr (std::endian::native == std::endian::little) {
            for (std::string* text : {&rule.bytes, &rule.mask}) {
                for (std::size_t word = 0; word < text->size(); word += *wordLength)
                    std::reverse(text->data() + word, text->data() + word + *wordLength);
            }
        }
        return rule;
    }

private:
    std::string_view rest_;
};

MIMEMagic::MIMEMagic(std::string_view file, int leastPriority) {
    Reader reader(file);
    if (!reader.take(header))
        return;
    while (!reader.isAtEnd()) {
        std::size_t priority = 0;
        auto type = reader.type(priority);
        if (!type)
            return;
        std::size_t reach = 0;
        while (!reader.isAtEnd() && !reader.isAtType()) {
            auto rule =
                reader.rule(type->rules.empty() ? std::nullopt : std::optional(type->rules.back().level));
            if (!rule)
                return;
            reach = std::max(reach, rule->firstPlace + rule->placeCount - 1 + rule->bytes.size());
            type->rules.push_back(std::move(*rule));
        }
        if (static_cast<int>(priority) < leastPriority)
            continue;
        types_.push_back(std::move(*type));
        reachInBytes_ = std::min(std::max(reachInBytes_, reach), longestReach);
    }
}

bool MIMEMagic::holds(const Rule& rule, std::string_view beginning) {
    if (rule.firstPlace > beginning.size())
        return false;
    // Not further than a match can reach that begins at the last of the places.
    const std::string_view searched =
        beginning.substr(rule.firstPlace, rule.placeCount - 1 + rule.bytes.size());
    if (rule.mask.empty())
        return memmem(searched.data(), searched.size(), rule.bytes.data(), rule.bytes.size()) != nullptr;
    for (std::size_t place = 0; place + rule.bytes.size() <= searched.size(); ++place) {
        std::size_t index = 0;
        while (index < rule.bytes.size() &&
               ((searched[place + index] ^ rule.bytes[index]) & rule.mask[index]) == 0)
            ++index;
        if (index == rule.bytes.size())
            return true;
    }
    return false;
}

bool MIMEMagic::holdsAny(const Rule* rule, const Rule* end, unsigned level, std::string_view beginning) {
    while (rule != end) {
        const Rule* const next =
            std::find_if(rule + 1, end, [&](const Rule& other) { return other.level <= level; });
        if (holds(*rule, beginning) && (next == rule + 1 || holdsAny(rule + 1, next, level + 1, beginning)))
            return true;
        rule = next;
    }
    return false;
}

std::string_view MIMEMagic::typeOfBytes(std::string_view beginning) const {
    const auto found = std::ranges::find_if(types_, [&](const Type& type) {
        return holdsAny(type.rules.data(), type.rules.data() + type.rules.size(), 0, beginning);
    });
    return found == types_.end() ? std::string_view() : found->name;
}

} // namespace kelvo
