#include "platform/foundation/NSStringFormat.h"

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include <locale.h>

namespace kelvo {
namespace {

constexpr std::u16string_view flagCharacters = u"-+ #0'";

// A number in a format; where it was "*", that of an argument.
struct Count {
    std::optional<int> value;
    bool isArgument = false;
    std::size_t position = 0; // from 1; 0 is the next argument
};

struct Conversion {
    std::u16string_view text; // the whole, from the percent sign on
    std::size_t position = 0;
    std::string flags;
    Count width;
    Count precision;
    int bits = 32;
    char16_t type = 0;
};

// Reads the parts of a conversion one after the other.
class Reader {
public:
    explicit Reader(std::u16string_view text) : text_(text) {}

    std::size_t offset() const { return offset_; }
    char16_t peek() const { return offset_ < text_.size() ? text_[offset_] : u'\0'; }
    bool take(char16_t unit) {
        const bool matches = offset_ < text_.size() && text_[offset_] == unit;
        offset_ += matches;
        return matches;
    }
    std::optional<int> takeNumber() {
        constexpr int most = 1'000'000; // more than any count or position that is used
        std::optional<int> number;
        for (; isASCIIDigit(peek()); ++offset_)
            number = std::min(number.value_or(0) * 10 + (peek() - '0'), most);
        return number;
    }
    // "n$"; nothing is taken where it does not stand.
    std::size_t takePosition() {
        const std::size_t start = offset_;
        const auto number = takeNumber();
        if (number && *number > 0 && take(u'$'))
            return static_cast<std::size_t>(*number);
        offset_ = start;
        return 0;
    }
    Count takeCount() {
        Count count;
        if (take(u'*')) {
            count.isArgument = true;
            count.position = takePosition();
        } else {
            count.value = takeNumber();
        }
        return count;
    }

private:
    std::u16string_view text_;
    std::size_t offset_ = 0;
};

// The conversion that begins with the percent sign at the front of `text`, if it is one.
std::optional<Conversion> parseConversion(std::u16string_view text) {
    Reader reader(text);
    reader.take(u'%');
    Conversion it;
    it.position = reader.takePosition();
    while (flagCharacters.find(reader.peek()) != flagCharacters.npos) {
        const auto flag = static_cast<char>(reader.peek());
        reader.take(reader.peek());
        if (flag != '\'' && it.flags.find(flag) == std::string::npos)
            it.flags += flag;
    }
    it.width = reader.takeCount();
    if (reader.take(u'.')) {
        it.precision = reader.takeCount();
        if (!it.precision.isArgument && !it.precision.value)
            it.precision.value = 0;
    }
    if (reader.take(u'h')) {
        it.bits = reader.take(u'h') ? 8 : 16;
    } else if (reader.take(u'l')) {
        reader.take(u'l');
        it.bits = 64;
    } else if (reader.take(u'q') || reader.take(u'j') || reader.take(u'z') || reader.take(u't')) {
        it.bits = 64;
    } else {
        reader.take(u'L');
    }
    it.type = reader.peek();
    if (it.type == 0 ||
        std::u16string_view(u"@sSdiDuUxXoOfFeEgGaAcC%").find(it.type) == std::u16string_view::npos)
        return std::nullopt;
    reader.take(it.type);
    if (it.type == 'D' || it.type == 'U' || it.type == 'O') {
        it.type = asciiLowerCase(it.type);
        it.bits = 64;
    }
    it.text = text.substr(0, reader.offset());
    return it;
}

class Formatter {
public:
    Formatter(std::u16string_view format, std::span<const Value> arguments)
        : format_(format),
          arguments_(arguments),
          result_(NSMutableString::stringWithCapacity(format.size())) {}

    NSString run() {
        while (!format_.empty()) {
            const std::size_t percent = std::min(format_.find(u'%'), format_.size());
            result_.appendString(format_.substr(0, percent));
            format_.remove_prefix(percent);
            if (format_.empty())
                break;
            auto conversion = parseConversion(format_);
            const std::size_t length = conversion ? conversion->text.size() : 1;
            if (!conversion || conversion->type == '%')
                result_.appendCharacter(u'%');
            else if (!append(*conversion))
                result_.appendString(conversion->text);
            format_.remove_prefix(length);
        }
        return result_.takeString();
    }

private:
    const Value* argument(std::size_t position) {
        const std::size_t index = position > 0 ? position - 1 : next_++;
        return index < arguments_.size() ? &arguments_[index] : nullptr;
    }

    // False when it was to come from an argument and there is none.
    bool settle(Count& count) {
        constexpr int most = static_cast<int>(maximumFieldWidth);
        if (count.isArgument) {
            const Value* value = argument(count.position);
            if (!value)
                return false;
            const NSNumber* number = value->numberIfAny();
            count.value = number ? std::optional<int>(number->intValue()) : std::nullopt;
        }
        if (count.value)
            count.value = std::clamp(*count.value, -most, most);
        return true;
    }

    bool append(Conversion& it) {
        if (!settle(it.width) || !settle(it.precision))
            return false;
        const Value* value = argument(it.position);
        if (!value)
            return false;
        if (it.width.value.value_or(0) < 0) {
            it.width.value = -*it.width.value;
            it.flags += '-';
        }
        if (it.precision.value.value_or(0) < 0)
            it.precision.value.reset();

        const NSNumber* number = value->numberIfAny();
        if (!number || it.type == '@' || asciiLowerCase(it.type) == 's')
            appendText(it, value->description());
        else if (it.type == 'c' || it.type == 'C')
            appendUnit(it, static_cast<char16_t>(number->intValue() & (it.type == 'c' ? 0xFF : 0xFFFF)));
        else if (std::u16string_view(u"diuxXo").find(it.type) != std::u16string_view::npos)
            appendInteger(it, *number);
        else
            appendNumber(it, "", number->doubleValue());
        return true;
    }

    void appendText(const Conversion& it, std::u16string_view text) {
        if (it.precision.value)
            text = text.substr(0, static_cast<std::size_t>(*it.precision.value));
        const std::size_t width = static_cast<std::size_t>(it.width.value.value_or(0));
        const std::u16string padding(width > text.size() ? width - text.size() : 0, u' ');
        const bool isLeft = it.flags.find('-') != std::string::npos;
        result_.appendString(isLeft ? text : std::u16string_view(padding));
        result_.appendString(isLeft ? std::u16string_view(padding) : text);
    }

    void appendUnit(Conversion& it, char16_t unit) {
        it.precision.value.reset();
        appendText(it, std::u16string_view(&unit, 1));
    }

    void appendInteger(Conversion& it, NSNumber number) {
        // The shorter widths take the low bits, but of a floating value the nearest number that they can
        // hold.
        const std::int64_t whole =
            it.bits == 64 || !number.isFloatingPoint() ? number.longLongValue() : number.intValue();
        // "#" says nothing about decimal numbers, and C does not define what it does to them.
        if (it.type == 'd' || it.type == 'i' || it.type == 'u')
            std::erase(it.flags, '#');
        const int unused = 64 - it.bits;
        const auto high = static_cast<std::uint64_t>(whole) << unused;
        if (it.type == 'd' || it.type == 'i')
            appendNumber(it, "ll", static_cast<long long>(static_cast<std::int64_t>(high) >> unused));
        else
            appendNumber(it, "ll", static_cast<unsigned long long>(high >> unused));
    }

    template <typename Number>
    void appendNumber(const Conversion& it, const char* size, Number number) {
        std::string pattern = "%" + it.flags + "*";
        if (it.precision.value)
            pattern += ".*";
        pattern += size;
        pattern += static_cast<char>(it.type);
        // The longest is the largest double with all its digits before the point, and the precision after
        // it.
        std::array<char, maximumFieldWidth + 400> text;
        const int width = it.width.value.value_or(0);
        const int length =
            it.precision.value
                ? std::snprintf(text.data(), text.size(), pattern.c_str(), width, *it.precision.value, number)
                : std::snprintf(text.data(), text.size(), pattern.c_str(), width, number);
        if (length > 0)
            result_.appendString(NSString::stringWithLatin1Bytes(
                {text.data(), std::min(static_cast<std::size_t>(length), text.size() - 1)}));
    }

    std::u16string_view format_;
    std::span<const Value> arguments_;
    std::size_t next_ = 0;
    NSMutableString result_;
};

// The decimal point of numbers must not follow a locale that some library has set.
class CLocaleScope {
public:
    CLocaleScope() : previous_(::uselocale(cLocale())) {}
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;
    ~CLocaleScope() { ::uselocale(previous_); }

private:
    static locale_t cLocale() {
        static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", locale_t());
        return locale;
    }

    locale_t previous_;
};

} // namespace

NSString stringWithFormat_arguments(std::u16string_view format, std::span<const Value> arguments) {
    const CLocaleScope scope;
    return Formatter(format, arguments).run();
}

} // namespace kelvo
