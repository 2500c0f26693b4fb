#include "platform/webkit/mime/MIMEMessage.h"

#include "platform/foundation/NSURL.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/webkit/MIMEEngineMessages.h"
#include "platform/webkit/MIMELines.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::size_t maximumBoundaryCount = 65536;
constexpr std::size_t maximumHeaderCount = 262144;
/// GMime reads a message within a message, and a group of addresses within a group, by recursion, which takes a kilobyte
/// of stack each time.
constexpr std::size_t maximumNestingCount = 2048;
/// Each address in it becomes an object of hundreds of bytes.
constexpr std::size_t maximumFieldLength = std::size_t{1} << 20;
/// Each reference to a frame is resolved against the address of its page.
constexpr std::size_t maximumAddressLength = 8192;

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Reference = std::unique_ptr<T, Unref>;

/// A header field as it goes on over the lines.
class FieldBounds {
public:
    bool isWithinBounds(std::string_view line) {
        if (!line.starts_with(' ') && !line.starts_with('\t'))
            length_ = colonCount_ = 0;
        length_ += line.size();
        colonCount_ += static_cast<std::size_t>(std::ranges::count(line, ':'));
        return length_ <= maximumFieldLength && colonCount_ <= maximumNestingCount;
    }

private:
    std::size_t length_ = 0;
    std::size_t colonCount_ = 0;
};

/// A parsed message takes far more memory than its bytes when they are all boundaries, header fields or
/// parameters. This counts at least as many of each as there are: every line that begins like a boundary,
/// and every line and semicolon from there to the next empty line, or to the one after it where the part may
/// be a message itself, which "message" or "digest" in the type of the part or of what it is in would say; each
/// of these counts as a message in another one.
bool isWithinBounds(std::string_view message) {
    std::size_t boundaryCount = 0, headerCount = 0, nestingCount = 0;
    bool isInHeader = true, mayHoldMessage = false, mayHoldMessages = false;
    FieldBounds field;
    while (!message.empty()) {
        const std::string_view line = takeMIMELine(message);
        if (line.starts_with("--")) {
            isInHeader = true;
            mayHoldMessage = mayHoldMessages;
            if (++boundaryCount > maximumBoundaryCount)
                return false;
        } else if (isInHeader && line.empty()) {
            isInHeader = std::exchange(mayHoldMessage, false);
        } else if (isInHeader) {
            headerCount += 1 + static_cast<std::size_t>(std::ranges::count(line, ';'));
            if (headerCount > maximumHeaderCount || !field.isWithinBounds(line))
                return false;
            const std::string words = asciiLowerCased(std::string(line));
            const bool saysMessage = words.find("message") != std::string::npos;
            const bool saysDigest = words.find("digest") != std::string::npos;
            mayHoldMessages = mayHoldMessages || saysDigest;
            mayHoldMessage = mayHoldMessage || mayHoldMessages || saysMessage;
            if (saysDigest || (saysMessage && !words.starts_with("message-id")))
                ++nestingCount;
            if (nestingCount > maximumNestingCount)
                return false;
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
        text += takeMIMELine(value);
        value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    }
    return text;
}

/// The message as GMime parses it, and its parts in their order.
class Message {
public:
    explicit Message(std::string_view bytes) : contents_(bytes.size()) {
        // A stream over bytes that are not its own: the array is never written to, and gives them back at the end.
        GByteArray* const array = g_byte_array_new();
        array->data = reinterpret_cast<guint8*>(const_cast<char*>(bytes.data()));
        array->len = static_cast<guint>(bytes.size());
        borrowed_.reset(array);
        stream_.reset(g_mime_stream_mem_new_with_byte_array(array));
        g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(stream_.get()), FALSE);
        const Reference<GMimeParser> parser(g_mime_parser_new_with_stream(stream_.get()));
        root_.reset(g_mime_parser_construct_part(parser.get(), nullptr));
    }

    /// Nil when the message can be no page: neither multipart nor a part with a MIME-Version.
    Value fields() {
        if (!root_ ||
            (!GMIME_IS_MULTIPART(root_.get()) && !g_mime_object_get_header(root_.get(), "MIME-Version")))
            return {};
        base_ = NSURL::URLWithTolerantString(
            NSString(mimeengine::schemeWithoutAddress).stringByAppendingString(u":/"));
        for (const char* name : {"Content-Base", "Content-Location", "Snapshot-Content-Location"}) {
            const NSURL address = addressOf(root_.get(), name);
            const NSString scheme = address.scheme();
            if (scheme.isNil() || scheme == mimeengine::schemeWithoutAddress)
                continue;
            base_ = address;
            break;
        }
        collectParts();
        const char* const subtype =
            g_mime_content_type_get_media_subtype(g_mime_object_get_content_type(root_.get()));
        auto fields = NSMutableDictionary::dictionary();
        fields.setObject_forKey(base_.absoluteString(), mimeengine::baseKey);
        fields.setObject_forKey(
            NSNumber::numberWithBool(asciiLowerCased(std::string(subtype ? subtype : "")) == "related"),
            mimeengine::relatedKey);
        setIfAny(fields, start_, mimeengine::startKey);
        fields.setObject_forKey(parts_, mimeengine::partsKey);
        fields.setObject_forKey(contents_.seal(used_), mimeengine::contentsKey);
        return fields;
    }

private:
    struct GiveBack {
        void operator()(GByteArray* array) const {
            array->data = nullptr;
            array->len = 0;
            g_byte_array_free(array, TRUE);
        }
    };

    static void setIfAny(NSMutableDictionary& fields, const NSString& value, const char16_t* key) {
        if (!value.isNil())
            fields.setObject_forKey(value, key);
    }

    // Depth first, without recursion.
    void collectParts() {
        std::vector<GMimeObject*> open{root_.get()};
        while (!open.empty()) {
            GMimeObject* const object = open.back();
            open.pop_back();
            if (GMIME_IS_MULTIPART(object)) {
                if (start_.isNil())
                    start_ = startOf(object);
                for (int index = g_mime_multipart_get_count(GMIME_MULTIPART(object)); index-- > 0;)
                    open.push_back(g_mime_multipart_get_part(GMIME_MULTIPART(object), index));
            } else if (GMIME_IS_PART(object)) {
                parts_.addObject(partOf(object));
            }
        }
    }

    static NSString startOf(GMimeObject* multipart) {
        const char* const start =
            g_mime_content_type_get_parameter(g_mime_object_get_content_type(multipart), "start");
        std::string_view text(start ? start : "");
        if (text.starts_with('<') && text.ends_with('>'))
            text = text.substr(1, text.size() - 2);
        return text.empty() ? NSString() : NSString::stringByRepairingUTF8String(text);
    }

    Value partOf(GMimeObject* object) {
        GMimeContentType* const type = g_mime_object_get_content_type(object);
        const char* const subtype = g_mime_content_type_get_media_subtype(type);
        const std::size_t place = used_;
        decode(GMIME_PART(object));
        auto fields = NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSString::stringByRepairingUTF8String(asciiLowerCased(
                  std::string(g_mime_content_type_get_media_type(type)) + '/' + (subtype ? subtype : ""))),
              mimeengine::typeKey},
             {NSNumber::numberWithLongLong(static_cast<long long>(place)), mimeengine::placeKey},
             {NSNumber::numberWithLongLong(static_cast<long long>(used_ - place)), mimeengine::lengthKey}});
        setIfAny(fields, stringOrNil(g_mime_content_type_get_parameter(type, "charset")),
                 mimeengine::charsetKey);
        setIfAny(fields, stringOrNil(g_mime_object_get_content_id(object)), mimeengine::contentIDKey);
        const NSURL address = addressOf(object, "Content-Location");
        setIfAny(fields, address.isNil() ? NSString() : address.absoluteString(), mimeengine::addressKey);
        return fields;
    }

    NSURL addressOf(GMimeObject* object, const char* headerName) const {
        GMimeHeader* const header =
            g_mime_header_list_get_header(g_mime_object_get_header_list(object), headerName);
        const char* const value = header ? g_mime_header_get_raw_value(header) : nullptr;
        if (!value)
            return nullptr;
        const std::string_view raw = value;
        const std::string text =
            raw.find("=?") == raw.npos ? unfolded(raw) : g_mime_object_get_header(object, headerName);
        if (text.size() > maximumAddressLength)
            return nullptr;
        const NSURL address = NSURL::URLWithTolerantString(NSString::stringByRepairingUTF8String(text));
        return address.isNil()
                   ? NSURL()
                   : NSURL::URLWithString_relativeToURL(address.absoluteString(), base_).absoluteURL();
    }

    /// Writes to where the contents of the part before have ended. No encoding makes its bytes fewer, so that those of
    /// all parts have room in as many bytes as the message has; that GMime writes no further is seen to all the same.
    void decode(GMimePart* part) {
        GMimeDataWrapper* const content = g_mime_part_get_content(part);
        const std::size_t room = contents_.bytes().size() - used_;
        if (!content || room == 0)
            return;
        GByteArray* const array = g_byte_array_new();
        array->data = contents_.bytes().data() + used_;
        array->len = static_cast<guint>(room);
        const std::unique_ptr<GByteArray, GiveBack> borrowed(array);
        const Reference<GMimeStream> decoded(g_mime_stream_mem_new_with_byte_array(array));
        g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(decoded.get()), FALSE);
        g_mime_stream_set_bounds(decoded.get(), 0, static_cast<gint64>(room));
        g_mime_data_wrapper_write_to_stream(content, decoded.get());
        used_ += static_cast<std::size_t>(
            std::clamp<gint64>(g_mime_stream_tell(decoded.get()), 0, static_cast<gint64>(room)));
    }

    SealedMemory contents_;
    std::size_t used_ = 0;
    std::unique_ptr<GByteArray, GiveBack> borrowed_;
    Reference<GMimeStream> stream_;
    Reference<GMimeObject> root_;
    NSURL base_;
    NSString start_;
    NSMutableArray parts_ = NSMutableArray::array();
};

} // namespace

void loadMIMELibrary() {
    g_mime_init();
}

Value fieldsOfMIMEMessage(std::string_view bytes) {
    const std::string_view message = messageInBytes(bytes);
    if (message.empty() || !isWithinBounds(message))
        return {};
    return Message(message).fields();
}

bool isTooLargeMIMEMessage(std::string_view bytes) {
    return !isWithinBounds(messageInBytes(bytes));
}

} // namespace kelvo
