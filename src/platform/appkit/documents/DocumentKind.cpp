#include "platform/appkit/documents/DocumentKind.h"

#include "platform/appkit/documents/ZipDirectory.h"
#include "platform/foundation/NSPathUtilities.h"

#include <algorithm>
#include <array>
#include <string>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

/// What a document says of itself stands within this many bytes of its beginning.
constexpr std::size_t examinedBytes = 8192;

/// Of files that may be without U+0000, so that they could pass for text in some code page.
constexpr std::array binarySignatures{
    "%PDF-"sv,
    "\x89PNG\r\n"sv,
    "GIF87a"sv,
    "GIF89a"sv,
    "\xFF\xD8\xFF"sv,
    "\x1F\x8B"sv,
    "BZh"sv,
    "\xFD"
    "7zXZ"sv,
    "7z\xBC\xAF"sv,
    "\x28\xB5\x2F\xFD"sv,
    "Rar!\x1A"sv,
    "\x7F"
    "ELF"sv,
    "PK\x03\x04"sv,
    "PK\x05\x06"sv,
    "bplist"sv,
    "\xC5\xD0\xD3\xC6"sv,
    "\xD0\xCF\x11\xE0"sv,
};

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

char lowercase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter;
}

std::string lowercase(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](char letter) { return lowercase(letter); });
    return result;
}

/// A compound file has a directory whose names are UTF-16; the stream with the text of a document of Word is
/// named like this. Encrypted packages and the files of other programs have none.
bool hasWordStream(std::string_view bytes) {
    return contains(bytes, "W\0o\0r\0d\0D\0o\0c\0u\0m\0e\0n\0t\0\0\0"sv);
}

DocumentKind kindOfZip(std::string_view bytes) {
    const ZipDirectory directory(bytes);
    // OpenDocument packages name their type in a first entry, not compressed.
    const std::string_view type = directory.storedContents("mimetype");
    if (type.starts_with("application/vnd.oasis.opendocument.text"))
        return DocumentKind::openDocument;
    if (type.starts_with("application/vnd.sun.xml.writer"))
        return DocumentKind::openOfficeText;
    if (type.empty() && directory.hasEntry("content.xml") && directory.hasEntry("META-INF/manifest.xml"))
        return DocumentKind::openDocument;
    if (directory.hasEntry("[Content_Types].xml") && directory.hasEntryIn("word/"))
        return DocumentKind::officeOpenXML;
    return DocumentKind::none;
}

std::string_view skipWhiteSpace(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n\f"), text.size()));
    return text;
}

/// A message that is a page, alone or with what belongs to it. Letters to people are other multiparts, or
/// text.
bool isMIMEHTML(std::string_view beginning) {
    const std::size_t end = std::min(beginning.find("\n\n"), beginning.find("\n\r\n"));
    const std::string header = '\n' + lowercase(beginning.substr(0, end));
    const std::size_t type = header.find("\ncontent-type:");
    if (type == std::string::npos || !contains(header, "\nmime-version:"))
        return false;
    const std::string_view value = skipWhiteSpace(std::string_view(header).substr(type + 14));
    return value.starts_with("multipart/related") || value.starts_with("text/html");
}

/// Without what may stand before the root element but says nothing; `text` is in lower case.
std::string_view skipProlog(std::string_view text) {
    for (;;) {
        text = skipWhiteSpace(text);
        const std::string_view end = text.starts_with("<!--") ? "-->"sv
                                     : text.starts_with("<?") ? "?>"sv
                                                              : ""sv;
        const std::size_t place = end.empty() ? std::string_view::npos : text.find(end);
        if (place == std::string_view::npos)
            return text;
        text.remove_prefix(place + end.size());
    }
}

bool isAtTag(std::string_view text, std::string_view tag) {
    return text.starts_with(tag) &&
           (text.size() == tag.size() || contains(" \t\r\n\f>/"sv, text.substr(tag.size(), 1)));
}

/// Documents that say what they are in words. `beginning` is what of them was examined.
DocumentKind kindOfMarkup(std::string_view beginning) {
    const std::string text = lowercase(beginning);
    const std::string_view root = skipProlog(text);
    if (root.starts_with('<')) {
        if (contains(root, "http://schemas.microsoft.com/office/word/2003/wordml") &&
            contains(root, "worddocument"))
            return DocumentKind::wordML;
        if (root.starts_with("<office:document") && contains(root, "application/vnd.oasis.opendocument.text"))
            return DocumentKind::flatOpenDocument;
        for (const std::string_view tag : {"<!doctype html"sv, "<html"sv, "<head"sv, "<body"sv}) {
            if (isAtTag(root, tag))
                return DocumentKind::HTML;
        }
    }
    return DocumentKind::plainText;
}

bool isPropertyListOfArchive(std::string_view bytes) {
    return contains(bytes, "WebMainResource") || contains(bytes, "WebSubresources") ||
           contains(bytes, "WebSubframeArchives");
}

/// The units of UTF-16 that are ASCII, which is all that signs of markup are made of.
std::string narrowed(std::string_view bytes, bool isBigEndian) {
    std::string text;
    for (std::size_t place = 0; place + 1 < bytes.size(); place += 2) {
        const char low = bytes[place + (isBigEndian ? 1 : 0)];
        const char high = bytes[place + (isBigEndian ? 0 : 1)];
        text += high == 0 ? low : '\x1A';
    }
    return text;
}

/// White space, backspaces (struck-over text), escape sequences, and the end mark of old systems.
bool isControlOfText(unsigned char byte) {
    return (byte >= '\b' && byte <= '\r') || byte == 0x1B || byte == 0x1A;
}

bool isText(std::string_view bytes) {
    if (std::ranges::any_of(binarySignatures,
                            [&](std::string_view signature) { return bytes.starts_with(signature); }) ||
        contains(bytes, "\0"sv))
        return false;
    if (!NSString::stringWithUTF8String(bytes).isNil())
        return true;
    return std::ranges::all_of(bytes, [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte >= ' ' || isControlOfText(byte);
    });
}

bool hasNameOfHTML(const NSString& path) {
    const std::string extension = lowercase(pathExtension(path).UTF8String());
    return extension == "html" || extension == "htm" || extension == "xhtml";
}

DocumentKind kindOfText(std::string_view beginning, const NSString& path) {
    const DocumentKind kind = kindOfMarkup(beginning);
    return kind == DocumentKind::plainText && hasNameOfHTML(path) ? DocumentKind::HTML : kind;
}

} // namespace

DocumentKind kindOfDocument(std::string_view bytes, const NSString& path) {
    if (bytes.empty())
        return DocumentKind::plainText;
    if (bytes.starts_with("rtfd\0\0\0\0"sv))
        return DocumentKind::RTFD;
    if (bytes.starts_with("{\\rtf"))
        return DocumentKind::RTF;
    if (bytes.starts_with("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"))
        return hasWordStream(bytes) ? DocumentKind::wordDocument : DocumentKind::none;
    if (bytes.starts_with("PK\x03\x04"))
        return kindOfZip(bytes);
    if (bytes.starts_with("bplist00"))
        return isPropertyListOfArchive(bytes) ? DocumentKind::webArchive : DocumentKind::none;

    const std::string_view beginning = bytes.substr(0, examinedBytes);
    if (beginning.starts_with("\xFF\xFE\0\0"sv) || beginning.starts_with("\0\0\xFE\xFF"sv))
        return DocumentKind::plainText;
    if (beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF"))
        return kindOfText(narrowed(beginning.substr(2), beginning.front() == '\xFE'), path);
    const bool hasMark = beginning.starts_with("\xEF\xBB\xBF");
    if (!hasMark && !isText(bytes))
        return DocumentKind::none;
    const std::string_view text = hasMark ? beginning.substr(3) : beginning;
    if (contains(lowercase(text), "<plist") && isPropertyListOfArchive(bytes))
        return DocumentKind::webArchive;
    if (isMIMEHTML(text))
        return DocumentKind::MIMEHTML;
    return kindOfText(text, path);
}

} // namespace kelvo
