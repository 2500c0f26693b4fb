#include "images/MIMETypeExtensions.h"

#include "images/ImageFileTypes.h"
#include "platform/launchservices/NSURLFileTypeMappings.h"
#include "text/FoldingTables.h"
#include "text/StringComparison.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

namespace kelvo::MIMETypeExtensions {

namespace {

// By what the extensions are of, blanks between them.
constexpr std::u16string_view audioExtensions =
    u"ra au ram wma mp3 m3u m4a mpa m4p aif m2a wav snd mid rmi aifc aiff mpga midi";
constexpr std::u16string_view videoExtensions =
    u"rm qt mp2 mpe wmv asf asx mov avi mpe m1v mp4 m2v mpg 3g2 flc wvx flv mpeg divx moov mpv2 rmvb movie";
constexpr std::u16string_view embeddedExtensions = u"swf viv";

constexpr std::size_t longestExtension = 5;

bool isListed(std::u16string_view list, std::u16string_view extension) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(u' '), list.size());
        if (list.substr(0, end) == extension)
            return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

NSString typeOf(const char16_t* kind, const NSString& extension) {
    return NSString(kind).stringByAppendingString(extension);
}

} // namespace

NSString MIMETypeForExtension(const NSString& extension) {
    const NSString declared = NSURLFileTypeMappings::sharedMappings().MIMETypeForExtension(extension);
    return declared.isEmpty() ? MIMETypeOfMediaExtension(extension) : declared;
}

NSString MIMETypeOfMediaExtension(const NSString& extension) {
    using namespace NSImageKelvoExtensions;
    if (isPDFExtension_type(extension, nullptr))
        return isRealPDFExtension_type(extension, nullptr) ? u"application/pdf" : u"application/postscript";
    if (isImageExtension_type(extension, nullptr)) {
        const bool isJPEG =
            std::ranges::any_of(std::array{u"jpg", u"jpe", u"jpeg"},
                                [&](const NSString& name) { return isEqualToStringNoCase(extension, name); });
        return isJPEG ? u"image/jpeg" : typeOf(u"image/", extension);
    }
    if (isMultimediaType_audio_video_embedded(extension, true, false, false))
        return typeOf(u"audio/", extension);
    if (isMultimediaType_audio_video_embedded(extension, false, true, false))
        return typeOf(u"video/", extension);
    if (isMultimediaType_audio_video_embedded(extension, false, true, true))
        return typeOf(u"application/", extension);
    return nullptr;
}

NSString extensionForMIMEType(const NSString& type) {
    const NSString extension = NSURLFileTypeMappings::sharedMappings().preferredExtensionForMIMEType(type);
    return extension.isEmpty() ? nullptr : extension;
}

bool isMultimediaType_audio_video_embedded(const NSString& extension, bool audio, bool video, bool embedded) {
    const std::size_t length = extension.length();
    if (length == 0 || length > longestExtension)
        return false;
    std::array<char16_t, longestExtension> lowered{};
    std::ranges::transform(extension.characters(), lowered.begin(),
                           [lower = initLowerCharsTable()](char16_t unit) { return lower[unit]; });
    const std::u16string_view name(lowered.data(), length);
    return (audio && isListed(audioExtensions, name)) || (video && isListed(videoExtensions, name)) ||
           (embedded && isListed(embeddedExtensions, name));
}

} // namespace kelvo::MIMETypeExtensions
