#include "platform/appkit/rtfreader/RTFScanner.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kelvo {
namespace {

constexpr auto endsText = [] {
    std::array<bool, 256> table{};
    for (const char unit : {'\\', '{', '}', '\r', '\n', '\0'})
        table[static_cast<unsigned char>(unit)] = true;
    return table;
}();

} // namespace

RTFToken RTFScanner::next() {
    while (next_ != end_) {
        switch (*next_) {
        case '{':
            ++next_;
            return {.kind = RTFToken::Kind::groupOpen};
        case '}':
            ++next_;
            return {.kind = RTFToken::Kind::groupClose};
        case '\r':
        case '\n':
        case '\0':
            ++next_;
            continue;
        case '\\': {
            ++next_;
            const RTFToken token = backslash();
            if (token.kind != RTFToken::Kind::end || next_ == end_)
                return token;
            continue;
        }
        default: {
            const char* const first = next_;
            next_ = std::find_if(next_, end_,
                                 [](char unit) { return endsText[static_cast<unsigned char>(unit)]; });
            return {.kind = RTFToken::Kind::text, .bytes = {first, static_cast<std::size_t>(next_ - first)}};
        }
        }
    }
    return {};
}

/// Returns an end token before the end too: then the backslash and what belonged to it mean nothing.
RTFToken RTFScanner::backslash() {
    if (next_ == end_)
        return {};
    if (isASCIILetter(*next_))
        return word();
    const char symbol = *next_++;
    if (symbol == '\'') {
        if (end_ - next_ < 2 || hexDigitValue(next_[0]) < 0 || hexDigitValue(next_[1]) < 0)
            return {};
        const int byte = hexDigitValue(next_[0]) * 16 + hexDigitValue(next_[1]);
        next_ += 2;
        return {.kind = RTFToken::Kind::hexByte, .parameter = byte};
    }
    // A line feed after it means nothing by itself.
    if (symbol == '\r')
        return {.kind = RTFToken::Kind::symbol, .parameter = '\n'};
    return {.kind = RTFToken::Kind::symbol, .parameter = static_cast<unsigned char>(symbol)};
}

RTFToken RTFScanner::word() {
    RTFToken token{.kind = RTFToken::Kind::word};
    const char* const first = next_;
    while (next_ != end_ && isASCIILetter(*next_))
        ++next_;
    token.bytes = {first, static_cast<std::size_t>(next_ - first)};
    const bool isNegative = end_ - next_ >= 2 && *next_ == '-' && isASCIIDigit(next_[1]);
    if (isNegative)
        ++next_;
    if (next_ != end_ && isASCIIDigit(*next_)) {
        constexpr std::int64_t limit = std::numeric_limits<std::int32_t>::max();
        std::int64_t value = 0;
        for (; next_ != end_ && isASCIIDigit(*next_); ++next_)
            value = std::min(limit, value * 10 + (*next_ - '0'));
        token.hasParameter = true;
        token.parameter = static_cast<std::int32_t>(isNegative ? -value : value);
    }
    if (next_ != end_ && *next_ == ' ')
        ++next_;
    if (token.bytes == "bin")
        return {.kind = RTFToken::Kind::binary, .bytes = binary(token.parameter)};
    return token;
}

std::string_view RTFScanner::binary(std::int32_t length) {
    const std::size_t taken =
        std::min(static_cast<std::size_t>(std::max(length, 0)), static_cast<std::size_t>(end_ - next_));
    const char* const first = next_;
    next_ += taken;
    return {first, taken};
}

void RTFScanner::skipGroup() {
    for (std::size_t depth = 0; next_ != end_; ++next_) {
        if (*next_ == '\\') {
            ++next_;
            if (next_ == end_)
                return;
            if (end_ - next_ > 3 && std::string_view(next_, 3) == "bin" && !isASCIILetter(next_[3])) {
                word();
                --next_;
            }
        } else if (*next_ == '{') {
            ++depth;
        } else if (*next_ == '}') {
            if (depth == 0)
                return;
            --depth;
        }
    }
}

} // namespace kelvo
