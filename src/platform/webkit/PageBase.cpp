#include "platform/webkit/PageBase.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <optional>
#include <string>

namespace kelvo {
namespace {

/// A page's bytes as code units of an ASCII-compatible encoding or of UTF-16: markup is ASCII in both.
class PageUnits {
public:
    PageUnits(std::string_view bytes, const NSString& label) : bytes_(bytes) {
        const std::string name = label.isNil() ? std::string() : asciiLowerCased(label.UTF8String());
        if (bytes.substr(0, 3) == "\xEF\xBB\xBF") {
            start_ = 3;
        } else if (bytes.substr(0, 2) == "\xFF\xFE" || bytes.substr(0, 2) == "\xFE\xFF") {
            start_ = 2;
            width_ = 2;
            isBigEndian_ = bytes[0] == '\xFE';
        } else if (name.rfind("utf-16", 0) == 0) {
            width_ = 2;
            isBigEndian_ = name == "utf-16be";
        }
    }

    std::size_t count() const noexcept { return (bytes_.size() - start_) / width_; }
    /// The unit when it is ASCII, else 0x7F, which no markup has.
    char at(std::size_t index) const noexcept {
        const std::size_t place = placeOf(index);
        if (width_ == 1)
            return static_cast<unsigned char>(bytes_[place]) < 0x80 ? bytes_[place] : '\x7F';
        const char low = bytes_[place + (isBigEndian_ ? 1 : 0)];
        const char high = bytes_[place + (isBigEndian_ ? 0 : 1)];
        return high == 0 && static_cast<unsigned char>(low) < 0x80 ? low : '\x7F';
    }
    std::size_t placeOf(std::size_t index) const noexcept { return start_ + index * width_; }
    std::string ascii(std::size_t begin, std::size_t end) const {
        std::string text;
        for (std::size_t index = begin; index < end; ++index)
            text += at(index);
        return text;
    }
    std::string encoded(const std::string& text) const {
        if (width_ == 1)
            return text;
        std::string units;
        for (const char unit : text) {
            if (isBigEndian_)
                units += {'\0', unit};
            else
                units += {unit, '\0'};
        }
        return units;
    }

private:
    std::string_view bytes_;
    std::size_t start_ = 0;
    std::size_t width_ = 1;
    bool isBigEndian_ = false;
};

bool isBlank(char unit) {
    return unit == ' ' || unit == '\t' || unit == '\n' || unit == '\r' || unit == '\f';
}

/// `lowerCase` stands there, in whatever letters.
bool matches(const PageUnits& page, std::size_t at, std::string_view lowerCase) {
    if (page.count() - at < lowerCase.size())
        return false;
    for (const char wanted : lowerCase) {
        if (asciiLowerCase(page.at(at++)) != wanted)
            return false;
    }
    return true;
}

std::size_t find(const PageUnits& page, std::size_t at, std::string_view lowerCase) {
    while (at < page.count() && !matches(page, at, lowerCase))
        ++at;
    return at;
}

/// `name` is the whole name of the tag that begins there with "<".
bool isTag(const PageUnits& page, std::size_t at, std::string_view name) {
    if (!matches(page, at + 1, name))
        return false;
    const std::size_t end = at + 1 + name.size();
    return end >= page.count() || isBlank(page.at(end)) || page.at(end) == '>' || page.at(end) == '/';
}

/// The place after the tag's ">"; one within quotes does not count.
std::size_t endOfTag(const PageUnits& page, std::size_t at) {
    char quote = 0;
    for (; at < page.count(); ++at) {
        const char unit = page.at(at);
        if (quote) {
            if (unit == quote)
                quote = 0;
        } else if (unit == '>') {
            return at + 1;
        } else if ((unit == '"' || unit == '\'') && at > 0 &&
                   (page.at(at - 1) == '=' || isBlank(page.at(at - 1)))) {
            quote = unit;
        }
    }
    return at;
}

/// The place after the comment or declaration that begins there, or `at` itself.
std::size_t skipDeclaration(const PageUnits& page, std::size_t at) {
    if (matches(page, at, "<!--"))
        return std::min(find(page, at + 4, "-->") + 3, page.count());
    if (matches(page, at, "<!") || matches(page, at, "<?"))
        return std::min(find(page, at, ">") + 1, page.count());
    return at;
}

/// Where the contents of the head begin: earlier, an element would end the search for a document
/// type.
std::size_t startOfHead(const PageUnits& page) {
    std::size_t at = 0;
    for (;;) {
        while (at < page.count() && isBlank(page.at(at)))
            ++at;
        std::size_t next = skipDeclaration(page, at);
        if (next == at && at < page.count() && (isTag(page, at, "html") || isTag(page, at, "head")))
            next = endOfTag(page, at);
        if (next == at)
            return at;
        at = next;
    }
}

struct WrittenReference {
    std::string text;
    char quote = '"';
};

/// The href of the tag between the two places.
std::optional<WrittenReference> hrefOfTag(const PageUnits& page, std::size_t at, std::size_t end) {
    while (at < end) {
        while (at < end && (isBlank(page.at(at)) || page.at(at) == '/'))
            ++at;
        const std::size_t name = at;
        while (at < end && !isBlank(page.at(at)) && page.at(at) != '=' && page.at(at) != '>' &&
               page.at(at) != '/')
            ++at;
        const bool isHref = at - name == 4 && matches(page, name, "href");
        while (at < end && isBlank(page.at(at)))
            ++at;
        if (at >= end || page.at(at) != '=') {
            at = std::max(at, name + 1);
            continue;
        }
        ++at;
        while (at < end && isBlank(page.at(at)))
            ++at;
        WrittenReference value;
        std::size_t begin = at;
        if (at < end && (page.at(at) == '"' || page.at(at) == '\'')) {
            value.quote = page.at(at);
            begin = ++at;
            while (at < end && page.at(at) != value.quote)
                ++at;
        } else {
            while (at < end && !isBlank(page.at(at)) && page.at(at) != '>')
                ++at;
        }
        value.text = page.ascii(begin, at);
        if (isHref)
            return value;
        ++at;
    }
    return std::nullopt;
}

/// The reference of the first base element that has one. Text of elements that hold no markup is passed over.
std::optional<WrittenReference> ownBase(const PageUnits& page, std::size_t at) {
    constexpr std::string_view withoutMarkup[] = {"script",   "style",    "title",
                                                  "textarea", "template", "noscript"};
    for (; at < page.count(); ++at) {
        if (page.at(at) != '<')
            continue;
        if (const std::size_t next = skipDeclaration(page, at); next != at) {
            at = next - 1;
        } else if (isTag(page, at, "base")) {
            const std::size_t end = endOfTag(page, at);
            if (auto reference = hrefOfTag(page, at + 5, end))
                return reference;
        } else {
            for (const std::string_view name : withoutMarkup) {
                if (isTag(page, at, name)) {
                    at = find(page, endOfTag(page, at), "</" + std::string(name));
                    break;
                }
            }
        }
    }
    return std::nullopt;
}

bool isAbsolute(std::string_view reference) {
    const std::size_t colon = reference.find(':');
    return colon != std::string_view::npos && colon > 0 && isASCIILetter(reference[0]) &&
           reference.find_first_of("/?#\x7F ") > colon;
}

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \t\n\r\f");
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find_last_not_of(" \t\n\r\f") + 1 - begin);
}

std::string escaped(const NSString& address) {
    std::string text;
    for (const char unit : address.UTF8String())
        text += unit == '&' ? std::string("&amp;") : unit == '"' ? std::string("%22") : std::string(1, unit);
    return text;
}

} // namespace

NSData pageByPlacingBase(const NSData& page, const NSString& textEncodingName, const NSURL& base) {
    const std::string_view bytes(reinterpret_cast<const char*>(page.bytes().data()), page.length());
    const PageUnits units(bytes, textEncodingName);
    const std::size_t place = startOfHead(units);

    std::string reference(nowhereURL);
    char quote = '"';
    if (!base.isNil())
        reference = escaped(base.absoluteString());
    if (const auto own = ownBase(units, place)) {
        const std::string written = trimmed(own->text);
        if (isAbsolute(written)) {
            reference = written;
            quote = own->quote;
        } else if (!base.isNil()) {
            const NSURL resolved = NSURL::URLWithString_relativeToURL(
                NSURL::URLWithTolerantString(NSString::stringByRepairingUTF8String(written)).relativeString(),
                base);
            if (!resolved.isNil())
                reference = escaped(resolved.absoluteString());
        }
    }
    const std::string element = "<base href=" + std::string(1, quote) + reference + quote + ">";

    const std::size_t at = units.placeOf(place);
    std::string placed;
    placed.reserve(bytes.size() + 2 * element.size());
    placed += bytes.substr(0, at);
    placed += units.encoded(element);
    placed += bytes.substr(at);
    return NSData::dataWithBytesNoCopy(std::move(placed));
}

} // namespace kelvo
