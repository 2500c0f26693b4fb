#pragma once

#include "platform/foundation/NSObject.h"

namespace kelvo {

/// The application object of the process. It exists so that what needs one (a display, the document readers)
/// finds it; by itself it does nothing.
class NSApplication final : public NSObject {
public:
    /// The one object, made at the first call. It lasts as long as the process.
    static const std::shared_ptr<NSApplication>& sharedApplication();

    NSString className() const override;

private:
    NSApplication() = default;
};

} // namespace kelvo
