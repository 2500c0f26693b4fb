#pragma once

#include "platform/appkit/images/NSImageRep.h"
#include "platform/appkit/images/NSTIFFCompression.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSObject.h"

#include <memory>
#include <optional>
#include <vector>

namespace kelvo {

/// A picture in one form or several. Held by std::shared_ptr.
class NSImage : public NSObject {
public:
    /// Its size is that of its first representation.
    NSImage() = default;
    explicit NSImage(NSSize size) : size_(size) {}

    NSString className() const override { return u"NSImage"; }

    /// How large it is drawn, in points: as it was set, else that of the first representation, else 0 by 0.
    NSSize size() const;
    void setSize(NSSize size) { size_ = size; }
    /// Whether representations are drawn as large as the image is, whatever their own size. At first they are not.
    bool scalesWhenResized() const noexcept { return scalesWhenResized_; }
    void setScalesWhenResized(bool scales) noexcept { scalesWhenResized_ = scales; }

    /// In the order in which they were added; none is null.
    const std::vector<std::shared_ptr<NSImageRep>>& representations() const noexcept {
        return representations_;
    }
    /// Null is not added.
    void addRepresentation(std::shared_ptr<NSImageRep> rep);
    void removeRepresentation(const std::shared_ptr<NSImageRep>& rep);

    /// The bitmaps among the representations as the pages of a TIFF file, as they are, not as large as the image is; see
    /// NSBitmapImageRep. Nil when there is none.
    NSData TIFFRepresentation() const;
    NSData TIFFRepresentationUsingCompression_factor(NSTIFFCompression compression, float factor) const;

private:
    std::optional<NSSize> size_;
    bool scalesWhenResized_ = false;
    std::vector<std::shared_ptr<NSImageRep>> representations_;
};

} // namespace kelvo
