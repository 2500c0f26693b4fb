#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"

#include <memory>

namespace kelvo {

/// One file of a web page as it came over the network, immutable and shared by reference. Default-constructed
/// it is nil, and everything of nil is nil.
class WebResource {
public:
    WebResource() noexcept = default;
    WebResource(std::nullptr_t) noexcept {}
    /// Each argument may be nil.
    WebResource(NSData data, NSURL URL, NSString MIMEType, NSString textEncodingName, NSString frameName);

    bool isNil() const noexcept { return !fields_; }
    bool isIdenticalTo(const WebResource& other) const noexcept { return fields_ == other.fields_; }

    // Nil where the archive does not say; no part vouches for another.
    NSData data() const;
    /// In an archive that was read, always with a scheme.
    NSURL URL() const;
    /// As it was sent, without parameters ("text/html").
    NSString MIMEType() const;
    /// The charset label that came with the data, which need not be one that exists.
    NSString textEncodingName() const;
    /// The text of data that tells its encoding by a byte-order mark, without the mark; nil when it has none,
    /// when a label came with it, and when it is longer than 1 GiB.
    NSString _stringValue() const;
    /// The name of the frame that this is the main resource of; empty for the page itself.
    NSString frameName() const;

private:
    struct Fields;
    std::shared_ptr<const Fields> fields_;
};

} // namespace kelvo
