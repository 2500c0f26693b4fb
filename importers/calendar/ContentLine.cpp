#include "importers/calendar/ContentLine.h"

#include "importers/support/Texts.h"
#include "markup/CharsetLabels.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/encodings/PlainTextReading.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/webkit/MIMELines.h"

#include <algorithm>
#include <cstddef>

namespace kelvo::importers {
namespace {

/// Photographs stand in them, too.
constexpr std::size_t mostBytesKept = std::size_t{1} << 20;
constexpr std::size_t mostParameters = 64;

std::string upperCased(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char byte) {
        return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 32) : byte;
    });
    return result;
}

std::string withoutQuotes(std::string_view text) {
    if (text.size() >= 2 && text.starts_with('"') && text.ends_with('"'))
        text = text.substr(1, text.size() - 2);
    return std::string(text);
}

bool isQuotedPrintable(std::string_view head) {
    return upperCased(head).find("QUOTED-PRINTABLE") != std::string::npos;
}

std::string decodedQuotedPrintable(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const int high = text[at] == '=' && at + 2 < text.size() ? hexDigitValue(text[at + 1]) : -1;
        const int low = high >= 0 ? hexDigitValue(text[at + 2]) : -1;
        if (low >= 0) {
            bytes += static_cast<char>(high * 16 + low);
            at += 2;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

/// By what the property or nobody says.
std::string decoded(const std::string& bytes, std::string_view charset) {
    const NSData data = NSData::dataWithBytes(bytes);
    const NSStringEncoding named =
        charset.size() > 2 ? charset2NSStringEncoding(stringOf(charset)) : kCFStringEncodingInvalidId;
    NSStringEncoding found = 0;
    const NSString text = named == kCFStringEncodingInvalidId ? stringWithPlainText(data, &found)
                                                              : stringByRepairingData_encoding(data, named);
    return text.UTF8String();
}

/// Where the first of these stands that is not between quotation marks.
std::size_t findOutsideQuotes(std::string_view text, std::string_view characters) {
    bool isQuoted = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '"')
            isQuoted = !isQuoted;
        else if (!isQuoted && characters.find(text[at]) != characters.npos)
            return at;
    }
    return text.npos;
}

std::string_view takePart(std::string_view& text, char separator) {
    const std::size_t end = std::min(findOutsideQuotes(text, {&separator, 1}), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

} // namespace

std::string_view ContentLine::parameter(std::string_view wanted) const {
    const auto found = std::ranges::find(parameters, wanted,
                                         [](const auto& each) -> std::string_view { return each.first; });
    return found == parameters.end() ? std::string_view() : found->second;
}

ContentLineReader::ContentLineReader(std::string_view bytes) : rest_(bytes) {
    if (rest_.starts_with("\xEF\xBB\xBF"))
        rest_.remove_prefix(3);
}

/// A line goes on in the next one when that begins with a blank; or, quoted-printable, when it ends with "=".
std::string ContentLineReader::takeUnfolded() {
    std::string line(takeMIMELine(rest_).substr(0, mostBytesKept));
    const bool isQuoted = isQuotedPrintable(std::string_view(line).substr(0, line.find(':')));
    while (!rest_.empty()) {
        const bool isSoft = isQuoted && line.ends_with('=');
        if (!isSoft && rest_[0] != ' ' && rest_[0] != '\t')
            break;
        if (isSoft)
            line.pop_back();
        std::string_view more = takeMIMELine(rest_);
        if (!isSoft)
            more.remove_prefix(1);
        line += more.substr(0, mostBytesKept - std::min(mostBytesKept, line.size()));
    }
    return line;
}

std::optional<ContentLine> ContentLineReader::next() {
    while (!rest_.empty()) {
        const std::string line = takeUnfolded();
        const std::size_t colon = findOutsideQuotes(line, ":");
        if (colon == line.npos)
            continue;
        std::string_view head = std::string_view(line).substr(0, colon);
        ContentLine result;
        const std::string_view name = takePart(head, ';');
        result.name = upperCased(name.substr(name.rfind('.') == name.npos ? 0 : name.rfind('.') + 1));
        bool isQuoted = false;
        while (!head.empty() && result.parameters.size() < mostParameters) {
            const std::string_view parameter = takePart(head, ';');
            const std::size_t equals = parameter.find('=');
            const std::string_view value =
                equals == parameter.npos ? parameter : parameter.substr(equals + 1);
            result.parameters.emplace_back(equals == parameter.npos ? std::string()
                                                                    : upperCased(parameter.substr(0, equals)),
                                           decoded(withoutQuotes(value), {}));
            isQuoted = isQuoted || isQuotedPrintable(value);
        }
        const std::string value = line.substr(colon + 1);
        result.value = decoded(isQuoted ? decodedQuotedPrintable(value) : value, result.parameter("CHARSET"));
        return result;
    }
    return std::nullopt;
}

std::string textOfValue(std::string_view value) {
    std::string text;
    for (std::size_t at = 0; at < value.size(); ++at) {
        if (value[at] != '\\' || at + 1 == value.size()) {
            text += value[at];
            continue;
        }
        const char escaped = value[++at];
        text += escaped == 'n' || escaped == 'N' ? '\n' : escaped;
    }
    return text;
}

std::vector<std::string> partsOfValue(std::string_view value, char separator) {
    std::vector<std::string> parts;
    for (std::size_t start = 0, at = 0; at <= value.size(); ++at) {
        if (at < value.size() && value[at] == '\\') {
            ++at;
        } else if (at == value.size() || value[at] == separator) {
            parts.push_back(textOfValue(value.substr(start, at - start)));
            start = at + 1;
        }
    }
    return parts;
}

} // namespace kelvo::importers
