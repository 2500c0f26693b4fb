#include "platform/webkit/MIMEHTML.h"

#include "platform/foundation/units/ASCII.h"
#include "platform/webkit/FrameReferences.h"
#include "platform/webkit/GMimeLibrary.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t maximumBoundaryCount = 65536;
constexpr std::size_t maximumHeaderCount = 262144;
/// Each reference to a frame is resolved against the address of its page.
constexpr std::size_t maximumAddressLength = 8192;

/// The base of messages that have no address of their own (RFC 2557, section 5).
constexpr const char16_t* schemeWithoutAddress = u"thismessage";

std::string lowercase(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), asciiLowerCase<char>);
    return result;
}

/// The message without what editors and transports leave before its first header field.
std::string_view messageInData(const NSData& data) {
    std::string_view bytes = data.characters();
    if (bytes.starts_with("\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    bytes.remove_prefix(std::min(bytes.find_first_not_of("\r\n"), bytes.size()));
    return bytes;
}

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

bool isHeaderField(std::string_view line) {
    const std::size_t colon = line.find(':');
    return colon != std::string_view::npos && colon > 0 &&
           std::ranges::all_of(line.substr(0, colon), [](char unit) { return unit > ' ' && unit < 0x7F; });
}

/// A parsed message takes far more memory than its bytes when they are all boundaries, header fields or
/// parameters. This counts at least as many of each as there are: every line that begins like a boundary,
/// and every line and semicolon from there to the next empty line, or to the one after it where the part may
/// be a message itself, which "message" or "digest" in the type of the part or of what it is in would say.
bool isWithinBounds(std::string_view message) {
    std::size_t boundaryCount = 0, headerCount = 0;
    bool isInHeader = true, mayHoldMessage = false, mayHoldMessages = false;
    while (!message.empty()) {
        const std::string_view line = takeLine(message);
        if (line.starts_with("--")) {
            isInHeader = true;
            mayHoldMessage = mayHoldMessages;
            if (++boundaryCount > maximumBoundaryCount)
                return false;
        } else if (isInHeader && line.empty()) {
            isInHeader = std::exchange(mayHoldMessage, false);
        } else if (isInHeader) {
            headerCount += 1 + static_cast<std::size_t>(std::ranges::count(line, ';'));
            if (headerCount > maximumHeaderCount)
                return false;
            const std::string words = lowercase(line);
            mayHoldMessages = mayHoldMessages || words.find("digest") != std::string::npos;
            mayHoldMessage = mayHoldMessage || mayHoldMessages || words.find("message") != std::string::npos;
        }
    }
    return true;
}

NSString stringOrNil(const char* text) {
    return text ? NSString::stringByRepairingUTF8String(text) : NSString();
}

/// An address is folded where it is too long for a line, and not where it has a blank, so that both line end
/// and blanks go.
std::string unfolded(std::string_view value) {
    std::string text;
    while (!value.empty()) {
        text += takeLine(value);
        value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    }
    return text;
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

NSURL URLOfContentID(const NSString& contentID) {
    return contentID.isNil()
               ? NSURL()
               : NSURL::URLWithTolerantString(NSString(u"cid:").stringByAppendingString(contentID));
}

NSURL URLToTell(const NSURL& address) {
    return address.scheme() == schemeWithoutAddress ? NSURL() : address;
}

/// What a reference and the part that it means have in common.
NSString keyOfURL(const NSURL& url) {
    const NSString string = url.absoluteString();
    return string.substringToIndex(std::min(string.characters().find(u'#'), string.length()));
}

/// The message as GMime parses it, and its parts in their order.
class Message {
public:
    Message(const GMimeLibrary& library, std::string_view bytes) : library_(library) {
        // A stream over bytes that are not its own: the array is never written to, and gives them back at the
        // end.
        GByteArray* const array = library_.g_byte_array_new();
        array->data = reinterpret_cast<guint8*>(const_cast<char*>(bytes.data()));
        array->len = static_cast<guint>(bytes.size());
        borrowed_.reset(array);
        stream_.reset(library_.g_mime_stream_mem_new_with_byte_array(array));
        library_.g_mime_stream_mem_set_owner(reinterpret_cast<GMimeStreamMem*>(stream_.get()), FALSE);
        const GMimeReference<GMimeParser> parser(library_.g_mime_parser_new_with_stream(stream_.get()));
        root_.reset(library_.g_mime_parser_construct_part(parser.get(), nullptr));
    }

    /// False when the message can be no page: neither multipart nor a part with a MIME-Version.
    bool collect() {
        if (!root_)
            return false;
        base_ = NSURL::URLWithTolerantString(u"thismessage:/");
        for (const char* name : {"Content-Base", "Content-Location", "Snapshot-Content-Location"}) {
            const NSURL address = addressOf(root_.get(), name);
            if (URLToTell(address).scheme().isNil())
                continue;
            base_ = address;
            break;
        }
        if (!library_.isInstance(root_.get(), library_.g_mime_multipart_get_type()) &&
            !library_.g_mime_object_get_header(root_.get(), "MIME-Version"))
            return false;
        collectParts();
        return true;
    }

    std::vector<Part>& parts() { return parts_; }
    const NSURL& base() const { return base_; }
    /// The Content-ID of the part to begin with; nil when the message names none.
    const NSString& start() const { return start_; }
    /// Its parts are those of one page, whatever they are.
    bool isRelated() const {
        return parts_.size() > 0 && lowercase(library_.g_mime_content_type_get_media_subtype(
                                        library_.g_mime_object_get_content_type(root_.get()))) == "related";
    }

private:
    struct GiveBack {
        void operator()(GByteArray* array) const {
            array->data = nullptr;
            array->len = 0;
            GMimeLibrary::loaded()->g_byte_array_free(array, TRUE);
        }
    };

    // Depth first, without recursion.
    void collectParts() {
        std::vector<GMimeObject*> open{root_.get()};
        while (!open.empty()) {
            GMimeObject* const object = open.back();
            open.pop_back();
            if (library_.isInstance(object, library_.g_mime_multipart_get_type())) {
                auto* const multipart = reinterpret_cast<GMimeMultipart*>(object);
                if (start_.isNil())
                    start_ = startOf(object);
                for (int index = library_.g_mime_multipart_get_count(multipart); index-- > 0;)
                    open.push_back(library_.g_mime_multipart_get_part(multipart, index));
            } else if (library_.isInstance(object, library_.g_mime_part_get_type())) {
                parts_.push_back(partOf(object));
            }
        }
    }

    NSString startOf(GMimeObject* multipart) const {
        const char* const start = library_.g_mime_content_type_get_parameter(
            library_.g_mime_object_get_content_type(multipart), "start");
        std::string_view text(start ? start : "");
        if (text.starts_with('<') && text.ends_with('>'))
            text = text.substr(1, text.size() - 2);
        return text.empty() ? NSString() : NSString::stringByRepairingUTF8String(text);
    }

    Part partOf(GMimeObject* object) const {
        GMimeContentType* const type = library_.g_mime_object_get_content_type(object);
        const char* const subtype = library_.g_mime_content_type_get_media_subtype(type);
        Part part;
        part.MIMEType = NSString::stringByRepairingUTF8String(lowercase(
            std::string(library_.g_mime_content_type_get_media_type(type)) + '/' + (subtype ? subtype : "")));
        part.charset = stringOrNil(library_.g_mime_content_type_get_parameter(type, "charset"));
        part.contentID = stringOrNil(library_.g_mime_object_get_content_id(object));
        part.address = addressOf(object, "Content-Location");
        part.data = dataOf(reinterpret_cast<GMimePart*>(object));
        return part;
    }

    NSURL addressOf(GMimeObject* object, const char* headerName) const {
        GMimeHeader* const header = library_.g_mime_header_list_get_header(
            library_.g_mime_object_get_header_list(object), headerName);
        const char* const value = header ? library_.g_mime_header_get_raw_value(header) : nullptr;
        if (!value)
            return nullptr;
        const std::string_view raw = value;
        const std::string text = raw.find("=?") == raw.npos
                                     ? unfolded(raw)
                                     : library_.g_mime_object_get_header(object, headerName);
        if (text.size() > maximumAddressLength)
            return nullptr;
        const NSURL address = NSURL::URLWithTolerantString(NSString::stringByRepairingUTF8String(text));
        return address.isNil()
                   ? NSURL()
                   : NSURL::URLWithString_relativeToURL(address.absoluteString(), base_).absoluteURL();
    }

    NSData dataOf(GMimePart* part) const {
        GMimeDataWrapper* const content = library_.g_mime_part_get_content(part);
        if (!content)
            return NSData::data();
        // No encoding makes its bytes fewer, so that the array never grows.
        const gint64 encodedLength =
            library_.g_mime_stream_length(library_.g_mime_data_wrapper_get_stream(content));
        const std::shared_ptr<GByteArray> array(
            library_.g_byte_array_sized_new(static_cast<guint>(std::max<gint64>(encodedLength, 0))),
            library_.g_byte_array_unref);
        const GMimeReference<GMimeStream> decoded(
            library_.g_mime_stream_mem_new_with_byte_array(array.get()));
        library_.g_mime_stream_mem_set_owner(reinterpret_cast<GMimeStreamMem*>(decoded.get()), FALSE);
        library_.g_mime_data_wrapper_write_to_stream(content, decoded.get());
        return NSData::dataWithBytesNoCopy({array->data, array->len}, array);
    }

    const GMimeLibrary& library_;
    std::unique_ptr<GByteArray, GiveBack> borrowed_;
    GMimeReference<GMimeStream> stream_;
    GMimeReference<GMimeObject> root_;
    NSURL base_;
    NSString start_;
    std::vector<Part> parts_;
};

/// Puts the parts together: which is the page, which are frames, and whose.
class Assembly {
public:
    explicit Assembly(Message& message)
        : parts_(message.parts()), base_(message.base()), isUsed_(parts_.size(), false) {
        for (std::size_t index = 0; index < parts_.size(); ++index) {
            const Part& part = parts_[index];
            // Where several parts have one address, the first counts.
            for (const NSURL& url : {part.address, URLOfContentID(part.contentID)}) {
                if (!url.isNil())
                    indexes_.emplace(keyOfURL(url), index);
            }
        }
        start_ = indexOfStart(message.start());
        if (start_ == parts_.size() && message.isRelated())
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
    std::string_view message = messageInData(data).substr(0, examinedBytes);
    bool hasContentType = false;
    while (!message.empty()) {
        const std::string_view line = takeLine(message);
        if (line.empty())
            break;
        if (!isHeaderField(line) && !line.starts_with(' ') && !line.starts_with('\t'))
            return false;
        hasContentType = hasContentType || lowercase(line.substr(0, 13)) == "content-type:";
    }
    return hasContentType;
}

WebArchive archiveFromMIMEHTML(const NSData& data) {
    const std::string_view bytes = messageInData(data);
    const GMimeLibrary* const library = isWithinBounds(bytes) ? GMimeLibrary::loaded() : nullptr;
    if (!library)
        return nullptr;
    Message message(*library, bytes);
    return message.collect() ? Assembly(message).archive() : WebArchive();
}

} // namespace kelvo
