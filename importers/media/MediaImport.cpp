#include "importers/media/MediaImport.h"

#include "importers/media/MediaFile.h"
#include "importers/media/MediaTags.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" {
#include <libavcodec/codec_desc.h>
#include <libavutil/display.h>
#include <libavutil/intreadwrite.h>
}

namespace kelvo::importers {
namespace {

constexpr std::size_t mostChapters = 4096;
constexpr int degreesOfQuarter = 90;

NSString textOf(const char* bytes) {
    return NSString::stringByRepairingUTF8String(bytes ? bytes : "");
}

struct CodecRow {
    AVCodecID codec;
    const char16_t* name;
};
/// Those whose name the library does not begin with.
constexpr CodecRow codecs[] = {
    {AV_CODEC_ID_AC3, u"AC-3"},  {AV_CODEC_ID_EAC3, u"E-AC-3"}, {AV_CODEC_ID_AV1, u"AV1"},
    {AV_CODEC_ID_HEVC, u"HEVC"}, {AV_CODEC_ID_VP8, u"VP8"},     {AV_CODEC_ID_VP9, u"VP9"},
};

/// "H.264", of "H.264 / AVC / MPEG-4 AVC / MPEG-4 part 10".
NSString nameOfCodec(AVCodecID codec) {
    const auto* const row = std::ranges::find(codecs, codec, &CodecRow::codec);
    if (row != std::end(codecs))
        return row->name;
    const AVCodecDescriptor* const description = avcodec_descriptor_get(codec);
    if (!description || codec == AV_CODEC_ID_NONE)
        return nullptr;
    const std::string_view name = description->long_name ? description->long_name : description->name;
    return NSString::stringByRepairingUTF8String(name.substr(0, std::min(name.find(" / "), name.find(" ("))));
}

void addOnce(NSMutableArray& to, const NSString& text) {
    if (!text.isNil() && !to.containsObject(text))
        to.addObject(text);
}

void setTracks(Attributes& attributes, const MediaFile& file) {
    auto media = NSMutableArray::array();
    auto encodings = NSMutableArray::array();
    auto languages = NSMutableArray::array();
    for (const AVStream* const track : file.tracks()) {
        const AVMediaType type = track->codecpar->codec_type;
        const char16_t* const name = type == AVMEDIA_TYPE_VIDEO      ? u"Video"
                                     : type == AVMEDIA_TYPE_AUDIO    ? u"Sound"
                                     : type == AVMEDIA_TYPE_SUBTITLE ? u"Text"
                                                                     : nullptr;
        if (!name)
            continue;
        addOnce(media, name);
        addOnce(encodings, nameOfCodec(track->codecpar->codec_id));
        const AVDictionaryEntry* const language = av_dict_get(track->metadata, "language", nullptr, 0);
        if (language && std::string_view(language->value) != "und")
            addOnce(languages, textOf(language->value));
    }
    const AVDictionaryEntry* const ofAll = av_dict_get(file.container().metadata, "language", nullptr, 0);
    if (ofAll && languages.count() == 0)
        addOnce(languages, textOf(ofAll->value));
    attributes.set("kMDItemMediaTypes", media);
    attributes.set("kMDItemCodecs", encodings);
    attributes.set("kMDItemLanguages", languages);
}

/// Some containers state it in a tag.
std::int64_t bitRateOf(const AVStream& track) {
    if (track.codecpar->bit_rate > 0)
        return track.codecpar->bit_rate;
    const AVDictionaryEntry* const tag = av_dict_get(track.metadata, "BPS", nullptr, AV_DICT_IGNORE_SUFFIX);
    const double stated = tag ? std::strtod(tag->value, nullptr) : 0;
    return stated > 0 && stated < 1e15 ? static_cast<std::int64_t>(stated) : 0;
}

void setBitRates(Attributes& attributes, const MediaFile& file, std::size_t length) {
    const AVStream* const sound = file.track(AVMEDIA_TYPE_AUDIO);
    const AVStream* const picture = file.track(AVMEDIA_TYPE_VIDEO);
    const double duration = file.duration();
    const std::int64_t total = file.container().bit_rate > 0 ? file.container().bit_rate
                               : duration > 0 ? std::llround(static_cast<double>(length) * 8 / duration)
                                              : 0;
    std::int64_t ofSound = sound ? bitRateOf(*sound) : 0;
    std::int64_t ofPicture = picture ? bitRateOf(*picture) : 0;
    if (file.tracks().size() == 1) {
        ofSound = sound && ofSound == 0 ? total : ofSound;
        ofPicture = picture && ofPicture == 0 ? total : ofPicture;
    }
    if (ofSound > 0)
        attributes.setInteger("kMDItemAudioBitRate", ofSound);
    if (ofPicture > 0)
        attributes.setInteger("kMDItemVideoBitRate", ofPicture);
    if (total > 0)
        attributes.setInteger("kMDItemTotalBitRate", total);
}

void setSound(Attributes& attributes, const AVStream& track) {
    if (track.codecpar->ch_layout.nb_channels > 0)
        attributes.setInteger("kMDItemAudioChannelCount", track.codecpar->ch_layout.nb_channels);
    if (track.codecpar->sample_rate > 0)
        attributes.setReal("kMDItemAudioSampleRate", track.codecpar->sample_rate);
}

/// Clockwise, from 0 up to 360.
int rotationOf(const AVStream& track) {
    constexpr std::size_t bytesOfMatrix = 9 * sizeof(std::int32_t);
    std::size_t length = 0;
    const std::uint8_t* const matrix = av_stream_get_side_data(&track, AV_PKT_DATA_DISPLAYMATRIX, &length);
    if (!matrix || length < bytesOfMatrix)
        return 0;
    const double angle = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    if (!std::isfinite(angle))
        return 0;
    return (static_cast<int>(std::lround(-angle)) % 360 + 360) % 360;
}

void setPicture(Attributes& attributes, const MediaFile& file, AVStream& track) {
    // Pixels need not be as wide as they are high, and what is shown may be turned.
    const AVRational aspect =
        track.sample_aspect_ratio.num > 0 ? track.sample_aspect_ratio : track.codecpar->sample_aspect_ratio;
    double width = track.codecpar->width;
    double height = track.codecpar->height;
    if (aspect.num > 0 && aspect.den > 0)
        width = std::round(width * av_q2d(aspect));
    const int rotation = rotationOf(track);
    if (rotation / degreesOfQuarter % 2 == 1)
        std::swap(width, height);
    constexpr double most = 1e6;
    if (width >= 1 && height >= 1 && width < most && height < most) {
        attributes.setInteger("kMDItemPixelWidth", static_cast<std::int64_t>(width));
        attributes.setInteger("kMDItemPixelHeight", static_cast<std::int64_t>(height));
    }
    if (rotation != 0)
        attributes.setInteger("plumwick_rotation", rotation);
    if (const double rate = file.frameRate(track); rate > 0)
        attributes.setReal("plumwick_frameRate", rate);
}

void setChapters(Attributes& attributes, const AVFormatContext& container) {
    auto titles = NSMutableArray::array();
    for (unsigned index = 0; index < container.nb_chapters && index < mostChapters; ++index) {
        const AVDictionaryEntry* const title =
            av_dict_get(container.chapters[index]->metadata, "title", nullptr, 0);
        const NSString text = trimmed(textOf(title ? title->value : ""));
        titles.addObject(text.isEmpty() ? textOf(std::to_string(index + 1).c_str()) : text);
    }
    attributes.set("plumwick_chapters", titles);
}

/// Whether what is needed to play a file of the ISO base media format stands before its frames.
bool isStreamable(std::string_view bytes) {
    constexpr int mostBoxes = 1000;
    std::size_t place = 0;
    for (int box = 0; box < mostBoxes && place < bytes.size() && bytes.size() - place >= 16; ++box) {
        const std::string_view type = bytes.substr(place + 4, 4);
        if (type == "moov" || type == "mdat")
            return type == "moov";
        const std::uint64_t stated = AV_RB32(bytes.data() + place);
        const std::uint64_t length = stated == 1 ? AV_RB64(bytes.data() + place + 8) : stated;
        if (length < 8 || length > bytes.size() - place)
            return false;
        place += static_cast<std::size_t>(length);
    }
    return false;
}

} // namespace

void importMedia(Attributes& attributes) {
    const std::string_view bytes = attributes.file();
    const auto file = MediaFile::open(bytes);
    if (!file || file->tracks().empty())
        attributes.note(MDNoteBroken, "the file is damaged, or no sound or film that can be read");
    if (!file)
        return;
    if (file->isCutShort())
        attributes.note(MDNoteIncomplete, "the file has more tables than are read");
    setTracks(attributes, *file);
    if (const double duration = file->duration(); duration > 0)
        attributes.setReal("kMDItemDurationSeconds", duration);
    setBitRates(attributes, *file, bytes.size());
    if (AVStream* const sound = file->track(AVMEDIA_TYPE_AUDIO))
        setSound(attributes, *sound);
    if (AVStream* const picture = file->track(AVMEDIA_TYPE_VIDEO))
        setPicture(attributes, *file, *picture);
    if (file->isOf("mov"))
        attributes.setBoolean("kMDItemStreamable", isStreamable(bytes));
    attributes.setBoolean("plumwick_hasCover", file->hasCover());
    setChapters(attributes, file->container());
    setMediaTags(attributes, *file);
}

} // namespace kelvo::importers
