#include "importers/mail/MailFile.h"

#include "markup/CharsetLabels.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/webkit/MIMELines.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <utility>

namespace kelvo::importers {
namespace {

constexpr std::string_view separator = "From ";
/// A header of 10 MB may hold millions of addresses, each of which takes hundreds of bytes. No real one has more.
constexpr std::size_t mostBytesOfField = std::size_t{256} << 10;
/// Groups of addresses in each other, which GMime reads by recursion, begin with one each.
constexpr std::size_t mostColonsOfField = 1024;
constexpr std::size_t mostBytesOfHeader = std::size_t{1} << 20;

/// Up to the empty line.
std::string_view headerOf(std::string_view message) {
    std::string_view rest = message;
    while (!rest.empty()) {
        const std::size_t start = message.size() - rest.size();
        if (takeMIMELine(rest).empty())
            return message.substr(0, start);
    }
    return message;
}

bool beginsWithField(std::string_view text) {
    const auto* const end = std::ranges::find_if_not(text, [](char byte) {
        return isASCIILetter(byte) || isASCIIDigit(byte) || byte == '-' || byte == '_';
    });
    return end != text.begin() && end != text.end() && *end == ':';
}

/// Absent when it is UTF-8 already, and when it is not of the encoding.
std::optional<std::string> lineOfEncoding(std::string_view line, NSStringEncoding encoding) {
    const auto* const first = std::ranges::find_if(line, [](char byte) { return (byte & 0x80) != 0; });
    const NSData data = NSData::dataWithBytes(line);
    if (first == line.end() || !stringWithData_encoding(data, NSUTF8StringEncoding).isNil())
        return std::nullopt;
    const NSString text = stringWithData_encoding(data, encoding);
    if (text.isNil())
        return std::nullopt;
    // Charsets that ASCII is no part of are not those of headers.
    const std::string_view beginning(line.begin(), first);
    std::string inUTF8 = text.UTF8String();
    return !beginning.empty() && inUTF8.starts_with(beginning) ? std::optional(std::move(inUTF8))
                                                               : std::nullopt;
}

} // namespace

std::string_view messageOfEMLX(std::string_view file) {
    std::string_view rest = file;
    std::string_view line = takeMIMELine(rest);
    while (line.ends_with(' '))
        line.remove_suffix(1);
    std::size_t length = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), length);
    return error == std::errc() && end == line.data() + line.size() ? rest.substr(0, length) : file;
}

bool isMailbox(std::string_view file) {
    return file.starts_with(separator);
}

std::optional<std::string_view> takeMessage(std::string_view& mailbox) {
    if (!isMailbox(mailbox))
        return std::nullopt;
    takeMIMELine(mailbox);
    const std::string_view all = mailbox;
    // Some writers leave out the empty line before the next one, some do not quote lines that look like it, and some put
    // nothing but a hyphen into it.
    for (std::size_t at = 0;;) {
        const std::size_t found = all.find("\nFrom ", at);
        if (found == all.npos) {
            mailbox = {};
            return all;
        }
        const bool isAfterEmptyLine =
            found > 0 && (all[found - 1] == '\n' || (found > 1 && all.substr(found - 2, 2) == "\n\r"));
        std::string_view rest = all.substr(found + 1);
        const std::string_view line = takeMIMELine(rest);
        const bool isUsual = std::ranges::count(line, ':') >= 2 || line.starts_with("From -");
        if ((isAfterEmptyLine || isUsual) && beginsWithField(rest)) {
            mailbox = all.substr(found + 1);
            return all.substr(0, found);
        }
        at = found + 1;
    }
}

std::optional<std::string> messageOfUTF16(std::string_view message) {
    if (encodingOfByteOrderMark(message) != NSUnicodeStringEncoding)
        return std::nullopt;
    const NSString text = stringWithMarkedData(NSData::dataWithBytes(message), nullptr);
    return text.isNil() ? std::nullopt : std::optional(text.UTF8String());
}

NSStringEncoding encodingOfMailCharset(const NSString& charset) {
    const NSStringEncoding encoding =
        charset.length() > 2 ? charset2NSStringEncoding(charset) : kCFStringEncodingInvalidId;
    // Who writes "gb2312" has the characters of its successors as well.
    return encoding == CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingEUC_CN)
               ? CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingGB18030)
               : encoding;
}

std::optional<std::string> headerOfCharset(std::string_view header, const NSString& charset) {
    const NSStringEncoding encoding = encodingOfMailCharset(charset);
    // What calls itself Latin 1 is Windows Latin 1 as often as not, which is what such bytes are taken for anyway.
    if (encoding == kCFStringEncodingInvalidId || encoding == NSISOLatin1StringEncoding)
        return std::nullopt;
    std::string result;
    bool isOther = false;
    for (std::string_view rest = header; !rest.empty();) {
        const std::string_view all = rest;
        takeMIMELine(rest);
        const std::string_view line = all.substr(0, all.size() - rest.size());
        const auto inUTF8 = lineOfEncoding(line, encoding);
        isOther = isOther || inUTF8;
        result += inUTF8 ? std::string_view(*inUTF8) : line;
    }
    return isOther ? std::optional(std::move(result)) : std::nullopt;
}

std::optional<std::string> messageWithShortHeader(std::string_view message) {
    const std::string_view header = headerOf(message);
    std::string_view rest = header;
    std::string kept;
    std::size_t bytesOfField = 0;
    std::size_t colonsOfField = 0;
    bool isCut = false;
    while (!rest.empty()) {
        const std::size_t start = header.size() - rest.size();
        takeMIMELine(rest);
        std::string_view line = header.substr(start, header.size() - rest.size() - start);
        if (!line.starts_with(' ') && !line.starts_with('\t'))
            bytesOfField = colonsOfField = 0;
        colonsOfField += static_cast<std::size_t>(std::ranges::count(line, ':'));
        const std::size_t room =
            colonsOfField > mostColonsOfField
                ? 0
                : std::min(mostBytesOfField - bytesOfField, mostBytesOfHeader - kept.size());
        if (line.size() > room) {
            isCut = true;
            line = line.substr(0, room);
        }
        bytesOfField += line.size();
        kept += line;
        if (isCut && !kept.empty() && kept.back() != '\n' && kept.size() < mostBytesOfHeader)
            kept += '\n';
    }
    if (!isCut)
        return std::nullopt;
    if (!kept.ends_with('\n'))
        kept += '\n';
    kept += message.substr(header.size());
    return kept;
}

} // namespace kelvo::importers
