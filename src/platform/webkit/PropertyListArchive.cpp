#include "platform/webkit/PropertyListArchive.h"

#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "platform/ledger/RequestNotes.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

constexpr const char16_t* mainResourceKey = u"WebMainResource";
constexpr const char16_t* subresourcesKey = u"WebSubresources";
constexpr const char16_t* subframeArchivesKey = u"WebSubframeArchives";

constexpr std::size_t bytesWithFirstTag = 4096;
constexpr std::size_t alwaysAllowedBytes = std::size_t{1} << 20;
constexpr std::size_t maximumFactor = 8;

static_assert(2 * WebArchive::maximumFrameDepth + 2 == Value::maximumDepth,
              "each frame is a dictionary in an array, and its main resource one dictionary more");

/// In whatever encoding: after a byte-order mark, blanks, and the NULs of UTF-16.
bool beginsLikeXML(std::string_view bytes) {
    const std::size_t begin = bytes.find_first_not_of(std::string_view("\xEF\xBB\xBF\xFE\xFF \t\r\n\0", 10));
    return begin != std::string_view::npos && bytes[begin] == '<';
}

/// The string of a resource's key; nil when the key is not there, absent when its value is no string.
std::optional<NSString> stringOfKey(const NSDictionary& resource, const char16_t* key) {
    const Value& value = resource.objectForKey(key);
    if (value.isNil() || value.isString())
        return value.string();
    return std::nullopt;
}

/// An address without a scheme starts nowhere.
NSURL URLOfResource(const NSString& address) {
    const NSURL url = NSURL::URLWithTolerantString(address);
    return url.scheme().isNil() ? NSURL() : url;
}

class Reader {
public:
    explicit Reader(std::size_t fileSize)
        : bytesLeft_(std::max(alwaysAllowedBytes, fileSize * maximumFactor)) {}

    WebArchive read(const Value& root) {
        if (!root.isDictionary() || !hasKeyOfArchive(root.dictionary())) {
            noteOutcome(Outcome::unsupported, u"it is a property list, but no web archive");
            return nullptr;
        }
        WebArchive whole = archive(root.dictionary());
        if (whole.mainResource().isNil())
            noteOutcome(Outcome::nothing, u"the web archive has no page of its own");
        return whole;
    }

private:
    static bool hasKeyOfArchive(const NSDictionary& dictionary) {
        return !dictionary.objectForKey(mainResourceKey).isNil() ||
               !dictionary.objectForKey(subresourcesKey).isNil() ||
               !dictionary.objectForKey(subframeArchivesKey).isNil();
    }

    // Recursion: reading the property list has bounded the depth.
    WebArchive archive(const NSDictionary& dictionary) {
        WebResource document = resource(dictionary.objectForKey(mainResourceKey), true);
        std::vector<WebResource> subresources;
        for (const Value& element : dictionary.objectForKey(subresourcesKey).array()) {
            if (resourcesLeft_ == 0) {
                noteOutcome(Outcome::answered, u"it has more pictures and other parts than are read");
                break;
            }
            --resourcesLeft_;
            if (WebResource subresource = resource(element, false); !subresource.isNil())
                subresources.push_back(std::move(subresource));
        }
        std::vector<WebArchive> subframes;
        for (const Value& element : dictionary.objectForKey(subframeArchivesKey).array()) {
            if (framesLeft_ == 0) {
                noteOutcome(Outcome::answered, u"it has more frames than are read");
                break;
            }
            --framesLeft_;
            if (element.isDictionary())
                subframes.push_back(archive(element.dictionary()));
        }
        return WebArchive(std::move(document), std::move(subresources), std::move(subframes));
    }

    WebResource resource(const Value& value, bool isDocument) {
        const NSDictionary dictionary = value.dictionary();
        const auto MIMEType = stringOfKey(dictionary, u"WebResourceMIMEType");
        const auto address = stringOfKey(dictionary, u"WebResourceURL");
        auto textEncodingName = stringOfKey(dictionary, u"WebResourceTextEncodingName");
        const auto frameName = stringOfKey(dictionary, u"WebResourceFrameName");
        const Value& contents = dictionary.objectForKey(u"WebResourceData");
        if (dictionary.isNil() || !MIMEType || !address || !textEncodingName || !frameName ||
            !(contents.isNil() || contents.isData() || contents.isString()))
            return nullptr;
        NSData data = contents.data();
        // What is to be copied or read through; other data is only pointed at.
        const std::size_t size =
            address->length() + contents.string().length() + (isDocument ? data.length() : 0);
        if (size > bytesLeft_) {
            noteOutcome(Outcome::answered,
                        u"the parts of it that stand for far more than its size were left out");
            return nullptr;
        }
        bytesLeft_ -= size;
        if (contents.isString()) {
            data = NSData::dataWithBytesNoCopy(contents.string().UTF8String());
            textEncodingName = NSString(u"UTF-8");
        }
        return WebResource(std::move(data), URLOfResource(*address), *MIMEType, *textEncodingName,
                           *frameName);
    }

    std::size_t bytesLeft_;
    std::size_t framesLeft_ = WebArchive::maximumFrameCount;
    std::size_t resourcesLeft_ = WebArchive::maximumResourceCount;
};

} // namespace

WebArchive archiveFromPropertyList(const NSData& data) {
    const std::string_view bytes = data.characters();
    const bool isBinary = bytes.starts_with("bplist");
    NSString reason;
    // Any words in braces make an old-style list, and no program has ever written an archive in that form.
    if (isBinary || beginsLikeXML(bytes)) {
        const Value root =
            NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
                data, NSPropertyListMutabilityOptions::immutable, nullptr, &reason);
        if (!root.isNil())
            return Reader(data.length()).read(root);
    }
    if (isBinary || bytes.substr(0, bytesWithFirstTag).find("<plist") != std::string_view::npos)
        noteOutcome(
            Outcome::broken,
            NSString(u"the property list is damaged: ").stringByAppendingString(sentenceOfReason(reason)));
    else
        noteOutcome(Outcome::unsupported,
                    u"it is no web archive: neither a property list nor a message with a page");
    return nullptr;
}

} // namespace kelvo
