#pragma once

#include "platform/foundation/NSObject.h"

#include <memory>

namespace kelvo {

/// A delegate for finding out what an object would ask its delegate: each message that it is asked about and
/// does not know goes into the system log.
class RespondsToListener final : public NSObject {
public:
    /// The one object, made at the first call. It lasts as long as the process.
    static const std::shared_ptr<RespondsToListener>& sharedInstance();

    NSString className() const override;
    /// As every object answers. The entry in the log is the name of the message.
    bool respondsToSelector(const NSString& selector) const override;
};

} // namespace kelvo
