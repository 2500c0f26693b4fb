#include "platform/foundation/propertylists/XMLPropertyListReader.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSStringFormat.h"
#include "platform/foundation/propertylists/PropertyListBuilder.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <exception>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::string_view xmlBlanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(xmlBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(xmlBlanks) - first + 1);
}

/// Decimal, or hexadecimal after "0x". What only an unsigned 64-bit number holds becomes a double.
NSNumber integerOfText(std::string_view text) {
    std::string_view digits = text;
    const bool isNegative = digits.starts_with('-');
    if (isNegative || digits.starts_with('+'))
        digits.remove_prefix(1);
    const bool isHexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
    if (isHexadecimal)
        digits.remove_prefix(2);
    std::uint64_t magnitude = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, status] = std::from_chars(digits.data(), end, magnitude, isHexadecimal ? 16 : 10);
    if (stop != end || digits.empty() || (status != std::errc() && status != std::errc::result_out_of_range))
        throwPropertyListError(u"An integer is not a number.");
    if (status == std::errc::result_out_of_range)
        throwPropertyListError(u"An integer is too large.");
    constexpr std::uint64_t past = std::uint64_t(1) << 63;
    if (magnitude > past || (magnitude == past && !isNegative)) {
        const auto real = static_cast<double>(magnitude);
        return NSNumber::numberWithDouble(isNegative ? -real : real);
    }
    const auto value = static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude);
    if (value >= std::numeric_limits<std::int32_t>::min() &&
        value <= std::numeric_limits<std::int32_t>::max())
        return NSNumber::numberWithInt(static_cast<std::int32_t>(value));
    return NSNumber::numberWithLongLong(value);
}

NSNumber realOfText(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    double value = 0;
    const auto [stop, status] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (stop != text.data() + text.size() || text.empty() || status != std::errc())
        throwPropertyListError(u"A real is not a number, or out of range.");
    return NSNumber::numberWithDouble(value);
}

/// "2026-11-21T09:30:00Z"
NSDate dateOfText(std::string_view text) {
    constexpr std::string_view separators = "--T::Z";
    int parts[6] = {};
    const char* position = text.data();
    const char* const end = text.data() + text.size();
    for (std::size_t index = 0; index < separators.size(); ++index) {
        const auto [stop, status] = std::from_chars(position, end, parts[index]);
        if (status != std::errc() || (index > 0 && parts[index] < 0) || stop == end ||
            *stop != separators[index])
            throwPropertyListError(u"A date is not of the form 2001-01-31T23:59:59Z.");
        position = stop + 1;
    }
    using namespace std::chrono;
    const auto [yearNumber, monthNumber, dayNumber, hour, minute, second] = parts;
    // Wider numbers would wrap around in the calendar's small types.
    const bool isSmall = yearNumber >= -9999 && yearNumber <= 9999 && monthNumber <= 12 && dayNumber <= 31;
    const year_month_day date(year(isSmall ? yearNumber : 0), month(static_cast<unsigned>(monthNumber)),
                              day(static_cast<unsigned>(dayNumber)));
    if (position != end || !isSmall || !date.ok() || hour > 23 || minute > 59 || second > 59)
        throwPropertyListError(u"A date does not exist.");
    const sys_seconds time = sys_days(date) + hours(hour) + minutes(minute) + seconds(second);
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(time.time_since_epoch().count()));
}

/// The values of the 64 digits; what is no digit has the high bit set.
constexpr std::uint8_t base64Blank = 0x80, base64Padding = 0x81, base64Wrong = 0x82;
constexpr auto base64Values = [] {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::uint8_t, 256> values{};
    values.fill(base64Wrong);
    for (std::size_t index = 0; index < digits.size(); ++index)
        values[static_cast<unsigned char>(digits[index])] = static_cast<std::uint8_t>(index);
    for (const char blank : xmlBlanks)
        values[static_cast<unsigned char>(blank)] = base64Blank;
    values['='] = base64Padding;
    return values;
}();

/// Decodes as the characters come, so that the text of a large data element is never held whole. White space
/// may stand anywhere; the padding may be missing.
class Base64Decoder {
public:
    void append(std::string_view text) {
        std::size_t length = bytes_.size();
        bytes_.resize(length + text.size() / 4 * 3 + 3);
        for (const char character : text) {
            const std::uint8_t value = base64Values[static_cast<unsigned char>(character)];
            if (value == base64Blank)
                continue;
            if (value == base64Padding) {
                isPadded_ = true;
                continue;
            }
            if (value == base64Wrong || isPadded_)
                throwPropertyListError(u"Data is not in base 64.");
            bits_ = bits_ << 6 | value;
            bitCount_ += 6;
            if (bitCount_ >= 8) {
                bitCount_ -= 8;
                bytes_[length++] = static_cast<std::uint8_t>(bits_ >> bitCount_);
            }
        }
        bytes_.resize(length);
    }

    NSData takeData() {
        bits_ = 0;
        if (std::exchange(bitCount_, 0) == 6)
            throwPropertyListError(u"Data in base 64 is cut short.");
        isPadded_ = false;
        std::vector<std::uint8_t> bytes = std::exchange(bytes_, {});
        bytes.shrink_to_fit();
        return NSData::dataWithBytesNoCopy(std::move(bytes));
    }

private:
    std::vector<std::uint8_t> bytes_;
    std::uint32_t bits_ = 0;
    unsigned bitCount_ = 0;
    bool isPadded_ = false;
};

class Reader {
public:
    Reader() : parser_(XML_ParserCreate(nullptr), XML_ParserFree) {
        if (!parser_)
            throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(),
            [](void* self, const char* name, const char**) { guard(self, &Reader::begin, name); },
            [](void* self, const char*) { guard(self, &Reader::end); });
        XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
            guard(self, &Reader::characters, std::string_view(text, static_cast<std::size_t>(length)));
        });
        XML_SetEntityDeclHandler(parser_.get(),
                                 [](void* self, const char*, int, const char*, int, const char*, const char*,
                                    const char*, const char*) { guard(self, &Reader::refuseEntity); });
        XML_SetSkippedEntityHandler(parser_.get(),
                                    [](void* self, const char*, int) { guard(self, &Reader::refuseEntity); });
    }

    Value read(const NSData& data) {
        // The parser copies what it is given, so it gets the file in pieces.
        constexpr std::size_t pieceSize = 1u << 20;
        auto status = XML_STATUS_OK;
        for (std::string_view rest = data.characters(); status == XML_STATUS_OK;) {
            const std::string_view piece = rest.substr(0, pieceSize);
            rest.remove_prefix(piece.size());
            status = XML_Parse(parser_.get(), piece.data(), static_cast<int>(piece.size()), rest.empty());
            if (rest.empty())
                break;
        }
        if (failure_)
            std::rethrow_exception(failure_);
        if (status != XML_STATUS_OK) {
            const XML_Error error = XML_GetErrorCode(parser_.get());
            if (error == XML_ERROR_NO_MEMORY)
                throw std::bad_alloc();
            throwPropertyListError(
                withLine(stringWithFormat(u"The XML is not well formed: %s.", XML_ErrorString(error))));
        }
        return builder_.takeRoot();
    }

private:
    enum class Element { plist, dict, array, key, string, data, date, integer, real, isTrue, isFalse };

    /// No exception may pass through the parser's C code: it is kept, and thrown again after it.
    template <typename... Parameters, typename... Arguments>
    static void guard(void* self, void (Reader::*handler)(Parameters...), Arguments... arguments) {
        auto* reader = static_cast<Reader*>(self);
        if (reader->failure_)
            return;
        try {
            try {
                (reader->*handler)(arguments...);
            } catch (const NSException& error) {
                throwPropertyListError(reader->withLine(error.reason()));
            }
        } catch (...) {
            reader->failure_ = std::current_exception();
            XML_StopParser(reader->parser_.get(), XML_FALSE);
        }
    }

    NSString withLine(const NSString& reason) const {
        return propertyListReasonWithLine(reason,
                                          static_cast<std::int64_t>(XML_GetCurrentLineNumber(parser_.get())));
    }

    static Element elementNamed(std::string_view name) {
        static constexpr std::pair<std::string_view, Element> names[] = {
            {"plist", Element::plist}, {"dict", Element::dict},       {"array", Element::array},
            {"key", Element::key},     {"string", Element::string},   {"data", Element::data},
            {"date", Element::date},   {"integer", Element::integer}, {"real", Element::real},
            {"true", Element::isTrue}, {"false", Element::isFalse},
        };
        const auto found = std::ranges::find(names, name, [](const auto& known) { return known.first; });
        if (found == std::end(names))
            throwPropertyListError(u"There is an element that property lists do not have.");
        return found->second;
    }

    void begin(const char* name) {
        const Element element = elementNamed(name);
        if (!open_.empty() && open_.back() >= Element::key)
            throwPropertyListError(u"There is an element inside of a scalar.");
        if (element == Element::plist && !open_.empty())
            throwPropertyListError(u"There is a property list inside of another one.");
        if (element == Element::dict)
            builder_.beginDictionary();
        if (element == Element::array)
            builder_.beginArray();
        open_.push_back(element);
    }

    void characters(std::string_view text) {
        const Element element = open_.back();
        if (element == Element::data)
            data_.append(text);
        else if (element >= Element::key && element < Element::isTrue)
            text_ += text;
        else if (!trimmed(text).empty())
            throwPropertyListError(u"There is text outside of the scalars.");
    }

    void end() {
        const Element element = open_.back();
        open_.pop_back();
        switch (element) {
        case Element::plist:
            break;
        case Element::dict:
            builder_.endDictionary();
            break;
        case Element::array:
            builder_.endArray();
            break;
        case Element::key:
            builder_.setKey(NSString::stringWithUTF8String(text_));
            break;
        case Element::string:
            builder_.addValue(NSString::stringWithUTF8String(text_));
            break;
        case Element::data:
            builder_.addValue(data_.takeData());
            break;
        case Element::date:
            builder_.addValue(dateOfText(trimmed(text_)));
            break;
        case Element::integer:
            builder_.addValue(integerOfText(trimmed(text_)));
            break;
        case Element::real:
            builder_.addValue(realOfText(trimmed(text_)));
            break;
        case Element::isTrue:
        case Element::isFalse:
            builder_.addValue(NSNumber::numberWithBool(element == Element::isTrue));
            break;
        }
        text_.clear();
    }

    void refuseEntity() {
        throwPropertyListError(u"The XML declares or uses an entity that property lists do not have.");
    }

    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
    PropertyListBuilder builder_;
    std::vector<Element> open_;
    std::string text_;
    Base64Decoder data_;
    std::exception_ptr failure_;
};

} // namespace

Value valueFromXMLPropertyList(const NSData& data) {
    return Reader().read(data);
}

} // namespace kelvo
