#include "platform/launchservices/ContentSniffing.h"

#include "platform/filekinds/FileKind.h"
#include "platform/filekinds/ZipDirectory.h"
#include "platform/launchservices/UTType.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view zipSignature = "PK\x03\x04";

/// What a kind is called. `family`: the rules of the database may have a closer word for it, which counts if it is one
/// of these.
struct KindRow {
    FileKind kind;
    const char16_t* type;
    std::u16string_view family = {};
};

constexpr std::array kinds{
    KindRow{FileKind::HTML, u"public.html"},
    KindRow{FileKind::RTF, u"public.rtf"},
    KindRow{FileKind::RTFD, u"com.apple.flat-rtfd"},
    KindRow{FileKind::webArchive, u"com.apple.webarchive"},
    KindRow{FileKind::MIMEHTML, u"com.microsoft.word.mhtml"},
    KindRow{FileKind::wordDocument, u"com.microsoft.word.doc"},
    KindRow{FileKind::wordML, u"com.microsoft.word.wordml"},
    KindRow{FileKind::officeOpenXML, u"org.openxmlformats.wordprocessingml.document"},
    KindRow{FileKind::openDocument, u"org.oasis-open.opendocument.text", u"org.oasis-open.opendocument"},
    KindRow{FileKind::flatOpenDocument, u"org.oasis-open.opendocument.text-flat-xml"},
    KindRow{FileKind::openOfficeText, u"org.openoffice.text"},
    KindRow{FileKind::PDF, u"com.adobe.pdf"},
    KindRow{FileKind::postScript, u"com.adobe.postscript", u"com.adobe.postscript"},
    KindRow{FileKind::SVG, u"public.svg-image"},
    KindRow{FileKind::image, u"public.image", u"public.image"},
    KindRow{FileKind::movie, u"public.movie", u"public.audiovisual-content"},
    KindRow{FileKind::audio, u"public.audio", u"public.audiovisual-content"},
};

/// What a MIME type says at least.
struct MediaRow {
    std::string_view prefix;
    const char16_t* type;
};

constexpr std::array media{
    MediaRow{"image/", u"public.image"},      MediaRow{"audio/", u"public.audio"},
    MediaRow{"video/", u"public.movie"},      MediaRow{"font/", u"public.font"},
    MediaRow{"model/", u"public.3d-content"},
};

/// Office packages that nobody treats as a kind of their own.
struct PackageRow {
    std::string_view folder;
    const char16_t* type;
};

constexpr std::array packages{
    PackageRow{"xl/", u"org.openxmlformats.spreadsheetml.sheet"},
    PackageRow{"ppt/", u"org.openxmlformats.presentationml.presentation"},
};

/// Documents in compound files that nobody treats as a kind of their own, by a name in the directory, which is UTF-16.
struct StreamRow {
    std::string_view stream;
    const char16_t* type;
};

constexpr std::array streams{
    StreamRow{"B\0o\0o\0k\0\0\0"sv, u"com.microsoft.excel.xls"},
    StreamRow{"W\0o\0r\0k\0b\0o\0o\0k\0\0\0"sv, u"com.microsoft.excel.xls"},
    StreamRow{"P\0o\0w\0e\0r\0P\0o\0i\0n\0t\0 \0D\0o\0c\0u\0m\0e\0n\0t\0\0\0"sv,
              u"com.microsoft.powerpoint.ppt"},
};

NSString typeOfMIMEType(const MIMEDatabase& database, std::string_view type) {
    if (type.empty())
        return nullptr;
    const auto names = database.namesOf(type);
    for (const std::string& name : names) {
        NSString declared = typeWithMIMEType(NSString::stringWithLatin1Bytes(name));
        // The last that each type is a kind of, which are no news.
        if (declared == u"public.plain-text" || declared == u"public.data")
            break;
        if (!declared.isNil())
            return declared;
    }
    for (const MediaRow& row : media) {
        if (std::ranges::any_of(names, [&](const std::string& name) { return name.starts_with(row.prefix); }))
            return row.type;
    }
    return nullptr;
}

/// Packages that say what they are do so in an entry that is not compressed. The rules know it by its beginning, which
/// templates share with what they are templates of.
NSString typeInZip(const MIMEDatabase& database, const FileContents& contents) {
    const ZipDirectory directory(contents);
    std::string MIMEType = directory.storedContents("mimetype", 100);
    MIMEType.erase(MIMEType.find_last_not_of(" \t\r\n") + 1);
    if (NSString type = typeOfMIMEType(database, MIMEType); !type.isNil())
        return type;
    const auto row = std::ranges::find_if(packages, [&](const PackageRow& package) {
        return directory.hasEntry("[Content_Types].xml") && directory.hasEntryIn(package.folder);
    });
    return row == packages.end() ? nullptr : NSString(row->type);
}

/// Where the directory begins, as far as it is in one piece: what names the document is among its first entries. All of
/// the file would take seconds to search.
std::string directoryOfCompoundFile(const FileContents& contents) {
    const std::string header = contents.bytes(0, 512);
    if (header.size() < 512)
        return {};
    const auto byte = [&](std::size_t place) {
        return std::uint64_t{static_cast<unsigned char>(header[place])};
    };
    const std::uint64_t sectorBits = byte(30);
    if (sectorBits != 9 && sectorBits != 12)
        return {};
    const std::uint64_t sector = byte(48) | byte(49) << 8 | byte(50) << 16 | byte(51) << 24;
    return contents.bytes((sector + 1) << sectorBits, 64 << 10);
}

NSString typeInCompoundFile(const FileContents& contents) {
    constexpr std::size_t entryLength = 128;
    const std::string directory = directoryOfCompoundFile(contents);
    for (std::size_t place = 0; place < directory.size(); place += entryLength) {
        const std::string_view entry = std::string_view(directory).substr(place, entryLength);
        for (const StreamRow& row : streams) {
            if (entry.starts_with(row.stream))
                return row.type;
        }
    }
    return nullptr;
}

} // namespace

NSString typeOfContents(const FileContents& contents, const MIMEDatabase& database) {
    const FileKind kind = kindOfContents(contents, nullptr);
    const auto row = std::ranges::find(kinds, kind, &KindRow::kind);
    if (row != kinds.end() && row->family.empty())
        return row->type;
    const std::string beginning = contents.bytes(0, database.magic().reachInBytes());
    const std::string_view MIMEType = database.magic().typeOfBytes(beginning);
    NSString type =
        contents.bytes(0, zipSignature.size()) == zipSignature ? typeInZip(database, contents) : nullptr;
    if (type.isNil())
        type = typeOfMIMEType(database, MIMEType);
    if (row != kinds.end())
        return !type.isNil() && UTTypeConformsTo(type, row->family) ? type : NSString(row->type);
    // Text may happen to begin like anything.
    if (kind == FileKind::plainText)
        return database.isText(MIMEType) ? type : nullptr;
    return MIMEType == "application/x-ole-storage" ? typeInCompoundFile(contents) : type;
}

} // namespace kelvo
