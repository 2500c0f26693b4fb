#include "importers/media/MediaTags.h"

#include "importers/media/TagEncoding.h"
#include "importers/support/DateText.h"
#include "platform/foundation/units/ASCII.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

extern "C" {
#include <libavutil/dict.h>
}

namespace kelvo::importers {
namespace {

/// By the name that the library has for a tag in all formats, and those of single formats for which it has none.
struct TagRow {
    const char* name;
    std::initializer_list<const char*> keys;
};
const TagRow texts[] = {
    {"kMDItemTitle", {"title", "com.apple.quicktime.title"}},
    {"kMDItemAlbum", {"album", "com.apple.quicktime.album"}},
    {"kMDItemComposer", {"composer", "WM/Composer"}},
    {"kMDItemLyricist", {"lyricist", "TEXT", "WM/Writer"}},
    {"kMDItemCopyright", {"copyright", "com.apple.quicktime.copyright"}},
    {"kMDItemComment", {"comment", "com.apple.quicktime.comment"}},
    {"kMDItemDescription", {"description", "synopsis", "com.apple.quicktime.description", "TIT3"}},
    {"kMDItemDirector", {"director", "com.apple.quicktime.director", "WM/Director"}},
    {"kMDItemProducer", {"producer", "com.apple.quicktime.producer", "WM/Producer"}},
    {"kMDItemKeySignature", {"initialkey", "TKEY", "key"}},
    {"kMDItemAcquisitionMake", {"make", "com.apple.quicktime.make", "com.android.manufacturer"}},
    {"kMDItemAcquisitionModel", {"model", "com.apple.quicktime.model", "com.android.model"}},
    {"kMDItemCreator", {"com.apple.quicktime.software", "software"}},
    {"kMDItemURL", {"url", "WOAR", "WOAF", "purl"}},
};
const TagRow lists[] = {
    {"kMDItemAuthors",
     {"artist", "author", "com.apple.quicktime.artist", "com.apple.quicktime.author", "album_artist"}},
    {"kMDItemPerformers", {"performer", "actor", "com.apple.quicktime.performer"}},
    {"kMDItemPublishers", {"publisher", "organization", "label"}},
    {"kMDItemKeywords", {"keywords", "com.apple.quicktime.keywords"}},
    {"kMDItemEncodingApplications", {"encoder", "encoded_by", "encoding_tool"}},
};

class Tags {
public:
    explicit Tags(const MediaFile& file) : all_{file.container().metadata} {
        // Ogg has no tags of the whole.
        AVStream* const sound = file.track(AVMEDIA_TYPE_AUDIO);
        AVStream* const picture = file.track(AVMEDIA_TYPE_VIDEO);
        if (file.isOf("ogg")) {
            for (AVStream* const track : {picture, sound}) {
                if (track)
                    all_.push_back(track->metadata);
            }
        }
        isUnicode_ = false;
        for (const char* const format : {"mov", "matroska", "ogg", "flac", "asf"})
            isUnicode_ = isUnicode_ || file.isOf(format);
        if (!isUnicode_) {
            const AVDictionaryEntry* tag = nullptr;
            while ((tag = av_dict_get(all_.front(), "", tag, AV_DICT_IGNORE_SUFFIX)))
                encoding_.add(tag->value);
        }
    }

    /// Nil when there is none.
    NSString first(std::initializer_list<const char*> keys) const {
        for (const char* const key : keys) {
            for (const AVDictionary* const tags : all_) {
                const AVDictionaryEntry* const tag = av_dict_get(tags, key, nullptr, 0);
                if (tag && tag->value[0] != '\0')
                    return textOf(tag->value);
            }
        }
        return nullptr;
    }

    /// The first whose name begins so: "lyrics-eng".
    NSString firstThatBeginsWith(const char* prefix) const {
        for (const AVDictionary* const tags : all_) {
            if (const AVDictionaryEntry* const tag =
                    av_dict_get(tags, prefix, nullptr, AV_DICT_IGNORE_SUFFIX))
                return textOf(tag->value);
        }
        return nullptr;
    }

private:
    NSString textOf(const char* value) const {
        return isUnicode_ ? NSString::stringByRepairingUTF8String(value) : encoding_.textOf(value);
    }

    std::vector<const AVDictionary*> all_;
    bool isUnicode_ = false;
    TagEncoding encoding_;
};

/// A name may have a comma or a stroke in it.
NSArray listOf(const NSString& text) {
    auto list = NSMutableArray::array();
    std::u16string_view rest = text.isNil() ? std::u16string_view() : text.characters();
    while (!rest.empty()) {
        const std::size_t end = rest.find(u';');
        list.addObject(NSString(rest.substr(0, end)));
        rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    }
    return list;
}

/// What stands at the beginning of the text; absent when that is none.
std::optional<double> numberIn(const NSString& text) {
    if (text.isNil())
        return std::nullopt;
    const std::string bytes = trimmed(text).UTF8String();
    double number = 0;
    const auto [end, error] = std::from_chars(bytes.data(), bytes.data() + bytes.size(), number);
    return error == std::errc() && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

/// What is written where nobody knew the time: 1970, and 1904 in the count of QuickTime.
bool isBeginningOfClock(const NSDate& moment) {
    constexpr double secondsFrom1904 = 2'082'844'800;
    const double seconds = moment.timeIntervalSince1970();
    return seconds == 0 || seconds == -secondsFrom1904;
}

void setDates(Attributes& attributes, const Tags& tags) {
    NSString created = tags.first({"com.apple.quicktime.creationdate", "creation_time", "DateTimeOriginal"});
    if (!created.isNil()) {
        if (const auto moment = momentOfClock(trimmed(created)); moment && !isBeginningOfClock(*moment))
            attributes.setDate("kMDItemContentCreationDate", *moment);
    }
    const NSString recorded =
        tags.first({"date", "year", "com.apple.quicktime.year", "TDRC", "TYER", "WM/Year", "TDOR"});
    if (recorded.isNil())
        return;
    const NSString text = trimmed(recorded);
    const std::u16string_view digits = text.characters().substr(0, 4);
    if (digits.size() == 4 && std::ranges::all_of(digits, [](char16_t unit) { return isASCIIDigit(unit); }) &&
        digits != u"0000")
        attributes.setInteger("kMDItemRecordingYear", std::stoi(NSString(digits).UTF8String()));
    if (const auto moment = momentOfClock(text))
        attributes.setDate("kMDItemRecordingDate", *moment);
}

/// ISO 6709: "+48.8577+002.2950+035.000/".
void setPlace(Attributes& attributes, const NSString& place) {
    if (place.isNil())
        return;
    const std::string text = trimmed(place).UTF8String();
    const char* const names[] = {"kMDItemLatitude", "kMDItemLongitude", "kMDItemAltitude"};
    const double most[] = {90, 180, 1e6};
    std::size_t start = 0;
    for (std::size_t index = 0; index < std::size(names); ++index) {
        if (start >= text.size() || (text[start] != '+' && text[start] != '-'))
            return;
        const std::size_t end = std::min(text.find_first_of("+-/C", start + 1), text.size());
        double number = 0;
        const auto [last, error] = std::from_chars(text.data() + start + 1, text.data() + end, number);
        if (error != std::errc() || last != text.data() + end || number > most[index])
            return;
        char shown[32];
        std::snprintf(shown, sizeof shown, "%.10g", text[start] == '-' ? -number : number);
        attributes.set(names[index], NSString::stringWithUTF8String(shown));
        start = end;
    }
}

void setLyrics(Attributes& attributes, const Tags& tags) {
    NSString lyrics = tags.first({"lyrics", "unsyncedlyrics", "USLT", "WM/Lyrics"});
    if (lyrics.isNil())
        lyrics = tags.firstThatBeginsWith("lyrics-");
    if (!lyrics.isNil() && !lyrics.isEmpty())
        attributes.setText(lyrics);
}

} // namespace

void setMediaTags(Attributes& attributes, const MediaFile& file) {
    const Tags tags(file);
    for (const TagRow& row : texts)
        attributes.set(row.name, tags.first(row.keys));
    for (const TagRow& row : lists)
        attributes.set(row.name, listOf(tags.first(row.keys)));
    const bool isFilm = file.track(AVMEDIA_TYPE_VIDEO) != nullptr;
    attributes.set(isFilm ? "kMDItemGenre" : "kMDItemMusicalGenre",
                   tags.first({"genre", "com.apple.quicktime.genre"}));
    if (!isFilm)
        attributes.set("kMDItemAudioEncodingApplication", tags.first({"encoder", "encoding_tool"}));
    if (const auto track = numberIn(tags.first({"track", "WM/TrackNumber"})); track && *track >= 1)
        attributes.setInteger("kMDItemAudioTrackNumber", static_cast<std::int64_t>(*track));
    if (const auto tempo = numberIn(tags.first({"TBPM", "BPM", "tmpo", "WM/BeatsPerMinute"}));
        tempo && *tempo > 0)
        attributes.setReal("kMDItemTempo", *tempo);
    setDates(attributes, tags);
    NSString place = tags.first({"com.apple.quicktime.location.ISO6709", "location"});
    setPlace(attributes, place.isNil() ? tags.firstThatBeginsWith("location-") : place);
    setLyrics(attributes, tags);
}

} // namespace kelvo::importers
