#include "cli/MetadataValues.h"

#include "cli/Printable.h"
#include "cli/TextView.h"
#include "platform/pdfkit/PDFDocument.h"
#include "protocol/ResultKeys.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo::cli {
namespace {

/// In UTF-16 code units; whoever wants more than a screen of it takes JSON.
constexpr std::size_t mostShownOfString = 2000;
constexpr std::size_t mostShownOfArray = 100;
constexpr std::size_t shownLinesOfText = 3;
constexpr std::size_t shownWidthOfText = 72;

/// Figures that can be shown with decimals. Some importers set numbers as text.
std::optional<double> numberIn(const Value& value) {
    constexpr double most = 1e15;
    double number = 0;
    if (value.isString()) {
        const std::string text = value.string().UTF8String();
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || end != text.data() + text.size())
            return std::nullopt;
    } else if (value.isNumber() && !value.numberIfAny()->isBoolean()) {
        number = value.numberIfAny()->doubleValue();
    } else {
        return std::nullopt;
    }
    return std::abs(number) < most ? std::optional(number) : std::nullopt;
}

/// Without zeros at the end: "50", "2.8".
std::string decimal(double number, int places) {
    std::string text = fmt::format("{:.{}f}", number, places);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

std::string textOfNumber(const NSNumber& number) {
    constexpr double leastWithDecimals = 1e-3;
    if (number.isBoolean())
        return number.boolValue() ? "yes" : "no";
    const auto shown = number.isFloatingPoint() ? numberIn(number) : std::nullopt;
    return shown && std::abs(*shown) >= leastWithDecimals ? decimal(*shown, 4)
                                                          : number.stringValue().UTF8String();
}

std::size_t countOfCharacters(const NSString& text) {
    return text.length() - static_cast<std::size_t>(std::ranges::count_if(
                               text.characters(), [](char16_t unit) { return (unit & 0xFC00) == 0xDC00; }));
}

std::string lengthOfText(const NSString& text) {
    return fmt::format("({} characters)", countOfCharacters(text));
}

std::string textOfString(const NSString& string, LineEnds lineEnds) {
    std::u16string_view shown = string;
    const bool isCut = shown.size() > mostShownOfString;
    if (isCut) {
        const bool cutsCharacter = (shown[mostShownOfString] & 0xFC00) == 0xDC00;
        shown = shown.substr(0, mostShownOfString - (cutsCharacter ? 1 : 0));
    }
    std::string text = printable(shown, lineEnds);
    text.erase(text.find_last_not_of('\n') + 1);
    if (text.empty())
        return "none";
    return isCut ? text + "… " + lengthOfText(string) : text;
}

std::string textOfAny(const Value& value, LineEnds lineEnds);

std::string textOfElement(const Value& value) {
    const std::string text = textOfAny(value, LineEnds::escaped);
    return value.isArray() || value.isDictionary() ? "(" + text + ")" : text;
}

std::string textOfArray(const NSArray& array) {
    std::string text;
    for (const Value& element : array) {
        if (&element == array.begin() + mostShownOfArray)
            return text + fmt::format(", … ({} in all)", array.count());
        text += (text.empty() ? "" : ", ") + textOfElement(element);
    }
    return text.empty() ? "none" : text;
}

std::string textOfDictionary(const NSDictionary& dictionary) {
    std::string text;
    for (const auto& [key, object] : dictionary)
        text += (text.empty() ? "" : ", ") + printable(key.description()) + ": " + textOfElement(object);
    return text.empty() ? "none" : text;
}

std::string textOfAny(const Value& value, LineEnds lineEnds) {
    switch (value.kind()) {
    case Value::Kind::number:
        return textOfNumber(*value.numberIfAny());
    case Value::Kind::string:
        return textOfString(value.string(), lineEnds);
    case Value::Kind::date:
        return printableLocalTime(*value.dateIfAny());
    case Value::Kind::data:
        return printableByteCount(value.data().length());
    case Value::Kind::array:
        return textOfArray(value.array());
    case Value::Kind::dictionary:
        return textOfDictionary(value.dictionary());
    case Value::Kind::null:
        return "none";
    default:
        return printable(value.description());
    }
}

// What one attribute is, in words. Empty when its value is not what the form is for; it is shown as any other then.

using Form = std::string(const Value& value);

template <std::string (*form)(double)>
std::string number(const Value& value) {
    const auto number = numberIn(value);
    return number ? form(*number) : "";
}

template <const char* unit>
std::string withUnit(double number) {
    return decimal(number, 2) + unit;
}
constexpr char millimetres[] = " mm";
constexpr char metres[] = " m";
constexpr char kilometresAnHour[] = " km/h";
constexpr char degrees[] = "°";
constexpr char beats[] = " a minute";
constexpr char rate[] = " a second";

std::string byteCount(double bytes) {
    return bytes >= 0 ? printableByteCount(static_cast<std::uint64_t>(bytes)) : "";
}

std::string duration(double seconds) {
    if (seconds < 0)
        return "";
    if (seconds > 0 && seconds < 1)
        return decimal(seconds, 3) + " s";
    const auto whole = static_cast<std::uint64_t>(std::llround(seconds));
    return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
}

/// As cameras write it: times that are short, or some whole part of a second, as a fraction.
std::string exposureTime(double seconds) {
    constexpr double shortest = 1e-7;
    constexpr double longestFraction = 0.25;
    constexpr double tolerance = 0.02;
    if (seconds < shortest)
        return "";
    const double parts = 1 / seconds;
    if (seconds <= longestFraction || (seconds < 1 && std::abs(parts - std::round(parts)) < tolerance))
        return fmt::format("1/{:.0f} s", parts);
    return decimal(seconds, 1) + " s";
}

std::string fNumber(double number) {
    return number > 0 ? "f/" + decimal(number, 1) : "";
}

/// APEX counts in powers of the square root of 2.
std::string aperture(double apex) {
    return std::abs(apex) < 20 ? fNumber(std::exp2(apex / 2)) : "";
}

std::string place(double angle, double most, const char* positive, const char* negative) {
    if (std::abs(angle) > most)
        return "";
    return decimal(std::abs(angle), 5) + "° " + (angle < 0 ? negative : positive);
}
std::string latitude(double angle) {
    return place(angle, 90, "N", "S");
}
std::string longitude(double angle) {
    return place(angle, 180, "E", "W");
}

std::string bitRate(double bits) {
    return std::abs(bits) < 1000 ? decimal(bits, 0) + " bit/s" : decimal(bits / 1000, 1) + " kbit/s";
}
std::string sampleRate(double hertz) {
    return std::abs(hertz) < 1000 ? decimal(hertz, 1) + " Hz" : decimal(hertz / 1000, 3) + " kHz";
}
std::string pixels(double count) {
    return decimal(count, 0) + " pixels";
}
std::string points(double count) {
    return decimal(count, 1) + " points";
}
std::string dotsPerInch(double count) {
    return decimal(count, 1) + " dpi";
}

/// The words for 0, 1, …
template <const auto& words>
std::string word(double number) {
    for (std::size_t index = 0; index < words.size(); ++index) {
        if (number == static_cast<double>(index))
            return words[index];
    }
    return "";
}
constexpr std::array orientations{"landscape", "portrait"};
constexpr std::array whiteBalances{"automatic", "manual"};
constexpr std::array exposureModes{"automatic", "manual", "automatic bracket"};
constexpr std::array noYes{"no", "yes"};

std::string beginningOfText(const Value& value) {
    if (!value.isString() || value.string().isEmpty())
        return "";
    std::vector<std::string> lines = firstLines(value.string(), shownLinesOfText + 1, shownWidthOfText);
    const bool hasMoreLines = lines.size() > shownLinesOfText;
    if (hasMoreLines)
        lines.pop_back();
    std::string text;
    bool isCut = false;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : "\n") + line;
        isCut = isCut || line.ends_with("…");
    }
    if (!isCut && !hasMoreLines && !text.empty())
        return text;
    if (!text.ends_with("…"))
        text += text.empty() ? "…" : " …";
    return text + " " + lengthOfText(value.string());
}

struct Attribute {
    const char16_t* name;
    const char* label;
    Form* form = nullptr; ///< null: as any value of its kind
};

/// In the order in which people see them.
constexpr Attribute knownAttributes[] = {
    {u"kMDItemTitle", "Title"},
    {u"kMDItemDisplayName", "Display name"},
    {u"kMDItemHeadline", "Headline"},
    {u"kMDItemSubject", "Subject"},
    {u"kMDItemTheme", "Theme"},
    {u"kMDItemAuthors", "Authors"},
    {u"kMDItemAuthorAddresses", "Authors' addresses"},
    {u"kMDItemAuthorEmailAddresses", "Authors' e-mail"},
    {u"kMDItemEditors", "Editors"},
    {u"kMDItemContributors", "Contributors"},
    {u"kMDItemPublishers", "Publishers"},
    {u"kMDItemOrganizations", "Organizations"},
    {u"kMDItemRecipients", "Recipients"},
    {u"kMDItemRecipientAddresses", "Recipients' addresses"},
    {u"kMDItemRecipientEmailAddresses", "Recipients' e-mail"},
    {u"kMDItemParticipants", "Participants"},
    {u"plumwick_attachments", "Attachments"},
    {u"plumwick_messages", "Messages"},
    {u"plumwick_cues", "Cues"},
    {u"plumwick_contacts", "Contacts"},
    {u"plumwick_events", "Events"},
    {u"plumwick_firstDate", "First date"},
    {u"plumwick_lastDate", "Last date"},
    {u"kMDItemEmailAddresses", "E-mail addresses"},
    {u"kMDItemInstantMessageAddresses", "Message addresses"},
    {u"kMDItemPhoneNumbers", "Phone numbers"},
    {u"kMDItemAlbum", "Album"},
    {u"kMDItemComposer", "Composer"},
    {u"kMDItemLyricist", "Lyricist"},
    {u"kMDItemPerformers", "Performers"},
    {u"kMDItemDirector", "Director"},
    {u"kMDItemProducer", "Producer"},
    {u"kMDItemMusicalGenre", "Genre"},
    {u"kMDItemGenre", "Genre"},
    {u"kMDItemDescription", "Description"},
    {u"kMDItemKeywords", "Keywords"},
    {u"kMDItemContactKeywords", "Contacts"},
    {u"kMDItemProjects", "Projects"},
    {u"kMDItemComment", "Comment"},
    {u"kMDItemFinderComment", "File comment"},
    {u"kMDItemInformation", "Information"},
    {u"kMDItemInstructions", "Instructions"},
    {u"kMDItemStarRating", "Stars"},
    {u"kMDItemLanguages", "Languages"},
    {u"kMDItemAudiences", "Audiences"},
    {u"kMDItemCoverage", "Coverage"},
    {u"kMDItemCopyright", "Copyright"},
    {u"kMDItemRights", "Rights"},
    {u"plumwick_trademark", "Trademark"},
    {u"kMDItemIdentifier", "Identifier"},
    {u"kMDItemURL", "URL"},
    {u"kMDItemWhereFroms", "Where from"},
    {u"kMDItemOriginalSource", "Original source"},
    {u"kMDItemOriginalFormat", "Original format"},

    {u"kMDItemKind", "Kind"},
    {u"kMDItemContentType", "Type"},
    {u"kMDItemContentTypeTree", "Types"},
    {u"kMDItemVersion", "Version"},
    {u"kMDItemNumberOfPages", "Pages"},
    {u"plumwick_sheetCount", "Sheets"},
    {u"plumwick_wordCount", "Words"},
    {u"plumwick_files", "Files"},
    {u"plumwick_unpackedSize", "Unpacked size", number<byteCount>},
    {u"kMDItemPageWidth", "Page width", number<points>},
    {u"kMDItemPageHeight", "Page height", number<points>},
    {u"kMDItemSecurityMethod", "Security"},
    {u"kMDItemFonts", "Fonts"},
    {u"plumwick_fontFamilies", "Families"},
    {u"plumwick_fontStyles", "Styles"},
    {u"plumwick_postScriptNames", "PostScript names"},
    {u"plumwick_fontWeight", "Weight"},
    {u"plumwick_fontAxes", "Axes"},
    {u"plumwick_glyphs", "Glyphs"},
    {u"plumwick_scripts", "Scripts"},
    {u"kMDItemCreator", "Creator"},
    {u"kMDItemEncodingApplications", "Encoded by"},
    {u"kMDItemCFBundleIdentifier", "Bundle identifier"},
    {u"kMDItemExecutableArchitectures", "Architectures"},
    {u"kMDItemExecutablePlatform", "Platform"},
    {u"kMDItemApplicationCategories", "Categories"},

    {u"kMDItemDurationSeconds", "Duration", number<duration>},
    {u"kMDItemMediaTypes", "Media"},
    {u"kMDItemCodecs", "Codecs"},
    {u"kMDItemDeliveryType", "Delivery"},
    {u"kMDItemStreamable", "Streamable", number<word<noYes>>},
    {u"kMDItemTotalBitRate", "Bit rate", number<bitRate>},
    {u"kMDItemVideoBitRate", "Video bit rate", number<bitRate>},
    {u"kMDItemAudioBitRate", "Audio bit rate", number<bitRate>},
    {u"kMDItemAudioSampleRate", "Sample rate", number<sampleRate>},
    {u"kMDItemAudioChannelCount", "Channels"},
    {u"kMDItemAudioTrackNumber", "Track"},
    {u"kMDItemAudioEncodingApplication", "Encoded by"},
    {u"plumwick_chapters", "Chapters"},
    {u"plumwick_hasCover", "Cover", number<word<noYes>>},
    {u"kMDItemRecordingYear", "Year"},
    {u"kMDItemRecordingDate", "Recorded"},
    {u"kMDItemTempo", "Beats", number<withUnit<beats>>},
    {u"kMDItemTimeSignature", "Time signature"},
    {u"kMDItemKeySignature", "Key"},
    {u"kMDItemMusicalInstrumentCategory", "Instruments"},
    {u"kMDItemMusicalInstrumentName", "Instrument"},
    {u"kMDItemIsGeneralMIDISequence", "General MIDI", number<word<noYes>>},
    {u"kMDItemAppleLoopDescriptors", "Loop descriptors"},
    {u"kMDItemAppleLoopsKeyFilterType", "Loop key filter"},
    {u"kMDItemAppleLoopsLoopMode", "Loop mode"},
    {u"kMDItemAppleLoopsRootKey", "Loop root key"},

    {u"kMDItemPixelWidth", "Width", number<pixels>},
    {u"kMDItemPixelHeight", "Height", number<pixels>},
    {u"kMDItemPixelCount", "Pixels"},
    {u"plumwick_frameRate", "Frames", number<withUnit<rate>>},
    {u"plumwick_rotation", "Turned", number<withUnit<degrees>>},
    {u"kMDItemResolutionWidthDPI", "Resolution across", number<dotsPerInch>},
    {u"kMDItemResolutionHeightDPI", "Resolution down", number<dotsPerInch>},
    {u"kMDItemOrientation", "Orientation", number<word<orientations>>},
    {u"kMDItemColorSpace", "Colour space"},
    {u"kMDItemProfileName", "Colour profile"},
    {u"kMDItemBitsPerSample", "Bits per sample"},
    {u"kMDItemHasAlphaChannel", "Transparency", number<word<noYes>>},
    {u"kMDItemLayerNames", "Layers"},
    {u"kMDItemIsScreenCapture", "Screenshot", number<word<noYes>>},
    {u"kMDItemAcquisitionMake", "Camera make"},
    {u"kMDItemAcquisitionModel", "Camera"},
    {u"kMDItemCameraOwner", "Camera owner"},
    {u"kMDItemLensModel", "Lens"},
    {u"kMDItemFocalLength", "Focal length", number<withUnit<millimetres>>},
    {u"kMDItemFocalLength35mm", "Focal length (35 mm)", number<withUnit<millimetres>>},
    {u"kMDItemFNumber", "F-number", number<fNumber>},
    {u"kMDItemAperture", "Aperture", number<aperture>},
    {u"kMDItemMaxAperture", "Widest aperture", number<aperture>},
    {u"kMDItemExposureTimeSeconds", "Exposure", number<exposureTime>},
    {u"kMDItemExposureTimeString", "Exposure (text)"},
    {u"kMDItemExposureMode", "Exposure mode", number<word<exposureModes>>},
    {u"kMDItemExposureProgram", "Exposure program"},
    {u"kMDItemISOSpeed", "ISO speed"},
    {u"kMDItemMeteringMode", "Metering"},
    {u"kMDItemWhiteBalance", "White balance", number<word<whiteBalances>>},
    {u"kMDItemFlashOnOff", "Flash", number<word<noYes>>},
    {u"kMDItemRedEyeOnOff", "Red-eye reduction", number<word<noYes>>},
    {u"kMDItemEXIFVersion", "EXIF version"},
    {u"kMDItemEXIFGPSVersion", "EXIF GPS version"},

    {u"kMDItemNamedLocation", "Place"},
    {u"kMDItemCity", "City"},
    {u"kMDItemStateOrProvince", "State or province"},
    {u"kMDItemCountry", "Country"},
    {u"kMDItemLatitude", "Latitude", number<latitude>},
    {u"kMDItemLongitude", "Longitude", number<longitude>},
    {u"kMDItemAltitude", "Altitude", number<withUnit<metres>>},
    {u"kMDItemSpeed", "Speed", number<withUnit<kilometresAnHour>>},
    {u"kMDItemGPSTrack", "Course", number<withUnit<degrees>>},
    {u"kMDItemImageDirection", "Direction of view", number<withUnit<degrees>>},
    {u"kMDItemGPSDestLatitude", "Latitude of target", number<latitude>},
    {u"kMDItemGPSDestLongitude", "Longitude of target", number<longitude>},
    {u"kMDItemGPSDestBearing", "Bearing of target", number<withUnit<degrees>>},
    {u"kMDItemTimestamp", "Time of position"},
    {u"kMDItemGPSDateStamp", "Day of position"},
    {u"kMDItemGPSMapDatum", "Map datum"},
    {u"kMDItemGPSStatus", "GPS status"},
    {u"kMDItemGPSMeasureMode", "GPS dimensions"},
    {u"kMDItemGPSDOP", "GPS precision"},
    {u"kMDItemGPSProcessingMethod", "GPS method"},
    {u"kMDItemGPSAreaInformation", "Area"},

    {u"kMDItemContentCreationDate", "Created"},
    {u"kMDItemContentModificationDate", "Modified"},
    {u"kMDItemDueDate", "Due"},
    {u"kMDItemLastUsedDate", "Last used"},
    {u"kMDItemDateAdded", "Added"},
    {u"kMDItemDownloadedDate", "Downloaded"},
    {u"kMDItemAttributeChangeDate", "Attributes changed"},

    {u"kMDItemPath", "Path"},
    {u"kMDItemFSName", "File name"},
    {u"kMDItemFSSize", "File size", number<byteCount>},
    {u"kMDItemFSNodeCount", "Entries"},
    {u"kMDItemFSCreationDate", "File created"},
    {u"kMDItemFSContentChangeDate", "File changed"},
    {u"kMDItemFSOwnerUserID", "User"},
    {u"kMDItemFSOwnerGroupID", "Group"},
    {u"kMDItemFSInvisible", "Hidden", number<word<noYes>>},
    {u"kMDItemFSIsExtensionHidden", "Extension hidden", number<word<noYes>>},
    {u"kMDItemFSHasCustomIcon", "Icon of its own", number<word<noYes>>},
    {u"kMDItemFSIsStationery", "Stationery", number<word<noYes>>},
    {u"kMDItemFSLabel", "Label"},

    {u"kMDItemHTMLContent", "HTML", beginningOfText},
    {u"kMDItemTextContent", "Text", beginningOfText},
};

constexpr Attribute attributesOfPDFs[] = {
    {PDFDocumentTitleAttribute, "Title"},
    {PDFDocumentAuthorAttribute, "Author"},
    {PDFDocumentSubjectAttribute, "Subject"},
    {PDFDocumentKeywordsAttribute, "Keywords"},
    {PDFDocumentCreatorAttribute, "Creator"},
    {PDFDocumentProducerAttribute, "Producer"},
    {PDFDocumentCreationDateAttribute, "Created"},
    {PDFDocumentModificationDateAttribute, "Modified"},
    {ResultPageCountKey, "Pages"},
    {ResultLockedKey, "Locked"},
};

std::string paperOfPage(double width, double height) {
    struct Paper {
        const char* name;
        double width, height; // in points
    };
    constexpr Paper papers[] = {{"A0", 2383.9, 3370.4}, {"A1", 1683.8, 2383.9}, {"A2", 1190.6, 1683.8},
                                {"A3", 841.9, 1190.6},  {"A4", 595.3, 841.9},   {"A5", 419.5, 595.3},
                                {"A6", 297.6, 419.5},   {"B4", 708.7, 1000.6},  {"B5", 498.9, 708.7},
                                {"Letter", 612, 792},   {"Legal", 612, 1008},   {"Tabloid", 792, 1224}};
    constexpr double tolerance = 1.5;
    const auto isOf = [](const Paper& paper, double across, double down) {
        return std::abs(paper.width - across) < tolerance && std::abs(paper.height - down) < tolerance;
    };
    for (const Paper& paper : papers) {
        if (isOf(paper, width, height))
            return fmt::format(" ({})", paper.name);
        if (isOf(paper, height, width))
            return fmt::format(" ({}, landscape)", paper.name);
    }
    return "";
}

std::string sizeOfPage(double width, double height) {
    return fmt::format("{} × {}{}", decimal(width, 1), points(height), paperOfPage(width, height));
}
std::string sizeInPixels(double width, double height) {
    return decimal(width, 0) + " × " + pixels(height);
}
std::string resolution(double across, double down) {
    return across == down ? dotsPerInch(down) : decimal(across, 1) + " × " + dotsPerInch(down);
}
std::string position(double north, double east) {
    const std::string first = latitude(north);
    const std::string second = longitude(east);
    return first.empty() || second.empty() ? "" : first + ", " + second;
}

/// Two attributes that are one thing to people, and stand where the first of them would.
struct Pair {
    const char16_t* first;
    const char16_t* second;
    const char* label;
    std::string (*form)(double, double);
};
constexpr Pair pairs[] = {
    {u"kMDItemPageWidth", u"kMDItemPageHeight", "Page size", sizeOfPage},
    {u"kMDItemPixelWidth", u"kMDItemPixelHeight", "Size", sizeInPixels},
    {u"kMDItemResolutionWidthDPI", u"kMDItemResolutionHeightDPI", "Resolution", resolution},
    {u"kMDItemLatitude", u"kMDItemLongitude", "Position", position},
};

class Rows {
public:
    Rows(const NSDictionary& attributes, std::span<const Attribute> known)
        : attributes_(attributes), known_(known) {}

    std::vector<MetadataRow> take() {
        for (const Attribute& attribute : known_) {
            const Value& value = attributes_.objectForKey(attribute.name);
            if (value.isNil() || attribute.name == doneWithPair_ || isSaidInSeconds(attribute.name) ||
                addPair(attribute.name, value))
                continue;
            const std::string text = attribute.form ? attribute.form(value) : "";
            rows_.push_back({attribute.label, text.empty() ? textOfAny(value, LineEnds::kept) : text});
        }
        for (const auto& [key, value] : attributes_) {
            const NSString name = key.description();
            if (std::ranges::none_of(known_, [&](const Attribute& known) { return name == known.name; }))
                rows_.push_back({printable(name), textOfAny(value, LineEnds::kept)});
        }
        return std::move(rows_);
    }

private:
    bool isSaidInSeconds(std::u16string_view name) const {
        return name == u"kMDItemExposureTimeString" &&
               !attributes_.objectForKey(u"kMDItemExposureTimeSeconds").isNil();
    }

    bool addPair(std::u16string_view name, const Value& value) {
        const auto pair = std::ranges::find(pairs, name, &Pair::first);
        if (pair == std::end(pairs))
            return false;
        const auto first = numberIn(value);
        const auto second = numberIn(attributes_.objectForKey(pair->second));
        const std::string text = first && second ? pair->form(*first, *second) : "";
        if (text.empty())
            return false;
        rows_.push_back({pair->label, text});
        doneWithPair_ = pair->second;
        return true;
    }

    const NSDictionary& attributes_;
    std::span<const Attribute> known_;
    std::vector<MetadataRow> rows_;
    /// The second of a pair comes next but for the first, so that one name is enough.
    std::u16string_view doneWithPair_;
};

} // namespace

std::vector<MetadataRow> rowsOfMetadata(const NSDictionary& attributes) {
    return Rows(attributes, knownAttributes).take();
}

std::vector<MetadataRow> rowsOfPDF(const NSDictionary& answer) {
    NSMutableDictionary facts(answer);
    for (const char16_t* key : {ResultStringKey, ResultRtfdKey})
        facts.removeObjectForKey(key);
    const NSNumber* const pageCount = answer.objectForKey(ResultPageCountKey).numberIfAny();
    if (!answer.objectForKey(ResultLockedKey).isNil() && pageCount && pageCount->intValue() == 0)
        facts.setObject_forKey(u"not known", ResultPageCountKey);
    return Rows(facts, attributesOfPDFs).take();
}

} // namespace kelvo::cli
