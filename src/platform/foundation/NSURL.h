#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <memory>

namespace KELVO_PUBLIC kelvo {

/// An immutable URL, shared by reference. Default-constructed it is nil, and every component of nil is nil.
///
/// Components are parts of the string as it stands: percent escapes are neither added nor removed unless an
/// operation says so.
class NSURL {
public:
    NSURL() noexcept = default;
    NSURL(std::nullptr_t) noexcept {}

    /// Strict after RFC 3986 (a URI or a relative reference): nil for nil, the empty string, and any string
    /// that does not match its grammar (blanks, non-ASCII units, broken percent escapes, brackets outside an
    /// IP literal, a port that is no number, …). Nothing is escaped or repaired.
    static NSURL URLWithString(const NSString& string);
    /// The same, kept relative to `base` (which may be nil): see absoluteURL. With a base the empty string is
    /// a reference to the base itself.
    static NSURL URLWithString_relativeToURL(const NSString& string, const NSURL& base);
    /// Tolerant, for addresses found in documents: white space around is dropped, line ends and tabs inside
    /// are dropped, and every unit that RFC 3986 does not allow where it stands is percent-escaped as UTF-8
    /// (unpaired surrogates as U+FFFD). Nil only for nil, for nothing but white space, and where escaping
    /// cannot help: a port that is no number, brackets in place of the host that hold no IP address.
    static NSURL URLWithTolerantString(const NSString& string);
    /// A file URL; the path is made absolute against the working folder. Names that are not UTF-8 keep their
    /// bytes. Nil for nil and for the empty string. A path that is a folder on the disk gets a slash at its
    /// end.
    static NSURL fileURLWithPath(const NSString& path);

    bool isNil() const noexcept { return !parts_; }
    bool isIdenticalTo(const NSURL& other) const noexcept { return parts_ == other.parts_; }

    /// The string after resolution against the base (RFC 3986, 5.2).
    NSString absoluteString() const;
    /// The string as it was given, not resolved.
    NSString relativeString() const;
    /// The base, which is always absolute itself; nil when the URL has none.
    NSURL baseURL() const;
    /// The receiver itself when it has no base.
    NSURL absoluteURL() const;

    // The components of the absolute URL: nil for one that is absent, the empty string for one that is empty.
    /// Without the colon, in the letters it was written in.
    NSString scheme() const;
    /// Everything after the scheme's colon.
    NSString resourceSpecifier() const;
    NSString user() const;
    NSString password() const;
    /// Percent escapes decoded, and without the brackets of an IP literal. Nil when there is no authority.
    NSString host() const;
    /// The port, or -1 when there is none, or none that fits 0 to 65535.
    int port() const;
    /// The raw path, percent escapes left as they are; query and fragment are not part of it. Empty, not nil,
    /// for a hierarchical URL without a path; nil for an opaque one ("mailto:x").
    NSString rawPath() const;
    /// The path with percent escapes decoded (for a file URL as file-system bytes, see NSFileManager; else as
    /// UTF-8, repaired with U+FFFD) and without slashes at the end. Nil for an opaque URL.
    NSString path() const;
    NSString query() const;
    NSString fragment() const;

    /// The scheme is "file", in whatever letters.
    bool isFileURL() const;
    /// The last component of the raw path, decoded; "/" for the root; empty for an empty path; nil for an
    /// opaque URL.
    NSString lastPathComponent() const;
    /// The text after the last dot of the last component; nil when there is none, which is also so for a dot
    /// at the start (it hides a file) and at the end.
    NSString pathExtension() const;

    /// The same strings and equal bases.
    KELVO_PUBLIC_FRIEND bool operator==(const NSURL& left, const NSURL& right);

private:
    struct Parts;
    static NSURL make(const NSString& string, const NSURL& base);
    explicit NSURL(std::shared_ptr<const Parts> parts)
        : parts_(static_cast<std::shared_ptr<const Parts>&&>(parts)) {}

    std::shared_ptr<const Parts> parts_;
};

} // namespace kelvo
