#include "platform/launchservices/DynamicType.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <string>

namespace kelvo {
namespace {

constexpr std::u16string_view prefix = u"dyn.a";
constexpr std::size_t longestIdentifier = 4096;
/// Without letters that are taken for others.
constexpr std::string_view digits = "abcdefghkmnpqrstuvwxyz0123456789";
constexpr std::string_view charactersThatAreEscaped = ":=,\\?";
constexpr char conformsToClass = '0';

/// The types that one character stands for.
constexpr std::array<std::pair<char, std::string_view>, 10> shortTypes{{
    {'6', "public.data"},
    {'7', "public.text"},
    {'8', "public.plain-text"},
    {'9', "public.utf16-plain-text"},
    {'A', "com.apple.traditional-mac-plain-text"},
    {'B', "public.image"},
    {'C', "public.video"},
    {'D', "public.audio"},
    {'E', "public.directory"},
    {'F', "public.folder"},
}};

std::string bytesOf(const NSString& value) {
    return NSFileManager::defaultManager().fileSystemRepresentationWithPath(value).value_or(
        value.UTF8String());
}

std::string escaped(std::string_view value) {
    std::string result;
    for (const char byte : value) {
        if (charactersThatAreEscaped.find(byte) != std::string_view::npos)
            result += '\\';
        result += byte;
    }
    return result;
}

/// Takes what comes before the next `end` that is not escaped, and the end.
std::string takeUpTo(std::string_view& text, char end) {
    std::string result;
    while (!text.empty()) {
        const bool isEscape = text.front() == '\\' && text.size() > 1;
        const char byte = text[isEscape ? 1 : 0];
        text.remove_prefix(isEscape ? 2 : 1);
        if (byte == end && !isEscape)
            break;
        result += byte;
    }
    return result;
}

std::string shortNameOf(std::string_view type) {
    const auto row = std::ranges::find(shortTypes, type, [](const auto& pair) { return pair.second; });
    return row == shortTypes.end() ? escaped(type) : std::string(1, row->first);
}

std::string longNameOf(const std::string& name) {
    const auto row =
        std::ranges::find(shortTypes, name, [](const auto& pair) { return std::string(1, pair.first); });
    return row == shortTypes.end() ? name : std::string(row->second);
}

} // namespace

NSString dynamicTypeIdentifier(const DynamicType& type) {
    std::string text = "?";
    if (!type.conformsTo.isNil())
        text += std::string{conformsToClass, '='} + shortNameOf(bytesOf(type.conformsTo));
    for (const DynamicType::Tag& tag : type.tags) {
        text += text.size() > 1 ? ":" : "";
        text += std::string{static_cast<char>(tag.tagClass), '='} + escaped(bytesOf(tag.value));
    }
    std::u16string identifier(prefix);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char byte : text) {
        bits = bits << 8 | static_cast<unsigned char>(byte);
        for (count += 8; count >= 5; count -= 5)
            identifier += static_cast<char16_t>(digits[bits >> (count - 5) & 31]);
    }
    if (count > 0)
        identifier += static_cast<char16_t>(digits[bits << (5 - count) & 31]);
    return NSString(identifier);
}

std::optional<DynamicType> dynamicTypeWithIdentifier(std::u16string_view identifier) {
    if (identifier.size() > longestIdentifier || identifier.size() < prefix.size() ||
        !equalsASCIIIgnoringCase(identifier.substr(0, prefix.size()), prefix))
        return std::nullopt;
    std::string text;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char16_t unit : identifier.substr(prefix.size())) {
        const std::size_t digit =
            unit < 0x80 ? digits.find(asciiLowerCase(static_cast<char>(unit))) : digits.npos;
        if (digit == digits.npos)
            return std::nullopt;
        bits = bits << 5 | static_cast<std::uint32_t>(digit);
        count += 5;
        if (count >= 8) {
            count -= 8;
            text += static_cast<char>(bits >> count & 0xFF);
        }
    }
    if (!text.starts_with('?') || text.find('\0') != std::string::npos)
        return std::nullopt;
    DynamicType type;
    const NSFileManager& files = NSFileManager::defaultManager();
    for (std::string_view rest = std::string_view(text).substr(1); !rest.empty();) {
        // A class with a name of its own is one that nobody here asks for.
        const std::string_view pair = rest;
        const std::string value = takeUpTo(rest, ':');
        if (pair.size() < 2 || pair[1] != '=')
            continue;
        if (pair.front() == conformsToClass && type.conformsTo.isNil())
            type.conformsTo = files.stringWithFileSystemRepresentation(longNameOf(value.substr(2)));
        else if (pair.front() >= '1' && pair.front() <= '5')
            type.tags.push_back(
                {UTTagClass{pair.front()}, files.stringWithFileSystemRepresentation(value.substr(2))});
    }
    return type;
}

} // namespace kelvo
