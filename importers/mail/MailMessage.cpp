#include "importers/mail/MailMessage.h"

#include "importers/mail/FlowedText.h"
#include "importers/mail/MailFile.h"
#include "importers/pages/PageSource.h"
#include "importers/support/Texts.h"
#include "platform/foundation/encodings/EncodingGuess.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/webkit/MIMELines.h"
#include "platform/webkit/mime/MIMEMessage.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {
namespace {

/// GMime tells places in 32 bits, and what is behind is some attachment.
constexpr std::size_t mostBytesOfMessage = std::size_t{512} << 20;
constexpr gint64 mostBytesOfPart = gint64{64} << 20;
constexpr std::size_t mostCorrespondents = 65'536;
constexpr std::size_t mostAttachments = 65'536;
constexpr std::size_t deepestGroup = 16;
constexpr int mostPartsForCharset = 32;
constexpr const char* tooManyParts = "the message has more parts than are read";
constexpr const char* tooLong = "not all of the message is read";

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Reference = std::unique_ptr<T, Unref>;

std::string textOr(const char* text, const char* otherwise = "") {
    return text ? text : otherwise;
}

/// A stream over bytes that are not its own.
class BorrowedStream {
public:
    explicit BorrowedStream(std::string_view bytes) {
        GByteArray* const array = g_byte_array_new();
        array->data = reinterpret_cast<guint8*>(const_cast<char*>(bytes.data()));
        array->len = static_cast<guint>(bytes.size());
        array_.reset(array);
        stream_.reset(g_mime_stream_mem_new_with_byte_array(array));
        g_mime_stream_mem_set_owner(GMIME_STREAM_MEM(stream_.get()), FALSE);
    }

    GMimeStream* get() const { return stream_.get(); }

private:
    struct GiveBack {
        void operator()(GByteArray* array) const {
            array->data = nullptr;
            array->len = 0;
            g_byte_array_free(array, TRUE);
        }
    };

    std::unique_ptr<GByteArray, GiveBack> array_;
    Reference<GMimeStream> stream_;
};

/// Of bytes that no charset is told for: those that GMime's own guess would take from the locale, which is none here.
GMimeParserOptions* options() {
    static GMimeParserOptions* const shared = [] {
        GMimeParserOptions* const made = g_mime_parser_options_new();
        std::array charsets{"utf-8", "windows-1252", "iso-8859-1", static_cast<const char*>(nullptr)};
        g_mime_parser_options_set_fallback_charsets(made, charsets.data());
        return made;
    }();
    return shared;
}

bool isBlank(std::u16string_view text) {
    return std::ranges::all_of(text,
                               [](char16_t unit) { return unit <= u' ' || unit == 0xA0 || unit == 0xFEFF; });
}

void addAddresses(InternetAddressList* list, Correspondents& people, std::size_t depth = 0) {
    const int count = list ? internet_address_list_length(list) : 0;
    for (int index = 0; index < count && people.names.size() < mostCorrespondents; ++index) {
        InternetAddress* const address = internet_address_list_get_address(list, index);
        if (INTERNET_ADDRESS_IS_GROUP(address)) {
            if (depth < deepestGroup)
                addAddresses(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)), people,
                             depth + 1);
        } else {
            people.add(textOr(internet_address_get_name(address)),
                       textOr(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address))));
        }
    }
}

std::string typeOf(GMimeObject* object) {
    GMimeContentType* const type = g_mime_object_get_content_type(object);
    return asciiLowerCased(textOr(g_mime_content_type_get_media_type(type)) + '/' +
                           textOr(g_mime_content_type_get_media_subtype(type)));
}

NSString parameterOf(GMimeObject* object, const char* name) {
    const char* const value = g_mime_content_type_get_parameter(g_mime_object_get_content_type(object), name);
    return value ? stringOf(value) : NSString();
}

/// That of the first text which states one; nil when none of the first parts does.
NSString charsetOfText(GMimeMessage* message) {
    std::vector<GMimeObject*> open{g_mime_message_get_mime_part(message)};
    for (int seen = 0; !open.empty() && seen < mostPartsForCharset; ++seen) {
        GMimeObject* const object = open.back();
        open.pop_back();
        if (GMIME_IS_MULTIPART(object)) {
            GMimeMultipart* const multipart = GMIME_MULTIPART(object);
            for (int index = std::min(g_mime_multipart_get_count(multipart), mostPartsForCharset);
                 index-- > 0;)
                open.push_back(g_mime_multipart_get_part(multipart, index));
        } else if (GMIME_IS_PART(object) && typeOf(object).starts_with("text/")) {
            if (NSString charset = parameterOf(object, "charset"); !charset.isNil())
                return charset;
        }
    }
    return {};
}

struct Free {
    void operator()(char* text) const { g_free(text); }
};

/// A message of bytes that are not its own.
class ParsedMessage {
public:
    explicit ParsedMessage(std::string_view bytes) : stream_(bytes) {
        const Reference<GMimeParser> parser(g_mime_parser_new_with_stream(stream_.get()));
        message_.reset(g_mime_parser_construct_message(parser.get(), options()));
    }

    GMimeMessage* get() const { return message_.get(); }

private:
    BorrowedStream stream_;
    Reference<GMimeMessage> message_;
};

/// Where writers put the header there as it is, it is read once more in the charset of their text.
class Header {
public:
    explicit Header(GMimeMessage* message) : message_(message) {
        const std::unique_ptr<char, Free> written(g_mime_object_get_headers(GMIME_OBJECT(message), nullptr));
        const std::string_view header = written ? std::string_view(written.get()) : std::string_view();
        if (std::ranges::none_of(header, [](char byte) { return (byte & 0x80) != 0; }))
            return;
        if (const auto inUTF8 = headerOfCharset(header, charsetOfText(message))) {
            bytes_ = *inUTF8 + '\n';
            again_.emplace(bytes_);
        }
    }

    GMimeMessage* message() const { return again_ && again_->get() ? again_->get() : message_; }

private:
    GMimeMessage* message_;
    std::string bytes_;
    std::optional<ParsedMessage> again_;
};

/// The parts of a message, in the order in which they are read.
class PartsReading {
public:
    PartsReading(MailMessage& message, std::size_t mostUnits, bool isUTF8, const Deadline& deadline)
        : message_(message), mostUnits_(mostUnits), isUTF8_(isUTF8), deadline_(deadline) {}

    // Without recursion: GMime lets them be nested as deeply as they like.
    void read(GMimeObject* root) {
        if (root)
            open_.push_back(root);
        while (!open_.empty()) {
            if (message_.text.size() > mostUnits_ || deadline_.isOver()) {
                message_.shortfall = tooLong;
                return;
            }
            GMimeObject* const object = open_.back();
            open_.pop_back();
            if (GMIME_IS_MULTIPART(object))
                openMultipart(GMIME_MULTIPART(object));
            else if (GMIME_IS_MESSAGE_PART(object))
                openMessage(g_mime_message_part_get_message(GMIME_MESSAGE_PART(object)));
            else if (GMIME_IS_PART(object))
                readPart(GMIME_PART(object));
        }
    }

private:
    void openMultipart(GMimeMultipart* multipart) {
        const std::string subtype = subtypeOf(GMIME_OBJECT(multipart));
        const int count = g_mime_multipart_get_count(multipart);
        message_.isEncrypted = message_.isEncrypted || subtype == "encrypted";
        if (subtype == "alternative" && openAlternative(multipart, count))
            return;
        for (int index = count; index-- > 0;)
            open_.push_back(g_mime_multipart_get_part(multipart, index));
    }

    /// The same in several forms: what stands there as text is read, unless it is only there for form's sake.
    bool openAlternative(GMimeMultipart* multipart, int count) {
        GMimeObject* best = nullptr;
        for (int index = 0; index < count; ++index) {
            GMimeObject* const part = g_mime_multipart_get_part(multipart, index);
            if (GMIME_IS_PART(part) && typeOf(part) == "text/plain") {
                if (!isBlank(textOf(GMIME_PART(part), false))) {
                    open_.push_back(part);
                    return true;
                }
            } else if (GMIME_IS_MULTIPART(part) || typeOf(part) == "text/html") {
                best = part;
            }
        }
        if (best)
            open_.push_back(best);
        return best != nullptr;
    }

    void openMessage(GMimeMessage* nested) {
        if (!nested)
            return;
        const Header header(nested);
        const std::string subject = textOr(g_mime_message_get_subject(header.message()));
        if (!subject.empty()) {
            attach(subject);
            append(stringOf(subject).characters());
        }
        if (GMimeObject* const part = g_mime_message_get_mime_part(nested))
            open_.push_back(part);
    }

    void readPart(GMimePart* part) {
        const std::string type = typeOf(GMIME_OBJECT(part));
        const std::string name = textOr(g_mime_part_get_filename(part));
        const bool isMarkup = type == "text/html" || type == "application/xhtml+xml";
        if (!g_mime_part_is_attachment(part) && (isMarkup || type == "text/plain" || type == "text/enriched"))
            append(textOf(part, isMarkup || type == "text/enriched"));
        message_.isEncrypted =
            message_.isEncrypted || type == "application/pkcs7-mime" || type == "application/x-pkcs7-mime";
        if (!name.empty())
            attach(name);
    }

    void attach(std::string name) {
        if (message_.attachments.size() < mostAttachments)
            message_.attachments.push_back(std::move(name));
    }

    void append(std::u16string_view piece) {
        while (!piece.empty() && piece.back() <= u' ')
            piece.remove_suffix(1);
        if (piece.empty())
            return;
        if (!message_.text.empty())
            message_.text += u"\n\n";
        message_.text += piece;
    }

    static std::string subtypeOf(GMimeObject* object) {
        return asciiLowerCased(
            textOr(g_mime_content_type_get_media_subtype(g_mime_object_get_content_type(object))));
    }

    static bool says(GMimePart* part, const char* parameter, std::u16string_view value) {
        return equalsASCIIIgnoringCase(parameterOf(GMIME_OBJECT(part), parameter).characters(), value);
    }

    /// No encoding makes its bytes fewer. GMime sees to it itself that it writes no further than there is room.
    static std::string contentsOf(GMimePart* part) {
        GMimeDataWrapper* const content = g_mime_part_get_content(part);
        const gint64 length = content ? g_mime_stream_length(g_mime_data_wrapper_get_stream(content)) : 0;
        std::string bytes(static_cast<std::size_t>(std::clamp<gint64>(length, 0, mostBytesOfPart)), '\0');
        if (bytes.empty())
            return bytes;
        const BorrowedStream decoded(bytes);
        g_mime_stream_set_bounds(decoded.get(), 0, static_cast<gint64>(bytes.size()));
        g_mime_data_wrapper_write_to_stream(content, decoded.get());
        const gint64 written = g_mime_stream_tell(decoded.get());
        bytes.resize(
            static_cast<std::size_t>(std::clamp<gint64>(written, 0, static_cast<gint64>(bytes.size()))));
        return bytes;
    }

    std::u16string textOf(GMimePart* part, bool isMarkup) const {
        const std::string bytes = contentsOf(part);
        const GMimeContentEncoding encoding = g_mime_part_get_content_encoding(part);
        const bool isTranscoded = isUTF8_ && encoding != GMIME_CONTENT_ENCODING_BASE64 &&
                                  encoding != GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE;
        const NSString charset =
            isTranscoded ? NSString(u"utf-8") : parameterOf(GMIME_OBJECT(part), "charset");
        if (isMarkup)
            return textOfMarkup(bytes, charset, nullptr);
        const NSData data = NSData::dataWithBytesNoCopy(
            std::span(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()), nullptr);
        const NSStringEncoding named = encodingOfMailCharset(charset);
        NSStringEncoding found = 0;
        // Senders put "us-ascii" over whatever they have.
        const bool isGuess = named == kCFStringEncodingInvalidId || named == NSASCIIStringEncoding;
        NSString text =
            isGuess ? stringWithTextOfAnyLanguage(data, &found) : stringByRepairingData_encoding(data, named);
        if (text.isNil())
            text = NSString::stringWithLatin1Bytes(bytes);
        std::u16string units(text.characters());
        std::erase(units, u'\r');
        return says(part, "format", u"flowed") ? textOfFlowed(units, says(part, "delsp", u"yes")) : units;
    }

    MailMessage& message_;
    std::size_t mostUnits_;
    bool isUTF8_;
    const Deadline& deadline_;
    std::vector<GMimeObject*> open_;
};

bool isMessage(GMimeMessage* message) {
    GMimeHeaderList* const headers = g_mime_object_get_header_list(GMIME_OBJECT(message));
    return std::ranges::any_of(
        std::array{"From", "To", "Subject", "Date", "Message-ID", "Received", "Return-Path", "MIME-Version",
                   "Delivered-To", "X-Mailer"},
        [&](const char* name) { return g_mime_header_list_contains(headers, name) != FALSE; });
}

void readHeader(GMimeMessage* parsed, MailMessage& message) {
    message.subject = textOr(g_mime_message_get_subject(parsed));
    message.identifier = textOr(g_mime_message_get_message_id(parsed));
    addAddresses(g_mime_message_get_addresses(parsed, GMIME_ADDRESS_TYPE_FROM), message.authors);
    if (message.authors.names.empty())
        addAddresses(g_mime_message_get_addresses(parsed, GMIME_ADDRESS_TYPE_SENDER), message.authors);
    for (const GMimeAddressType type : {GMIME_ADDRESS_TYPE_TO, GMIME_ADDRESS_TYPE_CC, GMIME_ADDRESS_TYPE_BCC})
        addAddresses(g_mime_message_get_addresses(parsed, type), message.recipients);
    if (GDateTime* const date = g_mime_message_get_date(parsed))
        message.sent = static_cast<double>(g_date_time_to_unix(date));
    for (const char* const name : {"X-Mailer", "User-Agent"}) {
        if (message.writer.empty())
            message.writer = textOr(g_mime_object_get_header(GMIME_OBJECT(parsed), name));
    }
    std::string keywords = textOr(g_mime_object_get_header(GMIME_OBJECT(parsed), "Keywords"));
    for (std::string_view rest = keywords; !rest.empty();) {
        const std::size_t end = std::min(rest.find_first_of(",;"), rest.size());
        message.keywords.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

} // namespace

void Correspondents::add(const std::string& name, const std::string& address) {
    const std::string& shown = name.empty() ? address : name;
    // Few have so many that looking through them all takes time.
    constexpr std::size_t mostCompared = 256;
    const auto isNew = [](const std::vector<std::string>& list, const std::string& text) {
        return !text.empty() && (list.size() > mostCompared || std::ranges::find(list, text) == list.end());
    };
    if (isNew(names, shown))
        names.push_back(shown);
    if (isNew(addresses, address))
        addresses.push_back(address);
}

void Correspondents::add(const Correspondents& others) {
    for (const std::string& name : others.names)
        add(name, "");
    for (const std::string& address : others.addresses) {
        if (std::ranges::find(addresses, address) == addresses.end())
            addresses.push_back(address);
    }
}

void loadMailLibrary() {
    loadMIMELibrary();
}

std::optional<MailMessage> readMailMessage(std::string_view bytes, std::size_t mostUnits,
                                           const Deadline& deadline) {
    MailMessage message;
    const std::optional<std::string> transcoded = messageOfUTF16(bytes);
    if (transcoded)
        bytes = *transcoded;
    bytes = messageInBytes(bytes);
    if (bytes.size() > mostBytesOfMessage) {
        bytes = bytes.substr(0, mostBytesOfMessage);
        message.shortfall = tooLong;
    }
    const std::optional<std::string> shortened = messageWithShortHeader(bytes);
    if (shortened) {
        bytes = *shortened;
        message.shortfall = "the header of the message is longer than is read";
    }
    if (isTooLargeMIMEMessage(bytes)) {
        const std::size_t end = std::min(bytes.find("\n\n"), bytes.find("\n\r\n"));
        bytes = bytes.substr(0, end == bytes.npos ? 0 : end + 1);
        message.shortfall = tooManyParts;
        if (isTooLargeMIMEMessage(bytes))
            return std::nullopt;
    }
    const ParsedMessage parsed(bytes);
    if (!parsed.get() || !isMessage(parsed.get()))
        return std::nullopt;
    readHeader(Header(parsed.get()).message(), message);
    PartsReading(message, mostUnits, transcoded.has_value(), deadline)
        .read(g_mime_message_get_mime_part(parsed.get()));
    return message;
}

} // namespace kelvo::importers
