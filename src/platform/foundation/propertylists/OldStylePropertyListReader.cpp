#include "platform/foundation/propertylists/OldStylePropertyListReader.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/EncodingPages.h"
#include "platform/foundation/propertylists/PropertyListBuilder.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

bool isBlank(char16_t unit) {
    return (unit >= 0x09 && unit <= 0x0D) || unit == ' ' || unit == 0x2028 || unit == 0x2029;
}

bool isBareStringUnit(char16_t unit) {
    return isASCIILetter(unit) || isASCIIDigit(unit) || unit == '_' || unit == '$' || unit == '/' ||
           unit == ':' || unit == '.' || unit == '-';
}

/// What octal escapes, and text that is not UTF-8, are written in.
const std::array<char16_t, 256>& nextStepLatinPage() {
    static const std::array<char16_t, 256> page = ownEncodingPage(kCFStringEncodingNextStepLatin).value();
    return page;
}

NSString textOfData(const NSData& data) {
    const std::string_view bytes = data.characters();
    const bool isBigEndian = bytes.starts_with("\xFE\xFF");
    NSMutableString text;
    if (isBigEndian || bytes.starts_with("\xFF\xFE")) {
        if (bytes.size() % 2 != 0)
            throwPropertyListError(u"The UTF-16 text ends inside a character.");
        text = NSMutableString::stringWithCapacity(bytes.size() / 2);
        const auto units = data.bytes();
        for (std::size_t index = 2; index < units.size(); index += 2)
            text.appendCharacter(static_cast<char16_t>(units[index + (isBigEndian ? 0 : 1)] << 8 |
                                                       units[index + (isBigEndian ? 1 : 0)]));
        return text.takeString();
    }
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    NSString decoded = NSString::stringWithUTF8String(
        bytes.starts_with(byteOrderMark) ? bytes.substr(byteOrderMark.size()) : bytes);
    if (!decoded.isNil())
        return decoded;
    text = NSMutableString::stringWithCapacity(bytes.size());
    for (const std::uint8_t byte : data.bytes())
        text.appendCharacter(nextStepLatinPage()[byte]);
    return text.takeString();
}

class Reader {
public:
    explicit Reader(NSString text) : text_(std::move(text)), rest_(text_.characters()) {}

    Value read() {
        try {
            return readRoot();
        } catch (const NSException& error) {
            const auto passed = text_.characters().substr(0, text_.length() - rest_.size());
            throwPropertyListError(
                propertyListReasonWithLine(error.reason(), std::ranges::count(passed, u'\n') + 1));
        }
    }

private:
    enum class Next { value, firstElement, separator, key };

    bool atEnd() const { return rest_.empty(); }
    bool skip(char16_t unit) {
        if (atEnd() || rest_.front() != unit)
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    void skipBlanks() {
        for (;;) {
            while (!atEnd() && isBlank(rest_.front()))
                rest_.remove_prefix(1);
            if (rest_.starts_with(u"//")) {
                const std::size_t end = rest_.find_first_of(u"\n\r\u2028\u2029");
                rest_.remove_prefix(std::min(end, rest_.size()));
            } else if (rest_.starts_with(u"/*")) {
                const std::size_t end = rest_.find(u"*/", 2);
                if (end == std::u16string_view::npos)
                    throwPropertyListError(u"A comment has no end.");
                rest_.remove_prefix(end + 2);
            } else {
                return;
            }
        }
    }

    Value readRoot() {
        skipBlanks();
        if (atEnd())
            return NSDictionary::dictionary();
        Next next = Next::value;
        if (rest_.front() != '{' && rest_.front() != '(' && rest_.front() != '<') {
            const std::u16string_view start = rest_;
            const NSString string = readString();
            skipBlanks();
            if (atEnd())
                return string;
            if (rest_.front() != '=' && rest_.front() != ';')
                throwPropertyListError(u"There is more than one value.");
            rest_ = start;
            builder_.beginDictionary();
            next = Next::key;
        }
        do {
            skipBlanks();
            next = step(next);
        } while (builder_.isInsideContainer());
        skipBlanks();
        if (!atEnd())
            throwPropertyListError(u"There is more than one value.");
        return builder_.takeRoot();
    }

    /// Reads one token, or a short scalar, and says what has to follow.
    Next step(Next expected) {
        switch (expected) {
        case Next::firstElement:
            if (!skip(')'))
                return readValue();
            builder_.endArray();
            return Next::separator;
        case Next::value:
            return readValue();
        case Next::key:
            return readKey();
        case Next::separator:
            break;
        }
        if (builder_.isInsideDictionary()) {
            if (!skip(';'))
                throwPropertyListError(u"A value of a dictionary is not followed by a semicolon.");
            return Next::key;
        }
        if (skip(','))
            return Next::firstElement;
        if (!skip(')'))
            throwPropertyListError(u"An element of an array is followed by neither a comma nor a "
                                   u"parenthesis.");
        builder_.endArray();
        return Next::separator;
    }

    Next readValue() {
        if (skip('{')) {
            builder_.beginDictionary();
            ++openDictionaries_;
            return Next::key;
        }
        if (skip('(')) {
            builder_.beginArray();
            return Next::firstElement;
        }
        if (skip('<'))
            builder_.addValue(readData());
        else
            builder_.addValue(readString());
        return Next::separator;
    }

    Next readKey() {
        if (openDictionaries_ == 0 ? atEnd() : skip('}')) {
            if (openDictionaries_ > 0)
                --openDictionaries_;
            builder_.endDictionary();
            return Next::separator;
        }
        const NSString key = readString();
        builder_.setKey(key);
        skipBlanks();
        if (skip('='))
            return Next::value;
        builder_.addValue(key);
        return Next::separator;
    }

    NSData readData() {
        std::vector<std::uint8_t> bytes;
        int high = -1;
        for (;; rest_.remove_prefix(1)) {
            if (atEnd())
                throwPropertyListError(u"Data has no end.");
            if (isBlank(rest_.front()))
                continue;
            if (rest_.front() == '>')
                break;
            const int digit = hexDigitValue(rest_.front());
            if (digit < 0)
                throwPropertyListError(u"Data has something other than hexadecimal digits.");
            if (high >= 0)
                bytes.push_back(static_cast<std::uint8_t>(high << 4 | digit));
            high = high < 0 ? digit : -1;
        }
        rest_.remove_prefix(1);
        if (high >= 0)
            throwPropertyListError(u"Data has an odd number of digits.");
        bytes.shrink_to_fit();
        return NSData::dataWithBytesNoCopy(std::move(bytes));
    }

    NSString readString() {
        if (atEnd())
            throwPropertyListError(u"The text ends where a value or a key has to be.");
        if (rest_.front() == '"' || rest_.front() == '\'')
            return readQuotedString();
        const auto end = std::ranges::find_if_not(rest_, isBareStringUnit);
        const auto length = static_cast<std::size_t>(end - rest_.begin());
        if (length == 0)
            throwPropertyListError(u"There is a character that begins neither a value nor a key.");
        NSString string(rest_.substr(0, length));
        rest_.remove_prefix(length);
        return string;
    }

    NSString readQuotedString() {
        const char16_t stops[] = {rest_.front(), u'\\'};
        rest_.remove_prefix(1);
        NSMutableString string = NSMutableString::string();
        for (;;) {
            const std::size_t run = rest_.find_first_of(std::u16string_view(stops, 2));
            if (run == std::u16string_view::npos)
                throwPropertyListError(u"A quoted string has no end.");
            const bool isEscape = rest_[run] == '\\';
            if (!isEscape && string.isEmpty()) {
                NSString whole(rest_.substr(0, run));
                rest_.remove_prefix(run + 1);
                return whole;
            }
            string.appendString(rest_.substr(0, run));
            rest_.remove_prefix(run + 1);
            if (!isEscape)
                return string.takeString();
            string.appendCharacter(readEscape());
        }
    }

    /// The number that up to `mostDigits` digits give; `digitCount` tells how many there were.
    unsigned readDigits(int base, std::size_t mostDigits, std::size_t& digitCount) {
        unsigned number = 0;
        for (digitCount = 0; digitCount < mostDigits && !atEnd(); ++digitCount) {
            const int digit = hexDigitValue(rest_.front());
            if (digit < 0 || digit >= base)
                break;
            number = number * static_cast<unsigned>(base) + static_cast<unsigned>(digit);
            rest_.remove_prefix(1);
        }
        return number;
    }

    char16_t readEscape() {
        if (atEnd())
            throwPropertyListError(u"A quoted string has no end.");
        std::size_t digitCount = 0;
        if (const unsigned byte = readDigits(8, 3, digitCount); digitCount > 0)
            return nextStepLatinPage()[static_cast<unsigned char>(byte)];
        const char16_t unit = rest_.front();
        rest_.remove_prefix(1);
        switch (unit) {
        case 'a':
            return '\a';
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        case 'v':
            return '\v';
        case 'U': {
            const unsigned number = readDigits(16, 4, digitCount);
            return digitCount > 0 ? static_cast<char16_t>(number) : unit;
        }
        default:
            return unit;
        }
    }

    NSString text_;
    std::u16string_view rest_;
    PropertyListBuilder builder_;
    /// Those with braces, so not the one that a strings file is.
    std::size_t openDictionaries_ = 0;
};

} // namespace

Value valueFromOldStylePropertyList(const NSData& data) {
    return Reader(textOfData(data)).read();
}

} // namespace kelvo
