#include "platform/foundation/OldStylePropertyListWriter.h"

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/PropertyListLimits.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

/// In UTF-16 units; a description is left off soon after it.
constexpr std::size_t maximumDescriptionLength = 4u << 20;

enum class Purpose { parsing, reading };

bool isNeverQuoted(char16_t unit) {
    return isASCIILetter(unit) || isASCIIDigit(unit) || unit == '_';
}

/// "sRGB 1 0.5 0 1": red, green, blue and opacity in the shortest form.
NSString textOfColor(const NSColor& color) {
    NSMutableString text = NSMutableString::stringWithCharacters(u"sRGB");
    for (const float component : {color.red, color.green, color.blue, color.alpha}) {
        text.appendCharacter(u' ');
        text.appendString(NSNumber::numberWithFloat(component).stringValue());
    }
    return text.takeString();
}

NSString textOfData(const NSData& data) {
    NSMutableString text = NSMutableString::stringWithCapacity(data.length() * 9 / 4 + 3);
    text.appendCharacter(u'<');
    for (std::size_t index = 0; index < data.length(); ++index) {
        if (index > 0 && index % 4 == 0)
            text.appendCharacter(u' ');
        text.appendCharacter(static_cast<char16_t>(lowerHexDigits[data.bytes()[index] >> 4]));
        text.appendCharacter(static_cast<char16_t>(lowerHexDigits[data.bytes()[index] & 15]));
    }
    text.appendCharacter(u'>');
    return text.takeString();
}

/// What a value that is no container says of itself.
NSString textOfScalar(const Value& value) {
    switch (value.kind()) {
    case Value::Kind::null:
        return u"<null>";
    case Value::Kind::number:
        return value.numberIfAny()->stringValue();
    case Value::Kind::string:
        return value.string();
    case Value::Kind::data:
        return textOfData(value.data());
    case Value::Kind::date:
        return value.dateIfAny()->description();
    case Value::Kind::url:
        return value.url().absoluteString();
    case Value::Kind::size:
        return NSStringFromSize(*value.sizeIfAny());
    case Value::Kind::color:
        return textOfColor(*value.colorIfAny());
    case Value::Kind::attributedText:
        return value.attributedText()->plainString();
    case Value::Kind::object:
        return value.object()->description();
    default:
        return u"(null)";
    }
}

class Writer {
public:
    explicit Writer(Purpose purpose) : purpose_(purpose) {}

    NSString write(const Value& value) {
        writeValue(value, 0);
        return text_.takeString();
    }

private:
    void writeValue(const Value& value, std::size_t depth) {
        const bool isContainer = value.isArray() || value.isDictionary();
        if (++valueCount_ > maximumPropertyListValueCount && purpose_ == Purpose::parsing)
            throwPropertyListError(u"The property list has more than 4194304 values.");
        if (isContainer && depth == Value::maximumDepth)
            leaveOutContainer();
        else if (value.isArray())
            writeArray(value.array(), depth);
        else if (value.isDictionary())
            writeDictionary(value.dictionary(), depth);
        else
            writeScalar(value);
    }

    void leaveOutContainer() {
        if (purpose_ == Purpose::parsing)
            throwPropertyListError(u"The property list is more than 512 levels deep.");
        text_.appendString(u"...");
    }

    /// Past the limits even the dots of every further element would be too much.
    bool isFull() const {
        return valueCount_ > maximumPropertyListValueCount ||
               (purpose_ == Purpose::reading && text_.length() > maximumDescriptionLength);
    }

    void noteFullness() {
        if (isFull() && !std::exchange(isNoted_, true))
            text_.appendString(u"...");
    }

    void beginLine(std::size_t depth) {
        text_.appendCharacter(u'\n');
        for (std::size_t level = 0; level < depth; ++level)
            text_.appendString(u"    ");
    }

    void writeArray(const NSArray& array, std::size_t depth) {
        text_.appendCharacter(u'(');
        for (const Value* element = array.begin(); element != array.end() && !isFull(); ++element) {
            if (element != array.begin())
                text_.appendCharacter(u',');
            beginLine(depth + 1);
            writeValue(*element, depth + 1);
        }
        noteFullness();
        beginLine(depth);
        text_.appendCharacter(u')');
    }

    void writeDictionary(const NSDictionary& dictionary, std::size_t depth) {
        text_.appendCharacter(u'{');
        for (const NSDictionary::Entry& entry : dictionary) {
            if (isFull())
                break;
            if (purpose_ == Purpose::parsing && !entry.first.isString())
                throwPropertyListError(u"A property list has strings for keys only.");
            beginLine(depth + 1);
            writeValue(entry.first, depth + 1);
            text_.appendString(u" = ");
            writeValue(entry.second, depth + 1);
            text_.appendCharacter(u';');
        }
        noteFullness();
        beginLine(depth);
        text_.appendCharacter(u'}');
    }

    void writeScalar(const Value& value) {
        if (purpose_ == Purpose::parsing && !value.isString() && !value.isNumber() && !value.isData() &&
            !value.isDate())
            throwPropertyListError(u"A property list holds only strings, numbers, dates, data, arrays and "
                                   u"dictionaries.");
        const NSString text = textOfScalar(value);
        // On the top level that word would be the mark of a binary list.
        const bool isBare = !text.isEmpty() && std::ranges::all_of(text.characters(), isNeverQuoted) &&
                            !text.characters().starts_with(u"bplist");
        if (value.isData() || isBare)
            text_.appendString(text);
        else
            writeQuoted(text);
    }

    void writeQuoted(std::u16string_view units) {
        constexpr std::u16string_view named = u"\a\b\t\n\v\f\r";
        constexpr std::u16string_view names = u"abtnvfr";
        text_.appendCharacter(u'"');
        for (const char16_t unit : units) {
            if (const std::size_t name = named.find(unit); name != std::u16string_view::npos)
                appendEscape({names[name]});
            else if (unit == '"' || unit == '\\')
                appendEscape({unit});
            else if (unit >= 0x80)
                appendEscape(
                    {u'U', hexDigit(unit >> 12), hexDigit(unit >> 8), hexDigit(unit >> 4), hexDigit(unit)});
            else if (unit < 0x20 || unit == 0x7F)
                appendEscape({octalDigit(unit >> 6), octalDigit(unit >> 3), octalDigit(unit)});
            else
                text_.appendCharacter(unit);
        }
        text_.appendCharacter(u'"');
    }

    void appendEscape(std::initializer_list<char16_t> units) {
        text_.appendCharacter(u'\\');
        for (const char16_t unit : units)
            text_.appendCharacter(unit);
    }
    static char16_t hexDigit(int number) { return static_cast<char16_t>(lowerHexDigits[number & 15]); }
    static char16_t octalDigit(int number) { return static_cast<char16_t>(u'0' + (number & 7)); }

    Purpose purpose_;
    NSMutableString text_ = NSMutableString::string();
    std::size_t valueCount_ = 0;
    bool isNoted_ = false;
};

} // namespace

NSString oldStylePropertyListFromValue(const Value& value) {
    return Writer(Purpose::parsing).write(value);
}

NSString descriptionOfValue(const Value& value) {
    if (!value.isArray() && !value.isDictionary())
        return textOfScalar(value);
    return Writer(Purpose::reading).write(value);
}

} // namespace kelvo
