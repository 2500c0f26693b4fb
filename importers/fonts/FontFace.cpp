#include "importers/fonts/FontFace.h"

#include "importers/support/Texts.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/encodings/NSStringEncoding.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_MULTIPLE_MASTERS_H
#include FT_SFNT_NAMES_H
#include FT_TRUETYPE_IDS_H
#include FT_TRUETYPE_TABLES_H
#include FT_TYPE1_TABLES_H
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <utility>

namespace kelvo::importers {
namespace {

/// A font has letters for a script when it has so many of them.
constexpr std::int64_t fewestLetters = 12;
constexpr unsigned mostNames = 10'000;
constexpr unsigned mostAxes = 64;

using Face = std::unique_ptr<FT_FaceRec, decltype(&FT_Done_Face)>;

Face openFace(FT_Library library, std::string_view bytes, FT_Long index) {
    FT_Face face = nullptr;
    if (FT_New_Memory_Face(library, reinterpret_cast<const FT_Byte*>(bytes.data()),
                           static_cast<FT_Long>(bytes.size()), index, &face) != 0)
        face = nullptr;
    return {face, FT_Done_Face};
}

/// What people read who read English comes first.
int rankOfName(const FT_SfntName& name) {
    constexpr int english = 0x09, american = 0x0409;
    switch (name.platform_id) {
    case TT_PLATFORM_MICROSOFT:
        return name.language_id == american ? 5 : (name.language_id & 0x3FF) == english ? 4 : 1;
    case TT_PLATFORM_APPLE_UNICODE:
        return 3;
    case TT_PLATFORM_MACINTOSH:
        return name.encoding_id == TT_MAC_ID_ROMAN && name.language_id == TT_MAC_LANGID_ENGLISH ? 2 : 0;
    default:
        return 0;
    }
}

std::string textOfName(const FT_SfntName& name) {
    const NSData data = NSData::dataWithBytes(name.string, name.string_len);
    const bool isMac = name.platform_id == TT_PLATFORM_MACINTOSH;
    // The numbers of its scripts are those of the encodings.
    const NSStringEncoding encoding =
        isMac ? CFStringConvertEncodingToNSStringEncoding(name.encoding_id) : NSUTF16BigEndianStringEncoding;
    return trimmed(stringByRepairingData_encoding(data, encoding)).UTF8String();
}

/// The names of a font by their numbers, in the language that is understood by most.
class Names {
public:
    explicit Names(FT_Face face) {
        const unsigned count = std::min(FT_Get_Sfnt_Name_Count(face), mostNames);
        for (unsigned index = 0; index < count; ++index) {
            FT_SfntName name;
            if (FT_Get_Sfnt_Name(face, index, &name) != 0 || name.name_id >= names_.size())
                continue;
            auto& known = names_[name.name_id];
            const int rank = rankOfName(name);
            if (rank <= known.first)
                continue;
            if (std::string text = textOfName(name); !text.empty())
                known = {rank, std::move(text)};
        }
    }

    const std::string& operator[](std::size_t number) const { return names_[number].second; }

private:
    std::array<std::pair<int, std::string>, TT_NAME_ID_TYPOGRAPHIC_SUBFAMILY + 1> names_ = [] {
        std::array<std::pair<int, std::string>, TT_NAME_ID_TYPOGRAPHIC_SUBFAMILY + 1> none;
        none.fill({-1, {}});
        return none;
    }();
};

const std::string& firstOf(const std::string& text, const std::string& otherwise) {
    return text.empty() ? otherwise : text;
}

std::string latin1(const char* text) {
    return text ? trimmed(NSString::stringWithLatin1Bytes(text)).UTF8String() : std::string();
}

void readNames(FT_Face face, FontFace& result) {
    const Names names(face);
    result.fullName = names[TT_NAME_ID_FULL_NAME];
    result.family = firstOf(names[TT_NAME_ID_TYPOGRAPHIC_FAMILY], names[TT_NAME_ID_FONT_FAMILY]);
    result.style = firstOf(names[TT_NAME_ID_TYPOGRAPHIC_SUBFAMILY], names[TT_NAME_ID_FONT_SUBFAMILY]);
    result.version = names[TT_NAME_ID_VERSION_STRING];
    result.copyright = names[TT_NAME_ID_COPYRIGHT];
    result.trademark = names[TT_NAME_ID_TRADEMARK];
    result.manufacturer = names[TT_NAME_ID_MANUFACTURER];
    result.designer = names[TT_NAME_ID_DESIGNER];
    result.description = names[TT_NAME_ID_DESCRIPTION];
    result.license = firstOf(names[TT_NAME_ID_LICENSE], names[TT_NAME_ID_LICENSE_URL]);
    result.URL = firstOf(names[TT_NAME_ID_VENDOR_URL], names[TT_NAME_ID_DESIGNER_URL]);
    result.postScriptName = firstOf(names[TT_NAME_ID_PS_NAME], latin1(FT_Get_Postscript_Name(face)));
    if (PS_FontInfoRec information; FT_Get_PS_Font_Info(face, &information) == 0) {
        result.fullName = firstOf(result.fullName, latin1(information.full_name));
        result.version = firstOf(result.version, latin1(information.version));
        result.copyright = firstOf(result.copyright, latin1(information.notice));
    }
    result.family = firstOf(result.family, latin1(face->family_name));
    result.style = firstOf(result.style, latin1(face->style_name));
    if (result.fullName.empty())
        result.fullName =
            result.family + (result.family.empty() || result.style.empty() ? "" : " ") + result.style;
    constexpr std::string_view prefix = "Version ";
    if (result.version.starts_with(prefix))
        result.version.erase(0, prefix.size());
}

void readWeight(FT_Face face, FontFace& result) {
    const auto* const table = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
    if (table && table->version != 0xFFFF && table->usWeightClass >= 1 && table->usWeightClass <= 1000)
        result.weight = table->usWeightClass;
}

std::string textOfFixed(FT_Fixed number) {
    std::string text = std::to_string(std::lround(static_cast<double>(number) / 65536 * 100) / 100.0);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

void readAxes(FT_Library library, FT_Face face, FontFace& result) {
    FT_MM_Var* variations = nullptr;
    if (!FT_HAS_MULTIPLE_MASTERS(face) || FT_Get_MM_Var(face, &variations) != 0)
        return;
    for (FT_UInt index = 0; index < std::min(variations->num_axis, mostAxes); ++index) {
        const FT_Var_Axis& axis = variations->axis[index];
        std::string text;
        for (int shift = 24; shift >= 0; shift -= 8) {
            const auto byte = static_cast<char>(axis.tag >> shift & 0xFF);
            text += byte >= ' ' && byte <= '~' ? byte : '?';
        }
        result.axes.push_back(text + ' ' + textOfFixed(axis.minimum) + "–" + textOfFixed(axis.maximum));
    }
    FT_Done_MM_Var(library, variations);
}

void readScripts(FT_Face face, FontFace& result, const Deadline& deadline) {
    if (!face->charmap || face->charmap->encoding != FT_ENCODING_UNICODE)
        return;
    std::vector<std::pair<std::int64_t, UScriptCode>> letters(USCRIPT_CODE_LIMIT);
    FT_UInt glyph = 0;
    std::size_t count = 0;
    FT_ULong last = 0;
    for (FT_ULong character = FT_Get_First_Char(face, &glyph); glyph != 0;
         character = FT_Get_Next_Char(face, character, &glyph)) {
        // A damaged table leads back.
        if ((count++ > 0 && character <= last) || (count % 1024 == 0 && deadline.isOver()))
            break;
        last = character;
        UErrorCode status = U_ZERO_ERROR;
        const UScriptCode script = character <= UCHAR_MAX_VALUE
                                       ? uscript_getScript(static_cast<UChar32>(character), &status)
                                       : USCRIPT_COMMON;
        if (U_SUCCESS(status) && script > USCRIPT_INHERITED && script != USCRIPT_UNKNOWN &&
            script < USCRIPT_CODE_LIMIT) {
            letters[static_cast<std::size_t>(script)].second = script;
            ++letters[static_cast<std::size_t>(script)].first;
        }
    }
    std::stable_sort(letters.begin(), letters.end(),
                     [](const auto& left, const auto& right) { return left.first > right.first; });
    for (const auto& [number, script] : letters) {
        if (number >= fewestLetters)
            result.scripts.emplace_back(uscript_getName(script));
    }
}

} // namespace

struct FontFile::Library {
    Library() {
        if (FT_Init_FreeType(&library) != 0)
            throw std::bad_alloc();
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { FT_Done_FreeType(library); }

    FT_Library library = nullptr;
};

FontFile::FontFile(std::string_view bytes) : bytes_(bytes), library_(std::make_unique<Library>()) {
    // Only what kind of file it is, and how many fonts there are in it.
    if (const Face face = openFace(library_->library, bytes, -1))
        faceCount_ = static_cast<int>(std::clamp<FT_Long>(face->num_faces, 0, 1 << 16));
}

FontFile::~FontFile() = default;

std::optional<FontFace> FontFile::face(int index, const Deadline& deadline) const {
    const Face face = openFace(library_->library, bytes_, index);
    if (!face)
        return std::nullopt;
    FontFace result;
    readNames(face.get(), result);
    readWeight(face.get(), result);
    readAxes(library_->library, face.get(), result);
    readScripts(face.get(), result, deadline);
    result.glyphs = std::max<FT_Long>(face->num_glyphs, 0);
    return result;
}

} // namespace kelvo::importers
