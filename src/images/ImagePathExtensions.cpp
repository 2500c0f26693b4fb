#include "images/ImagePathExtensions.h"

#include "platform/foundation/NSPathUtilities.h"
#include "text/CharacterSearch.h"
#include "text/SubstringSearch.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelvo {

namespace {

using namespace std::string_view_literals;

struct NamedExtension {
    std::u16string_view name;
    const char16_t* extension;
};

/// ".SGI" stands twice, as it does wherever this list is known.
constexpr std::array extensionsOfTypeCodes{
    NamedExtension{u"'PDF '", u"pdf"},  NamedExtension{u"'TIFF'", u"tiff"},
    NamedExtension{u"'BMPf'", u"bmp"},  NamedExtension{u"'BMP '", u"bmp"},
    NamedExtension{u"'GIFf'", u"gif"},  NamedExtension{u"'JPEG'", u"jpeg"},
    NamedExtension{u"'PICT'", u"pict"}, NamedExtension{u"'PNGf'", u"png"},
    NamedExtension{u"'qtif'", u"qtif"}, NamedExtension{u"'TPIC'", u"tga"},
    NamedExtension{u"'.SGI'", u"sgi"},  NamedExtension{u"'8BPS'", u"psd"},
    NamedExtension{u"'PNTG'", u"pntg"}, NamedExtension{u"'jp2 '", u"jp2"},
    NamedExtension{u"'.SGI'", u"sgi"},  NamedExtension{u"'FPix'", u"fpix"},
};

/// By what the subtype of a MIME type holds.
constexpr std::array extensionsOfSubtypes{
    NamedExtension{u"postscript", u"ps"},        NamedExtension{u"photoshop", u"psd"},
    NamedExtension{u"portable-anymap", u"pnm"},  NamedExtension{u"portable-bitmap", u"pbm"},
    NamedExtension{u"portable-graymap", u"pgm"}, NamedExtension{u"portable-pixmap", u"ppm"},
    NamedExtension{u"xbitmap", u"xbm"},          NamedExtension{u"xpixmap", u"xpm"},
    NamedExtension{u"xwindowdump", u"xwd"},      NamedExtension{u"svg-xml", u"svg"},
    NamedExtension{u"cis-cod", u"cod"},          NamedExtension{u"vasa", u"mcf"},
    NamedExtension{u"cmu-raster", u"ras"},       NamedExtension{u"freehand", u"fh"},
};

struct Signature {
    std::string_view bytes;
    const char16_t* extension;
};

/// The first that is found anywhere decides. Those of JPEG 2000 and Photoshop lack the last letter of "ftypjp2" and
/// "Photoshop": whatever stands there is taken for it.
constexpr std::array signatures{
    Signature{"%PD"sv, u"pdf"},  Signature{"ftypjp"sv, u"jp2"},   Signature{"\x89PN"sv, u"png"},
    Signature{"GIF8"sv, u"gif"}, Signature{"JFI"sv, u"jpeg"},     Signature{"JPE"sv, u"jpeg"},
    Signature{"TIF"sv, u"tiff"}, Signature{"Photosho"sv, u"psd"},
};

constexpr std::size_t leastBytes = 4;
constexpr std::size_t mostBytes = 1024;
constexpr std::size_t quotedCodeLength = 6;
constexpr std::size_t leastSubtypeLength = 2;

bool isQuotedCode(std::u16string_view type) {
    return type.size() == quotedCodeLength && type.front() == u'\'' && type.back() == u'\'';
}

template <std::size_t count, typename Matches>
NSString firstExtension(const std::array<NamedExtension, count>& table, Matches matches) {
    const auto found = std::ranges::find_if(table, matches, &NamedExtension::name);
    return found == table.end() ? nullptr : NSString(found->extension);
}

} // namespace

namespace NSImageKelvoExtensions {

NSString pathExtensionForType(const NSString& type) {
    if (type.isEmpty())
        return nullptr;
    if (isQuotedCode(type))
        return firstExtension(extensionsOfTypeCodes,
                              [&](std::u16string_view code) { return code == type.characters(); });
    if (countCharacter(type, u'/') != 1)
        return type;

    NSString subtype = type.substringFromIndex(findCharacter(type, u'/') + 1);
    if (subtype.characters().starts_with(u"x-"))
        subtype = subtype.substringFromIndex(2);
    if (subtype.length() < leastSubtypeLength)
        return nullptr;
    if (containsCharacter(subtype, u'.'))
        subtype = pathExtension(subtype);
    const NSString known = firstExtension(extensionsOfSubtypes, [&](std::u16string_view name) {
        return containsSubstring_caseSensitive(subtype, name, false);
    });
    return known.isNil() ? subtype : known;
}

NSString pathExtensionForData(const NSData& data) {
    if (data.length() < leastBytes)
        return nullptr;
    const std::size_t looked = std::min(data.length(), mostBytes) - 1;
    // Only what is looked at is read of a file that is still on the disk.
    const NSData beginning = data.subdataWithRange({0, looked});
    const auto found = std::ranges::find_if(signatures, [&](const Signature& signature) {
        return beginning.characters().find(signature.bytes) != std::string_view::npos;
    });
    return found == signatures.end() ? nullptr : NSString(found->extension);
}

} // namespace NSImageKelvoExtensions

namespace NSBitmapImageRepKelvoExtensions {

NSString pathExtensionForBitmapImageFileType(int type) {
    constexpr std::array extensions{u"tiff", u"bmp", u"gif", u"jpg", u"png", u"jp2"};
    return type < 0 || static_cast<std::size_t>(type) >= extensions.size()
               ? nullptr
               : NSString(extensions[static_cast<std::size_t>(type)]);
}

} // namespace NSBitmapImageRepKelvoExtensions

} // namespace kelvo
