#include "platform/foundation/NSURL.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/RFC3986.h"
#include "platform/foundation/units/ASCII.h"

#include <optional>
#include <utility>

namespace kelvo {

struct NSURL::Parts {
    NSString relative;
    NSURL base;
    NSString absolute;
    rfc3986::Components components; // views into `absolute`

    bool isOpaque() const {
        return components.scheme && !components.authority && !components.path.starts_with(u'/');
    }
    bool isFile() const { return equalsASCIIIgnoringCase(components.scheme.value_or(u""), u"file"); }
    NSString decoded(std::u16string_view text) const {
        const std::string bytes = rfc3986::decodePercentEscapes(text);
        return isFile() ? NSFileManager::defaultManager().stringWithFileSystemRepresentation(bytes)
                        : NSString::stringByRepairingUTF8String(bytes);
    }
};

namespace {

// Unicode's White_Space, and the control characters that address bars drop with it.
bool isWhiteSpaceOrControl(char16_t unit) {
    return unit <= 0x20 || unit == 0x85 || unit == 0xA0 || unit == 0x1680 ||
           (unit >= 0x2000 && unit <= 0x200A) || unit == 0x2028 || unit == 0x2029 || unit == 0x202F ||
           unit == 0x205F || unit == 0x3000;
}

NSString stringOrNil(const std::optional<std::u16string_view>& text) {
    return text ? NSString(*text) : NSString();
}

} // namespace

NSURL NSURL::make(const NSString& string, const NSURL& base) {
    const auto reference = rfc3986::parse(string);
    if (!reference)
        return nullptr;
    auto parts = std::make_shared<Parts>();
    parts->relative = string;
    if (base.isNil()) {
        parts->absolute = string;
        parts->components = *reference;
    } else {
        // A base that is absolute itself never makes a chain of bases.
        parts->base = base.absoluteURL();
        parts->absolute = rfc3986::resolve(*reference, parts->base.parts_->components).takeString();
        auto resolved = rfc3986::parse(parts->absolute);
        if (!resolved)
            return nullptr;
        parts->components = *resolved;
    }
    return NSURL(std::shared_ptr<const Parts>(std::move(parts)));
}

NSURL NSURL::URLWithString(const NSString& string) {
    return string.isEmpty() ? NSURL() : make(string, nullptr);
}

NSURL NSURL::URLWithString_relativeToURL(const NSString& string, const NSURL& base) {
    return string.isNil() || (string.isEmpty() && base.isNil()) ? NSURL() : make(string, base);
}

NSURL NSURL::URLWithTolerantString(const NSString& string) {
    std::u16string_view text = string;
    while (!text.empty() && isWhiteSpaceOrControl(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isWhiteSpaceOrControl(text.back()))
        text.remove_suffix(1);
    if (text.empty())
        return nullptr;
    NSMutableString joined;
    if (text.find_first_of(u"\t\n\r") != text.npos) {
        joined = NSMutableString::stringWithCapacity(text.size());
        for (const char16_t unit : text) {
            if (unit != '\t' && unit != '\n' && unit != '\r')
                joined.appendCharacter(unit);
        }
        text = joined;
    }
    NSMutableString escaped = rfc3986::escapeToMatch(text);
    return escaped.isNil() ? NSURL() : make(escaped.takeString(), nullptr);
}

NSURL NSURL::fileURLWithPath(const NSString& path) {
    const NSFileManager& files = NSFileManager::defaultManager();
    auto bytes = files.fileSystemRepresentationWithPath(path);
    if (!bytes || bytes->empty())
        return nullptr;
    if (bytes->front() != '/') {
        const auto folder = files.fileSystemRepresentationWithPath(files.currentDirectoryPath());
        if (!folder)
            return nullptr;
        bytes->insert(0, folder->ends_with('/') ? *folder : *folder + '/');
    }
    bool isFolder = false;
    if (bytes->back() != '/' && files.fileExistsAtPath_isDirectory(path, &isFolder) && isFolder)
        bytes->push_back('/');
    NSMutableString string = NSMutableString::stringWithCharacters(u"file://");
    rfc3986::appendEscapedPath(string, *bytes);
    return make(string.takeString(), nullptr);
}

NSString NSURL::absoluteString() const {
    return parts_ ? parts_->absolute : NSString();
}

NSString NSURL::relativeString() const {
    return parts_ ? parts_->relative : NSString();
}

NSURL NSURL::baseURL() const {
    return parts_ ? parts_->base : NSURL();
}

NSURL NSURL::absoluteURL() const {
    return parts_ && !parts_->base.isNil() ? make(parts_->absolute, nullptr) : *this;
}

NSString NSURL::scheme() const {
    return parts_ ? stringOrNil(parts_->components.scheme) : NSString();
}

NSString NSURL::resourceSpecifier() const {
    if (!parts_ || !parts_->components.scheme)
        return nullptr;
    return parts_->absolute.substringFromIndex(parts_->components.scheme->size() + 1);
}

NSString NSURL::user() const {
    return parts_ ? stringOrNil(parts_->components.user) : NSString();
}

NSString NSURL::password() const {
    return parts_ ? stringOrNil(parts_->components.password) : NSString();
}

NSString NSURL::host() const {
    if (!parts_ || !parts_->components.host)
        return nullptr;
    std::u16string_view host = *parts_->components.host;
    if (host.starts_with(u'['))
        host = host.substr(1, host.size() - 2);
    return NSString::stringByRepairingUTF8String(rfc3986::decodePercentEscapes(host));
}

int NSURL::port() const {
    if (!parts_ || !parts_->components.port || parts_->components.port->empty())
        return -1;
    int port = 0;
    for (const char16_t digit : *parts_->components.port) {
        port = port * 10 + (digit - '0');
        if (port > 65535)
            return -1;
    }
    return port;
}

NSString NSURL::rawPath() const {
    return parts_ && !parts_->isOpaque() ? NSString(parts_->components.path) : NSString();
}

NSString NSURL::path() const {
    if (!parts_ || parts_->isOpaque())
        return nullptr;
    const NSString decoded = parts_->decoded(parts_->components.path);
    return decoded.substringToIndex(withoutSlashesAtEnd(decoded).size());
}

NSString NSURL::query() const {
    return parts_ ? stringOrNil(parts_->components.query) : NSString();
}

NSString NSURL::fragment() const {
    return parts_ ? stringOrNil(parts_->components.fragment) : NSString();
}

bool NSURL::isFileURL() const {
    return parts_ && parts_->isFile();
}

NSString NSURL::lastPathComponent() const {
    if (!parts_ || parts_->isOpaque())
        return nullptr;
    const std::u16string_view path = withoutSlashesAtEnd(parts_->components.path);
    return path == u"/" ? NSString(path) : parts_->decoded(path.substr(path.rfind(u'/') + 1));
}

NSString NSURL::pathExtension() const {
    const NSString name = lastPathComponent();
    const std::size_t dot = name.characters().rfind(u'.');
    // A dot at the start hides a file, and nothing follows one at the end.
    if (dot == std::u16string_view::npos || dot == 0 || dot + 1 == name.length())
        return nullptr;
    return name.substringFromIndex(dot + 1);
}

bool operator==(const NSURL& left, const NSURL& right) {
    if (left.parts_ == right.parts_)
        return true;
    return left.parts_ && right.parts_ && left.parts_->relative == right.parts_->relative &&
           left.parts_->base == right.parts_->base;
}

} // namespace kelvo
