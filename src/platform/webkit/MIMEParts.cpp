#include "platform/webkit/MIMEParts.h"

#include "platform/foundation/Value.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/webkit/FrameReferences.h"
#include "platform/webkit/MIMEEngineMessages.h"
#include "platform/webkit/MIMELines.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace kelvo {
namespace {

bool isHeaderField(std::string_view line) {
    const std::size_t colon = line.find(':');
    return colon != std::string_view::npos && colon > 0 &&
           std::ranges::all_of(line.substr(0, colon), [](char unit) { return unit > ' ' && unit < 0x7F; });
}

struct Part {
    NSData data;
    NSString MIMEType;
    NSString charset;
    /// Nil when it has none.
    NSString contentID;
    /// Resolved; nil when the part has no address.
    NSURL address;

    bool isHTML() const { return MIMEType == u"text/html" || MIMEType == u"application/xhtml+xml"; }
};

struct Message {
    std::vector<Part> parts;
    NSURL base;
    /// The Content-ID of the part to begin with; nil when the message names none.
    NSString start;
    /// Its parts are those of one page, whatever they are.
    bool isRelated = false;
};

NSURL URLOfContentID(const NSString& contentID) {
    return contentID.isNil()
               ? NSURL()
               : NSURL::URLWithTolerantString(NSString(u"cid:").stringByAppendingString(contentID));
}

NSURL URLToTell(const NSURL& address) {
    return address.scheme() == mimeengine::schemeWithoutAddress ? NSURL() : address;
}

/// What a reference and the part that it means have in common.
NSString keyOfURL(const NSURL& url) {
    const NSString string = url.absoluteString();
    return string.substringToIndex(std::min(string.characters().find(u'#'), string.length()));
}

std::uint64_t sizeIn(const NSDictionary& fields, const char16_t* key) {
    const NSNumber* const number = fields.objectForKey(key).numberIfAny();
    const long long value = number ? number->longLongValue() : -1;
    return value < 0 ? maximumSizeInBytes + 1ULL : static_cast<std::uint64_t>(value);
}

/// Absent when a part is not within the contents.
std::optional<Message> messageOf(const NSDictionary& fields) {
    const NSData contents = fields.objectForKey(mimeengine::contentsKey).data();
    const NSNumber* const isRelated = fields.objectForKey(mimeengine::relatedKey).numberIfAny();
    Message message;
    message.base = NSURL::URLWithTolerantString(fields.objectForKey(mimeengine::baseKey).string());
    message.start = fields.objectForKey(mimeengine::startKey).string();
    message.isRelated = isRelated && isRelated->boolValue();
    for (const Value& each : fields.objectForKey(mimeengine::partsKey).array()) {
        const NSDictionary part = each.dictionary();
        const std::uint64_t place = sizeIn(part, mimeengine::placeKey);
        const std::uint64_t length = sizeIn(part, mimeengine::lengthKey);
        if (place > contents.length() || length > contents.length() - place)
            return std::nullopt;
        const NSString address = part.objectForKey(mimeengine::addressKey).string();
        message.parts.push_back(
            {contents.subdataWithRange({static_cast<std::size_t>(place), static_cast<std::size_t>(length)}),
             part.objectForKey(mimeengine::typeKey).string(),
             part.objectForKey(mimeengine::charsetKey).string(),
             part.objectForKey(mimeengine::contentIDKey).string(),
             address.isNil() ? NSURL() : NSURL::URLWithTolerantString(address)});
    }
    return message;
}

/// Puts the parts together: which is the page, which are frames, and whose.
class Assembly {
public:
    explicit Assembly(const Message& message)
        : parts_(message.parts), base_(message.base), isUsed_(parts_.size(), false) {
        for (std::size_t index = 0; index < parts_.size(); ++index) {
            const Part& part = parts_[index];
            // Where several parts have one address, the first counts.
            for (const NSURL& url : {part.address, URLOfContentID(part.contentID)}) {
                if (!url.isNil())
                    indexes_.emplace(keyOfURL(url), index);
            }
        }
        start_ = indexOfStart(message.start);
        if (start_ == parts_.size() && message.isRelated && !parts_.empty())
            start_ = 0;
    }

    WebArchive archive() {
        if (start_ == parts_.size())
            return nullptr;
        isUsed_[start_] = true;
        std::vector<WebArchive> frames = framesOf(parts_[start_], 1);
        for (std::size_t index = 0; index < parts_.size(); ++index) {
            if (!isUsed_[index] && parts_[index].isHTML())
                frames.push_back(frame(index, 1));
        }
        return WebArchive(documentOf(parts_[start_], u""), subresources(), std::move(frames));
    }

private:
    std::size_t indexOfStart(const NSString& contentID) const {
        if (const auto named = indexes_.find(keyOfURL(URLOfContentID(contentID)));
            !contentID.isNil() && named != indexes_.end())
            return named->second;
        const auto page = std::ranges::find_if(parts_, &Part::isHTML);
        return static_cast<std::size_t>(page - parts_.begin());
    }

    // Recursion: no deeper than maximumFrameDepth. A frame that would lie deeper is left for the page itself.
    WebArchive frame(std::size_t index, std::size_t depth) {
        isUsed_[index] = true;
        std::vector<WebArchive> frames = framesOf(parts_[index], depth + 1);
        return WebArchive(documentOf(parts_[index], nullptr), {}, std::move(frames));
    }

    std::vector<WebArchive> framesOf(const Part& page, std::size_t depth) {
        std::vector<WebArchive> frames;
        if (!page.isHTML() || depth > WebArchive::maximumFrameDepth)
            return frames;
        const std::vector<NSString> references = frameReferencesInHTML(page.data, referencesLeft_);
        referencesLeft_ -= references.size();
        for (const NSString& reference : references) {
            const NSURL url = NSURL::URLWithTolerantString(reference);
            if (url.isNil())
                continue;
            const auto found = indexes_.find(keyOfURL(NSURL::URLWithString_relativeToURL(
                url.absoluteString(), page.address.isNil() ? base_ : page.address)));
            if (found != indexes_.end() && !isUsed_[found->second])
                frames.push_back(frame(found->second, depth));
        }
        return frames;
    }

    WebResource documentOf(const Part& part, const NSString& frameName) const {
        NSURL url = URLToTell(part.address);
        if (url.isNil() && !frameName.isNil())
            url = URLToTell(base_);
        return WebResource(part.data, url.isNil() ? URLOfContentID(part.contentID) : url, part.MIMEType,
                           part.charset, frameName);
    }

    std::vector<WebResource> subresources() const {
        std::vector<WebResource> resources;
        for (std::size_t index = 0;
             index < parts_.size() && resources.size() + 2 <= WebArchive::maximumResourceCount; ++index) {
            const Part& part = parts_[index];
            const NSURL url = URLToTell(part.address);
            const NSURL other = URLOfContentID(part.contentID);
            const bool isFrame = isUsed_[index];
            if (!isFrame)
                resources.emplace_back(part.data, url.isNil() ? other : url, part.MIMEType, part.charset,
                                       nullptr);
            if (!url.isNil() && !other.isNil() && url != other)
                resources.emplace_back(part.data, other, part.MIMEType, part.charset, nullptr);
        }
        return resources;
    }

    const std::vector<Part>& parts_;
    const NSURL& base_;
    std::vector<bool> isUsed_;
    std::unordered_map<NSString, std::size_t> indexes_;
    std::size_t start_ = 0;
    std::size_t referencesLeft_ = WebArchive::maximumFrameCount;
};

} // namespace

bool beginsLikeMIMEMessage(const NSData& data) {
    constexpr std::size_t examinedBytes = 65536;
    const NSData head = data.subdataWithRange({0, std::min(data.length(), examinedBytes)});
    std::string_view message = messageInBytes(head.characters());
    bool hasContentType = false;
    while (!message.empty()) {
        const std::string_view line = takeMIMELine(message);
        if (line.empty())
            break;
        if (!isHeaderField(line) && !line.starts_with(' ') && !line.starts_with('\t'))
            return false;
        hasContentType =
            hasContentType || asciiLowerCased(std::string(line.substr(0, 13))) == "content-type:";
    }
    return hasContentType;
}

WebArchive archiveFromMIMEParts(const NSDictionary& fields) {
    const auto message = messageOf(fields);
    WebArchive archive = message ? Assembly(*message).archive() : WebArchive();
    if (archive.isNil())
        noteOutcome(Outcome::broken, u"the message has no page in it");
    return archive;
}

} // namespace kelvo
