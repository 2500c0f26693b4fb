#include "platform/filekinds/FileKind.h"

#include "platform/filekinds/ZipDirectory.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

/// What shows whether a file is text.
constexpr std::size_t beginningLength = 1 << 20;
/// What a text says of itself stands within this many bytes of its beginning.
constexpr std::size_t headLength = 8192;
/// Other bytes may stand before the header of a PDF, and after its end.
constexpr std::size_t strayBytesOfPDF = 1024;

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// What stands at the beginning of the type that a package names, or of its names.
struct PackageRow {
    std::string_view beginning;
    FileKind kind;
};

constexpr std::array packageTypes{
    PackageRow{"application/vnd.oasis.opendocument.text"sv, FileKind::openDocument},
    PackageRow{"application/vnd.oasis.opendocument.spreadsheet"sv, FileKind::spreadsheet},
    PackageRow{"application/vnd.oasis.opendocument.presentation"sv, FileKind::presentation},
    PackageRow{"application/vnd.sun.xml.writer"sv, FileKind::openOfficeText},
    PackageRow{"application/vnd.sun.xml.calc"sv, FileKind::spreadsheet},
    PackageRow{"application/vnd.sun.xml.impress"sv, FileKind::presentation},
    PackageRow{"application/epub+zip"sv, FileKind::book},
};

constexpr std::array officeFolders{
    PackageRow{"word/"sv, FileKind::officeOpenXML},
    PackageRow{"xl/"sv, FileKind::spreadsheet},
    PackageRow{"ppt/"sv, FileKind::presentation},
};

FileKind kindOfZip(const FileContents& contents) {
    const ZipDirectory directory(contents);
    if (directory.isDamaged())
        return FileKind::damagedPackage;
    // OpenDocument packages and books name their type in a first entry, not compressed.
    const std::string type = directory.storedContents("mimetype", 100);
    for (const PackageRow& row : packageTypes) {
        if (type.starts_with(row.beginning))
            return row.kind;
    }
    if (type.empty() && directory.hasEntry("content.xml") && directory.hasEntry("META-INF/manifest.xml"))
        return FileKind::openDocument;
    for (const PackageRow& row : officeFolders) {
        if (directory.hasEntry("[Content_Types].xml") && directory.hasEntryIn(row.beginning))
            return row.kind;
    }
    return FileKind::archive;
}

std::uint32_t numberAt(std::string_view bytes, std::size_t place, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t index = count; index-- > 0;)
        value = value << 8 | static_cast<unsigned char>(bytes[place + index]);
    return value;
}

/// Where the directory begins, by the header. The rest of it may stand anywhere.
bool hasDirectoryOfCompoundFile(const FileContents& contents) {
    constexpr std::size_t headerLength = 512;
    const std::string header = contents.bytes(0, headerLength);
    if (header.size() < headerLength)
        return false;
    const std::uint32_t shift = numberAt(header, 30, 2);
    return (shift == 9 || shift == 12) &&
           (std::uint64_t{numberAt(header, 48, 4)} + 2) << shift <= contents.length();
}

/// A compound file has a directory whose names are UTF-16; the streams that say what the file is are named like
/// this. A document may have a table or slides in it. Zeros after a name are not looked for: with them the search takes
/// seconds where a file is full of zeros, so that the one name that is too short without them counts in no huge file.
FileKind kindOfCompoundFile(const FileContents& contents) {
    if (contents.containAny({"W\0o\0r\0d\0D\0o\0c\0u\0m\0e\0n\0t"sv}))
        return FileKind::wordDocument;
    if (contents.containAny({"E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e"sv}))
        return FileKind::encryptedPackage;
    if (contents.containAny({"P\0o\0w\0e\0r\0P\0o\0i\0n\0t\0 \0D\0o\0c\0u\0m\0e\0n\0t"sv}))
        return FileKind::presentation;
    constexpr std::uint64_t huge = 64ULL << 20;
    if (contents.containAny({"W\0o\0r\0k\0b\0o\0o\0k"sv}) ||
        (contents.length() < huge && contents.containAny({"B\0o\0o\0k\0\0\0"sv})))
        return FileKind::spreadsheet;
    return hasDirectoryOfCompoundFile(contents) ? FileKind::other : FileKind::damagedPackage;
}

bool isPropertyListOfArchive(const FileContents& contents) {
    return contents.containAny({"WebMainResource", "WebSubresources", "WebSubframeArchives"});
}

FileKind kindOfBinaryPropertyList(const FileContents& contents) {
    return isPropertyListOfArchive(contents) ? FileKind::webArchive : FileKind::other;
}

/// Bytes at the beginning that only one format has there, and of containers who looks inside.
struct Signature {
    std::string_view first;
    FileKind kind;
    /// More bytes at a place further on, for first bytes that others have too.
    std::size_t place = 0;
    std::string_view second = ""sv;
    FileKind (*kindByLookingInside)(const FileContents&) = nullptr;
};

/// The first that fits. Files of these formats may be without U+0000, so that they would pass for text in some
/// code page.
constexpr std::array signatures{
    Signature{"{\\rtf"sv, FileKind::RTF},
    Signature{"rtfd\0\0\0\0"sv, FileKind::RTFD},
    Signature{"PK\x03\x04"sv, FileKind::archive, 0, ""sv, kindOfZip},
    Signature{"PK\x05\x06"sv, FileKind::archive},
    Signature{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, FileKind::other, 0, ""sv, kindOfCompoundFile},
    Signature{"\xD0\xCF\x11\xE0"sv, FileKind::other},
    Signature{"bplist00"sv, FileKind::other, 0, ""sv, kindOfBinaryPropertyList},
    Signature{"bplist"sv, FileKind::other},
    Signature{"%PDF-"sv, FileKind::PDF},
    Signature{"%!PS"sv, FileKind::postScript},
    Signature{"\xC5\xD0\xD3\xC6"sv, FileKind::postScript},
    Signature{"\x89PNG\r\n"sv, FileKind::image},
    Signature{"GIF87a"sv, FileKind::image},
    Signature{"GIF89a"sv, FileKind::image},
    Signature{"\xFF\xD8\xFF"sv, FileKind::image},
    Signature{"II*\0"sv, FileKind::image},
    Signature{"MM\0*"sv, FileKind::image},
    Signature{"8BPS\0"sv, FileKind::image},
    Signature{"\0\0\0\x0CjP  "sv, FileKind::image},
    Signature{"RIFF"sv, FileKind::image, 8, "WEBP"sv},
    Signature{"\0\0"sv, FileKind::image, 4, "ftypheic"sv},
    Signature{"\0\0"sv, FileKind::image, 4, "ftypmif1"sv},
    Signature{"\0\0"sv, FileKind::image, 4, "ftypavif"sv},
    Signature{"\0\0"sv, FileKind::audio, 4, "ftypM4A"sv},
    Signature{"\0\0"sv, FileKind::movie, 4, "ftyp"sv},
    Signature{"\x1A\x45\xDF\xA3"sv, FileKind::movie},
    Signature{"RIFF"sv, FileKind::movie, 8, "AVI "sv},
    Signature{"\0\0\x01\xBA"sv, FileKind::movie},
    Signature{"RIFF"sv, FileKind::audio, 8, "WAVE"sv},
    Signature{"ID3\x02"sv, FileKind::audio},
    Signature{"ID3\x03"sv, FileKind::audio},
    Signature{"ID3\x04"sv, FileKind::audio},
    Signature{"fLaC\0"sv, FileKind::audio},
    Signature{"fLaC\x80"sv, FileKind::audio},
    Signature{"\x1F\x8B"sv, FileKind::archive},
    Signature{"BZh"sv, FileKind::archive, 4, "1AY&SY"sv},
    Signature{"\xFD"
              "7zXZ"sv,
              FileKind::archive},
    Signature{"7z\xBC\xAF"sv, FileKind::archive},
    Signature{"\x28\xB5\x2F\xFD"sv, FileKind::archive},
    Signature{"Rar!\x1A"sv, FileKind::archive},
    Signature{"\x7F"
              "ELF"sv,
              FileKind::other},
};

enum class Holds : std::uint8_t { text, binaryData, either };

/// What the name says of contents that do not show what they are.
struct Extension {
    std::string_view name;
    FileKind kind;
    Holds holds = Holds::binaryData;
};

constexpr std::array extensions{
    Extension{"html", FileKind::HTML, Holds::text},
    Extension{"htm", FileKind::HTML, Holds::text},
    Extension{"xhtml", FileKind::HTML, Holds::text},
    Extension{"svg", FileKind::SVG, Holds::text},
    Extension{"ps", FileKind::postScript, Holds::either},
    Extension{"eps", FileKind::postScript, Holds::either},
    Extension{"ai", FileKind::postScript, Holds::either},
    Extension{"pdf", FileKind::PDF},
    Extension{"png", FileKind::image},
    Extension{"jpg", FileKind::image},
    Extension{"jpeg", FileKind::image},
    Extension{"jpe", FileKind::image},
    Extension{"gif", FileKind::image},
    Extension{"tif", FileKind::image},
    Extension{"tiff", FileKind::image},
    Extension{"bmp", FileKind::image},
    Extension{"jp2", FileKind::image},
    Extension{"psd", FileKind::image},
    Extension{"webp", FileKind::image},
    Extension{"mov", FileKind::movie},
    Extension{"mp4", FileKind::movie},
    Extension{"m4v", FileKind::movie},
    Extension{"avi", FileKind::movie},
    Extension{"mpg", FileKind::movie},
    Extension{"mpeg", FileKind::movie},
    Extension{"mkv", FileKind::movie},
    Extension{"webm", FileKind::movie},
    Extension{"mp3", FileKind::audio},
    Extension{"m4a", FileKind::audio},
    Extension{"wav", FileKind::audio},
    Extension{"aiff", FileKind::audio},
    Extension{"flac", FileKind::audio},
    Extension{"ogg", FileKind::audio},
};

/// How the first tag of a text begins that says what it is; in lower case.
struct FirstTag {
    std::string_view tag;
    FileKind kind;
    /// Has to stand near the beginning too.
    std::string_view also = ""sv;
};

constexpr std::array firstTags{
    FirstTag{"<!doctype html"sv, FileKind::HTML},
    FirstTag{"<html"sv, FileKind::HTML},
    FirstTag{"<head"sv, FileKind::HTML},
    FirstTag{"<body"sv, FileKind::HTML},
    FirstTag{"<!doctype svg"sv, FileKind::SVG},
    FirstTag{"<svg"sv, FileKind::SVG},
    FirstTag{"<office:document"sv, FileKind::flatOpenDocument, "application/vnd.oasis.opendocument.text"sv},
};

FileKind kindOfExtension(const NSString& name, Holds contents, FileKind otherwise) {
    const std::string extension = asciiLowerCased(pathExtension(name).UTF8String());
    const auto* const row = std::ranges::find(extensions, extension, &Extension::name);
    const bool fits = row != extensions.end() && (row->holds == contents || row->holds == Holds::either);
    return fits ? row->kind : otherwise;
}

std::optional<FileKind> kindOfSignature(const FileContents& contents, std::string_view beginning) {
    for (const Signature& row : signatures) {
        if (beginning.starts_with(row.first) && beginning.size() >= row.place &&
            beginning.substr(row.place).starts_with(row.second))
            return row.kindByLookingInside ? row.kindByLookingInside(contents) : row.kind;
    }
    return std::nullopt;
}

/// White space, backspaces (struck-over text), escape sequences, and the end mark of old systems.
bool isControlOfText(unsigned char byte) {
    return (byte >= '\b' && byte <= '\r') || byte == 0x1B || byte == 0x1A;
}

/// Without the last character when its end may be missing.
std::string_view withoutCutCharacter(std::string_view bytes) {
    for (std::size_t count = 1; count <= std::min<std::size_t>(3, bytes.size()); ++count) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - count]);
        if (byte >= 0xC0)
            return bytes.substr(0, bytes.size() - count);
        if (byte < 0x80)
            break;
    }
    return bytes;
}

bool hasMark(std::string_view beginning) {
    return beginning.starts_with("\xEF\xBB\xBF") || beginning.starts_with("\xFF\xFE") ||
           beginning.starts_with("\xFE\xFF") || beginning.starts_with("\0\0\xFE\xFF"sv);
}

bool isText(std::string_view beginning, bool isCut) {
    if (hasMark(beginning))
        return true;
    if (contains(beginning, "\0"sv))
        return false;
    if (!NSString::stringWithUTF8String(isCut ? withoutCutCharacter(beginning) : beginning).isNil())
        return true;
    return std::ranges::all_of(beginning, [](char character) {
        const auto byte = static_cast<unsigned char>(character);
        return byte >= ' ' || isControlOfText(byte);
    });
}

/// What stands before a PDF's header is not part of it, and may even be text; but a text that mentions such
/// a header does not end like a PDF.
bool isPDFWithOtherBytesBefore(const FileContents& contents, std::string_view beginning, bool isBinary) {
    if (!contains(beginning.substr(0, strayBytesOfPDF), "%PDF-"))
        return false;
    const std::uint64_t length = contents.length();
    const std::uint64_t end = std::min<std::uint64_t>(length, strayBytesOfPDF);
    return isBinary || contains(contents.bytes(length - end, strayBytesOfPDF), "%%EOF");
}

std::string_view skipWhiteSpace(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n\f"), text.size()));
    return text;
}

/// A message that is a page, alone or with what belongs to it. Letters to people are other multiparts, or
/// text. `head` is in lower case.
bool isMIMEHTML(std::string_view head) {
    const std::size_t end = std::min(head.find("\n\n"), head.find("\n\r\n"));
    const std::string header = '\n' + std::string(head.substr(0, end));
    const std::size_t type = header.find("\ncontent-type:");
    if (type == std::string::npos || !contains(header, "\nmime-version:"))
        return false;
    const std::string_view value = skipWhiteSpace(std::string_view(header).substr(type + 14));
    return value.starts_with("multipart/related") || value.starts_with("text/html");
}

/// Without what may stand before the root element but says nothing.
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
           (text.size() == tag.size() || contains(" \t\r\n\f>/["sv, text.substr(tag.size(), 1)));
}

/// Documents that say in words what they are. `head` is in lower case.
FileKind kindOfMarkup(const FileContents& contents, std::string_view head) {
    const std::string_view root = skipProlog(head);
    if (!root.starts_with('<'))
        return isMIMEHTML(head) ? FileKind::MIMEHTML : FileKind::plainText;
    for (const FirstTag& row : firstTags) {
        if (isAtTag(root, row.tag) && contains(root, row.also))
            return row.kind;
    }
    // The prefix of its names is whatever the writer chose.
    if (contains(root, "http://schemas.microsoft.com/office/word/2003/wordml") &&
        contains(root, "worddocument"))
        return FileKind::wordML;
    const bool isPropertyList = isAtTag(root, "<plist") || isAtTag(root, "<!doctype plist");
    return isPropertyList && isPropertyListOfArchive(contents) ? FileKind::webArchive : FileKind::plainText;
}

/// What is ASCII in UTF-16, which is all that signs of markup are made of.
std::string narrowed(std::string_view bytes, bool isBigEndian) {
    std::string text;
    for (std::size_t place = 0; place + 1 < bytes.size(); place += 2) {
        const char low = bytes[place + (isBigEndian ? 1 : 0)];
        const char high = bytes[place + (isBigEndian ? 0 : 1)];
        text += high == 0 ? low : '\x1A';
    }
    return text;
}

/// The beginning in 8 bits, without a mark and in lower case; empty of UTF-32, which no document with
/// markup has.
std::string headOfText(std::string_view beginning) {
    const std::string_view head = beginning.substr(0, headLength);
    if (head.starts_with("\xFF\xFE\0\0"sv) || head.starts_with("\0\0\xFE\xFF"sv))
        return {};
    if (head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF"))
        return asciiLowerCased(narrowed(head.substr(2), head.front() == '\xFE'));
    return asciiLowerCased(std::string(head.substr(head.starts_with("\xEF\xBB\xBF") ? 3 : 0)));
}

} // namespace

bool isText(const FileContents& contents) {
    const std::string beginning = contents.bytes(0, beginningLength);
    return isText(beginning, beginning.size() < contents.length());
}

FileKind kindOfContents(const FileContents& contents, const NSString& name) {
    const std::string beginning = contents.bytes(0, beginningLength);
    if (beginning.empty())
        return contents.length() == 0 ? FileKind::plainText : FileKind::other;
    if (const auto kind = kindOfSignature(contents, beginning))
        return *kind;
    const bool isBinary = !isText(beginning, beginning.size() < contents.length());
    if (isPDFWithOtherBytesBefore(contents, beginning, isBinary))
        return FileKind::PDF;
    if (isBinary)
        return kindOfExtension(name, Holds::binaryData, FileKind::other);
    const FileKind kind = kindOfMarkup(contents, headOfText(beginning));
    return kind == FileKind::plainText ? kindOfExtension(name, Holds::text, kind) : kind;
}

FileKind kindOfFile(const NSString& path) {
    const NSFileManager& files = NSFileManager::defaultManager();
    bool isDirectory = false;
    if (!files.fileExistsAtPath_isDirectory(path, &isDirectory))
        return FileKind::other;
    if (isDirectory) {
        const bool isPackage = files.fileExistsAtPath_isDirectory(
                                   stringByAppendingPathComponent(path, u"TXT.rtf"), &isDirectory) &&
                               !isDirectory;
        return isPackage ? FileKind::RTFD : FileKind::folder;
    }
    FileDescriptor file = openRegularFile(files.fileSystemRepresentationWithPath(path).value_or(""));
    return file ? kindOfContents(FileContents(std::move(file)), path) : FileKind::other;
}

} // namespace kelvo
