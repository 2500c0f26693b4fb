#include "cli/FileKind.h"

#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSString.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>

namespace kelvo::cli {
namespace {

using namespace std::string_view_literals;

/// Enough for the document type of a page behind a long comment, and for the names in a web archive.
constexpr std::size_t examinedBytes = 4096;

struct Signature {
    std::size_t place;
    std::string_view bytes;
    FileKind kind;
};

constexpr std::array signatures{
    Signature{0, "{\\rtf"sv, FileKind::richText},
    Signature{0, "%!PS"sv, FileKind::postScript},
    Signature{0, "\xC5\xD0\xD3\xC6"sv, FileKind::postScript},
    Signature{0, "\x89PNG\r\n"sv, FileKind::image},
    Signature{0, "GIF8"sv, FileKind::image},
    Signature{0, "\xFF\xD8\xFF"sv, FileKind::image},
    Signature{0, "II*\0"sv, FileKind::image},
    Signature{0, "MM\0*"sv, FileKind::image},
    Signature{0, "8BPS"sv, FileKind::image},
    Signature{0, "\0\0\0\x0CjP  "sv, FileKind::image},
    Signature{8, "WEBP"sv, FileKind::image},
    Signature{4, "ftypheic"sv, FileKind::image},
    Signature{4, "ftypmif1"sv, FileKind::image},
    Signature{4, "ftypavif"sv, FileKind::image},
    Signature{4, "ftypM4A"sv, FileKind::audio},
    Signature{4, "ftyp"sv, FileKind::movie},
    Signature{0, "\x1A\x45\xDF\xA3"sv, FileKind::movie},
    Signature{8, "AVI "sv, FileKind::movie},
    Signature{0, "\0\0\x01\xBA"sv, FileKind::movie},
    Signature{8, "WAVE"sv, FileKind::audio},
    Signature{0, "ID3"sv, FileKind::audio},
    Signature{0, "fLaC"sv, FileKind::audio},
    Signature{0, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, FileKind::officeDocument},
};

struct Extension {
    std::string_view name;
    FileKind kind;
};

constexpr std::array extensions{
    Extension{"html", FileKind::html},          Extension{"htm", FileKind::html},
    Extension{"xhtml", FileKind::html},         Extension{"webarchive", FileKind::webArchive},
    Extension{"mht", FileKind::webArchive},     Extension{"mhtml", FileKind::webArchive},
    Extension{"rtf", FileKind::richText},       Extension{"rtfd", FileKind::richText},
    Extension{"doc", FileKind::officeDocument}, Extension{"docx", FileKind::officeDocument},
    Extension{"odt", FileKind::officeDocument}, Extension{"fodt", FileKind::officeDocument},
    Extension{"ott", FileKind::officeDocument}, Extension{"sxw", FileKind::officeDocument},
    Extension{"txt", FileKind::plainText},      Extension{"text", FileKind::plainText},
    Extension{"md", FileKind::plainText},       Extension{"pdf", FileKind::pdf},
    Extension{"ps", FileKind::postScript},      Extension{"eps", FileKind::postScript},
    Extension{"ai", FileKind::postScript},      Extension{"png", FileKind::image},
    Extension{"jpg", FileKind::image},          Extension{"jpeg", FileKind::image},
    Extension{"jpe", FileKind::image},          Extension{"gif", FileKind::image},
    Extension{"tif", FileKind::image},          Extension{"tiff", FileKind::image},
    Extension{"bmp", FileKind::image},          Extension{"jp2", FileKind::image},
    Extension{"psd", FileKind::image},          Extension{"svg", FileKind::image},
    Extension{"webp", FileKind::image},         Extension{"mov", FileKind::movie},
    Extension{"mp4", FileKind::movie},          Extension{"m4v", FileKind::movie},
    Extension{"avi", FileKind::movie},          Extension{"mpg", FileKind::movie},
    Extension{"mpeg", FileKind::movie},         Extension{"mkv", FileKind::movie},
    Extension{"webm", FileKind::movie},         Extension{"mp3", FileKind::audio},
    Extension{"m4a", FileKind::audio},          Extension{"wav", FileKind::audio},
    Extension{"aiff", FileKind::audio},         Extension{"flac", FileKind::audio},
    Extension{"ogg", FileKind::audio},
};

std::string lowercase(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return result;
}

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

/// The header of a message that is a page and what belongs to it. Letters to people are other multiparts.
bool isMIMEHTML(std::string_view firstBytes) {
    const std::size_t empty = firstBytes.find("\n\r\n");
    const std::string header =
        "\n" + lowercase(firstBytes.substr(0, std::min(empty, firstBytes.find("\n\n"))));
    const std::size_t type = header.find("\ncontent-type:");
    if (type == std::string::npos || !contains(header, "\nmime-version:"))
        return false;
    const std::string_view value = std::string_view(header).substr(type + 14);
    const std::string_view first = value.substr(std::min(value.find_first_not_of(" \t\r\n"), value.size()));
    return first.starts_with("multipart/related") || first.starts_with("text/html");
}

/// Packages of text documents; the names of what is in a package stand in its bytes, and OpenDocument names
/// its type first.
bool isTextPackage(std::string_view firstBytes) {
    if (!firstBytes.starts_with("PK\x03\x04") || firstBytes.size() < 38)
        return false;
    const std::string_view name = firstBytes.substr(30);
    return name.starts_with("mimetypeapplication/vnd.oasis.opendocument.text") ||
           name.starts_with("mimetypeapplication/vnd.sun.xml.writer") ||
           (contains(firstBytes, "[Content_Types].xml") && contains(firstBytes, "word/"));
}

/// Documents that say what they are in words, anywhere near their beginning.
std::optional<FileKind> kindOfMarkup(std::string_view firstBytes) {
    if (contains(firstBytes, "WebMainResource") || isMIMEHTML(firstBytes))
        return FileKind::webArchive;
    if (isTextPackage(firstBytes) || contains(firstBytes, "w:wordDocument") ||
        (contains(firstBytes, "<office:document") &&
         contains(firstBytes, "application/vnd.oasis.opendocument.text")))
        return FileKind::officeDocument;
    const std::size_t begin = firstBytes.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
    if (begin == std::string_view::npos || firstBytes[begin] != '<')
        return std::nullopt;
    const std::string text = lowercase(firstBytes.substr(begin));
    if (contains(text, "<!doctype html") || contains(text, "<html") || contains(text, "<head") ||
        contains(text, "<body"))
        return FileKind::html;
    if (contains(text, "<svg"))
        return FileKind::image;
    return std::nullopt;
}

std::optional<FileKind> kindOfExtension(std::string_view fileName) {
    const std::string_view component = fileName.substr(fileName.rfind('/') + 1);
    const std::size_t dot = component.rfind('.');
    if (dot == std::string_view::npos || dot == 0)
        return std::nullopt;
    const std::string extension = lowercase(component.substr(dot + 1));
    const auto* const row = std::ranges::find(extensions, extension, &Extension::name);
    return row == extensions.end() ? std::nullopt : std::optional(row->kind);
}

/// The end of what was examined may cut a character in two, so that up to three bytes there do not count.
bool isText(std::string_view bytes) {
    if (bytes.empty() || contains(bytes, "\0"sv))
        return false;
    const std::size_t mayBeCut = bytes.size() == examinedBytes ? 3 : 0;
    for (std::size_t cut = 0; cut <= mayBeCut; ++cut) {
        if (!NSString::stringWithUTF8String(bytes.substr(0, bytes.size() - cut)).isNil())
            return true;
    }
    return false;
}

} // namespace

std::string_view nameOfKind(FileKind kind) {
    constexpr std::array names{"HTML page"sv,  "web archive"sv, "rich text"sv,  "office document"sv,
                               "plain text"sv, "PDF"sv,         "PostScript"sv, "image"sv,
                               "movie"sv,      "audio"sv,       "folder"sv,     "file"sv};
    return names[static_cast<std::size_t>(kind)];
}

FileKind kindOfContents(std::string_view firstBytes, std::string_view fileName) {
    // A PDF may have other bytes before its header.
    if (contains(firstBytes.substr(0, 1024), "%PDF-"))
        return FileKind::pdf;
    for (const Signature& signature : signatures) {
        if (firstBytes.size() >= signature.place &&
            firstBytes.substr(signature.place).starts_with(signature.bytes))
            return signature.kind;
    }
    if (const auto kind = kindOfMarkup(firstBytes))
        return *kind;
    if (const auto kind = kindOfExtension(fileName))
        return *kind;
    return isText(firstBytes) ? FileKind::plainText : FileKind::other;
}

FileKind kindOfFile(const std::string& name) {
    struct stat facts;
    if (stat(name.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode)) {
        std::string_view bare = name;
        while (bare.size() > 1 && bare.back() == '/')
            bare.remove_suffix(1);
        return kindOfExtension(bare) == FileKind::richText ? FileKind::richText : FileKind::folder;
    }
    std::string firstBytes(examinedBytes, '\0');
    const FileDescriptor file = openRegularFile(name);
    const ssize_t length = file ? readSome(file.get(), firstBytes.data(), firstBytes.size()) : 0;
    firstBytes.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    return kindOfContents(firstBytes, name);
}

bool isSlowKind(FileKind kind) {
    return kind == FileKind::html || kind == FileKind::webArchive || kind == FileKind::pdf ||
           kind == FileKind::postScript;
}

} // namespace kelvo::cli
