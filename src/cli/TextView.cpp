#include "cli/TextView.h"

#include "cli/Printable.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace kelvo::cli {
namespace {

constexpr std::size_t indentation = 4;
constexpr std::size_t widestKey = 24;

bool isNested(const Value& value) {
    return (value.isArray() && value.array().count() > 0) ||
           (value.isDictionary() && value.dictionary().count() > 0);
}

/// What fits in a line of its own: everything but text with several lines, and containers.
std::string textOfScalar(const Value& value, const WrittenBytes& written) {
    switch (value.kind()) {
    case Value::Kind::data:
        return textOfData(value.data(), written);
    case Value::Kind::number: {
        const NSNumber& number = *value.numberIfAny();
        if (number.isBoolean())
            return number.boolValue() ? "yes" : "no";
        return number.stringValue().UTF8String();
    }
    case Value::Kind::string:
        return printable(value.string(), LineEnds::kept);
    case Value::Kind::attributedText:
        return printable(value.attributedText()->plainString(), LineEnds::kept);
    case Value::Kind::url:
        return printable(value.url().absoluteString());
    case Value::Kind::size:
        return NSStringFromSize(*value.sizeIfAny()).UTF8String();
    case Value::Kind::array:
    case Value::Kind::dictionary:
        return "none";
    default:
        return printable(value.description());
    }
}

class View {
public:
    View(const WrittenBytes& written, const Output& output) : written_(written), output_(output) {}

    void add(const Value& value, std::size_t indent) {
        if (value.isDictionary() && isNested(value))
            addDictionary(value.dictionary(), indent);
        else if (value.isArray() && isNested(value))
            for (const Value& element : value.array())
                addEntry("-", 1, element, indent);
        else
            addLines(textOfScalar(value, written_), indent);
    }

    std::string take() { return std::move(text_); }

private:
    void addDictionary(const NSDictionary& dictionary, std::size_t indent) {
        std::vector<std::string> keys;
        std::size_t width = 0;
        for (const auto& [key, object] : dictionary) {
            keys.push_back(printable(key.description()));
            width = std::max(width, std::min(keys.back().size(), widestKey));
        }
        std::size_t index = 0;
        for (const auto& [key, object] : dictionary)
            addEntry(keys[index++], width, object, indent);
    }

    void addEntry(const std::string& key, std::size_t width, const Value& object, std::size_t indent) {
        const std::string padding(width > key.size() ? width - key.size() : 0, ' ');
        text_ += std::string(indent, ' ') + output_.styled(Style::strong, key);
        if (isNested(object)) {
            text_ += '\n';
            add(object, indent + indentation);
            return;
        }
        const std::string text = textOfScalar(object, written_);
        if (text.find('\n') == std::string::npos) {
            text_ += padding + "  " + text + "\n";
        } else {
            text_ += '\n';
            addLines(text, indent + indentation);
        }
    }

    void addLines(std::string_view text, std::size_t indent) {
        while (!text.empty()) {
            const std::size_t end = std::min(text.find('\n'), text.size());
            if (end > 0)
                text_.append(indent, ' ').append(text.substr(0, end));
            text_ += '\n';
            text.remove_prefix(std::min(end + 1, text.size()));
        }
    }

    const WrittenBytes& written_;
    const Output& output_;
    std::string text_;
};

/// Cuts between characters, never within one.
std::string cut(const NSString& text, std::size_t width) {
    if (text.length() <= width)
        return printable(text);
    std::size_t end = width;
    while (end > 0 && (text.characters()[end] & 0xFC00) == 0xDC00)
        --end;
    return printable(text.characters().substr(0, end)) + "…";
}

} // namespace

std::string textOfResult(const Value& result, const WrittenBytes& written, const Output& output) {
    View view(written, output);
    view.add(result, 0);
    return view.take();
}

std::string wholeText(const NSString& text, const Output& output) {
    return output.isTerminal() ? printable(text, LineEnds::kept) : text.UTF8String();
}

std::string linesOfText(const NSString& text, const Output& output) {
    std::string lines = wholeText(text, output);
    if (!lines.empty() && !lines.ends_with('\n'))
        lines += '\n';
    return lines;
}

std::string textOfData(const NSData& data, const WrittenBytes& written) {
    std::string text = printableByteCount(data.length());
    if (!written.fileName.empty() && data.isIdenticalTo(written.data))
        text += ", written to " + printableFileName(written.fileName);
    return text;
}

std::string summaryOfValue(const Value& value, std::size_t width) {
    if (value.isString()) {
        const auto lines = firstLines(value.string(), 1, width);
        return lines.empty() ? "" : lines.front();
    }
    if (isNested(value))
        return fmt::format("{} {}", value.isArray() ? value.array().count() : value.dictionary().count(),
                           value.isArray() ? "elements" : "entries");
    return textOfScalar(value, {});
}

std::vector<std::string> firstLines(const NSString& text, std::size_t count, std::size_t width) {
    constexpr std::u16string_view lineEnds = u"\n\r\f\x2028\x2029";
    constexpr std::u16string_view blanks = u" \t\xA0\v";
    std::vector<std::string> lines;
    std::u16string_view rest = text.characters();
    while (!rest.empty() && lines.size() < count) {
        const std::size_t end = std::min(rest.find_first_of(lineEnds), rest.size());
        std::u16string_view line = rest.substr(0, end);
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        if (!line.empty()) {
            // Columns have no place in a short view.
            std::u16string shown(line);
            std::ranges::replace(shown, u'\t', u' ');
            lines.push_back(cut(NSString(shown), width));
        }
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return lines;
}

} // namespace kelvo::cli
