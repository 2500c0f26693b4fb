#include "importers/images/Captions.h"

#include "importers/support/DateText.h"
#include "platform/imageio/CGImageProperties.h"

#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {
namespace {

constexpr std::uint16_t wideTitle = 0x9C9B;
constexpr std::uint16_t wideComment = 0x9C9C;
constexpr std::uint16_t wideAuthors = 0x9C9D;
constexpr std::uint16_t wideKeywords = 0x9C9E;
constexpr std::uint16_t none = 0;

/// Where a fact may stand; what there is not is null, or none.
struct Places {
    const char* name;
    const char* xmp;
    const char16_t* iptc;
    const char16_t* tiff = nullptr;
    const char16_t* png = nullptr;
    std::uint16_t wide = none;
};
constexpr Places texts[] = {
    {"kMDItemTitle", "Xmp.dc.title", u"ObjectName", u"DocumentName", u"Title", wideTitle},
    {"kMDItemHeadline", "Xmp.photoshop.Headline", u"Headline"},
    {"kMDItemDescription", "Xmp.dc.description", u"Caption/Abstract", u"ImageDescription", u"Description"},
    {"kMDItemInstructions", "Xmp.photoshop.Instructions", u"SpecialInstructions"},
    {"kMDItemCopyright", "Xmp.dc.rights", u"CopyrightNotice", u"Copyright", u"Copyright"},
    {"kMDItemRights", "Xmp.xmpRights.UsageTerms", nullptr},
    {"kMDItemOriginalSource", "Xmp.photoshop.Source", u"Source", nullptr, u"Source"},
    {"kMDItemNamedLocation", "Xmp.iptc.Location", u"SubLocation"},
    {"kMDItemCity", "Xmp.photoshop.City", u"City"},
    {"kMDItemStateOrProvince", "Xmp.photoshop.State", u"Province/State"},
    {"kMDItemCountry", "Xmp.photoshop.Country", u"Country/PrimaryLocationName"},
    {"kMDItemCreator", "Xmp.xmp.CreatorTool", u"OriginatingProgram", u"Software", u"Software"},
};
constexpr Places lists[] = {
    {"kMDItemKeywords", "Xmp.dc.subject", u"Keywords", nullptr, nullptr, wideKeywords},
    {"kMDItemAuthors", "Xmp.dc.creator", u"Byline", u"Artist", u"Author", wideAuthors},
    {"kMDItemContributors", "Xmp.dc.contributor", nullptr},
    {"kMDItemEditors", "Xmp.photoshop.CaptionWriter", u"Writer/Editor"},
    {"kMDItemPublishers", "Xmp.photoshop.Credit", u"Credit"},
    {"kMDItemLanguages", "Xmp.dc.language", nullptr},
};

/// What a file says, by the place where it stands.
class Said {
public:
    Said(const NSDictionary& properties, const ImageMetadata& metadata)
        : metadata_(metadata),
          tiff_(properties.objectForKey(kCGImagePropertyTIFFDictionary).dictionary()),
          exif_(properties.objectForKey(kCGImagePropertyExifDictionary).dictionary()),
          iptc_(properties.objectForKey(kCGImagePropertyIPTCDictionary).dictionary()),
          png_(properties.objectForKey(kCGImagePropertyPNGDictionary).dictionary()) {}

    const NSDictionary& tiff() const { return tiff_; }
    const NSDictionary& exif() const { return exif_; }
    const NSDictionary& iptc() const { return iptc_; }
    const NSDictionary& png() const { return png_; }

    NSString xmp(const char* key) const {
        const std::vector<NSString> all = metadata_.textsOfXMP(key);
        return all.empty() ? NSString() : all.front();
    }

    /// Of the first of the places that says anything.
    std::vector<NSString> at(const Places& places) const {
        std::vector<NSString> found = sayingsOf(metadata_.textsOfXMP(places.xmp));
        if (found.empty() && places.iptc)
            found = sayingsOf(textsIn(iptc_.objectForKey(places.iptc)));
        if (found.empty() && places.wide != none)
            found = sayingsOf({metadata_.wideText(places.wide)});
        if (found.empty() && places.tiff)
            found = sayingsOf(textsIn(tiff_.objectForKey(places.tiff)));
        if (found.empty() && places.png)
            found = sayingsOf(textsIn(png_.objectForKey(places.png)));
        return found;
    }

private:
    static std::vector<NSString> textsIn(const Value& value) {
        std::vector<NSString> found;
        if (!value.isArray())
            return {value.string()};
        for (const Value& each : value.array())
            found.push_back(each.string());
        return found;
    }

    static std::vector<NSString> sayingsOf(const std::vector<NSString>& found) {
        std::vector<NSString> sayings;
        for (const NSString& each : found) {
            if (NSString saying = trimmed(each); !saying.isNil() && !saying.isEmpty())
                sayings.push_back(std::move(saying));
        }
        return sayings;
    }

    const ImageMetadata& metadata_;
    NSDictionary tiff_;
    NSDictionary exif_;
    NSDictionary iptc_;
    NSDictionary png_;
};

/// Places that hold one text hold several by semicolons.
NSArray listOf(const std::vector<NSString>& sayings) {
    auto list = NSMutableArray::array();
    for (const NSString& saying : sayings) {
        std::u16string_view rest = saying.characters();
        for (;;) {
            const std::size_t end = rest.find(u';');
            list.addObject(NSString(rest.substr(0, end)));
            if (end == rest.npos)
                break;
            rest.remove_prefix(end + 1);
        }
    }
    return list;
}

std::u16string unitsOf(const Value& text) {
    return text.isString() ? std::u16string(trimmed(text.string()).characters()) : std::u16string();
}

/// Of a time of Exif, with what other tags have of it: parts of a second, and the zone.
std::optional<NSDate> momentOfExif(const Value& time, const Value& fraction, const Value& zone) {
    const std::u16string whole = unitsOf(time);
    const std::u16string digits = unitsOf(fraction);
    const std::u16string point = digits.empty() ? u"" : u".";
    const std::u16string offset = unitsOf(zone);
    const auto momentWith = [&whole](std::u16string_view parts, std::u16string_view offsetIfAny) {
        std::u16string text = whole;
        text += parts;
        text += offsetIfAny;
        return momentOfClock(text);
    };
    if (const auto moment = momentWith(point + digits, offset))
        return moment;
    if (const auto moment = momentWith({}, offset))
        return moment;
    return momentWith({}, {});
}

/// "20110324" and "123456+0100".
std::optional<NSDate> momentOfIPTC(const Value& date, const Value& time) {
    const std::u16string day = unitsOf(date);
    const std::u16string clock = unitsOf(time);
    if (day.size() != 8)
        return std::nullopt;
    std::u16string text = day.substr(0, 4) + u'-' + day.substr(4, 2) + u'-' + day.substr(6);
    if (clock.size() >= 6)
        text += u'T' + clock.substr(0, 2) + u':' + clock.substr(2, 2) + u':' + clock.substr(4);
    return momentOfClock(text);
}

std::optional<NSDate> momentTaken(const Said& said) {
    const auto exif = [&](const char16_t* time, const char16_t* fraction, const char16_t* zone) {
        return momentOfExif(said.exif().objectForKey(time), said.exif().objectForKey(fraction),
                            said.exif().objectForKey(zone));
    };
    auto moment = exif(u"DateTimeOriginal", u"SubsecTimeOriginal", u"OffsetTimeOriginal");
    if (!moment)
        moment = exif(u"DateTimeDigitized", u"SubsecTimeDigitized", u"OffsetTimeDigitized");
    for (const char* const key : {"Xmp.exif.DateTimeOriginal", "Xmp.photoshop.DateCreated",
                                  "Xmp.exif.DateTimeDigitized", "Xmp.xmp.CreateDate"}) {
        if (const NSString text = said.xmp(key); !moment && !text.isNil())
            moment = momentOfClock(text);
    }
    if (!moment)
        moment =
            momentOfIPTC(said.iptc().objectForKey(u"DateCreated"), said.iptc().objectForKey(u"TimeCreated"));
    return moment;
}

std::optional<NSDate> momentChanged(const Said& said) {
    if (const auto moment =
            momentOfExif(said.tiff().objectForKey(u"DateTime"), said.exif().objectForKey(u"SubsecTime"),
                         said.exif().objectForKey(u"OffsetTime")))
        return moment;
    const NSString text = said.xmp("Xmp.xmp.ModifyDate");
    return text.isNil() ? std::nullopt : momentOfClock(text);
}

void setDates(Attributes& attributes, const Said& said) {
    const auto changed = momentChanged(said);
    if (changed)
        attributes.setDate("kMDItemContentModificationDate", *changed);
    // Old cameras know one time only.
    if (const auto taken = momentTaken(said); taken || changed)
        attributes.setDate("kMDItemContentCreationDate", taken ? *taken : *changed);
}

void setComment(Attributes& attributes, const Said& said, const ImageMetadata& metadata) {
    for (const NSString& text :
         {said.exif().objectForKey(u"UserComment").string(), metadata.wideText(wideComment),
          metadata.comment(), said.png().objectForKey(u"Comment").string()}) {
        const NSString comment = trimmed(text);
        if (!comment.isNil() && !comment.isEmpty())
            return attributes.set("kMDItemComment", comment);
    }
}

} // namespace

void setCaptions(Attributes& attributes, const NSDictionary& properties, const ImageMetadata& metadata) {
    const Said said(properties, metadata);
    for (const Places& places : texts) {
        if (const std::vector<NSString> sayings = said.at(places); !sayings.empty())
            attributes.set(places.name, sayings.front());
    }
    for (const Places& places : lists)
        attributes.set(places.name, listOf(said.at(places)));
    setComment(attributes, said, metadata);
    constexpr double mostStars = 5;
    const NSNumber* const rating = said.iptc().objectForKey(u"StarRating").numberIfAny();
    if (rating && rating->doubleValue() >= 0 && rating->doubleValue() <= mostStars)
        attributes.setReal("kMDItemStarRating", rating->doubleValue());
    setDates(attributes, said);
}

} // namespace kelvo::importers
