#pragma once

#include "platform/appkit/images/NSImageRep.h"
#include "platform/appkit/images/NSTIFFCompression.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/NSString.h"

#include <memory>
#include <optional>
#include <vector>

namespace kelvo {

/// A picture in one form or several. Held by std::shared_ptr. What engines do to whoever asks them is thrown by what
/// draws or decodes.
class NSImage : public NSObject {
public:
    /// Its size is that of its first representation.
    NSImage() = default;
    explicit NSImage(NSSize size) : size_(size) {}

    /// The image of a file, with all forms that are in it (NSImageRep::imageRepsWithData). Null when the file cannot be
    /// read; without representations when it is no image.
    static std::shared_ptr<NSImage> initByReferencingFile(const NSString& path);
    /// The same of the bytes of a file; null for nil, and when they are no image.
    static std::shared_ptr<NSImage> initWithData(const NSData& data);
    /// The same representations, and settings of its own; it has no name.
    std::shared_ptr<NSImage> copy() const;

    NSString className() const override { return u"NSImage"; }

    // Images by name, of this process.

    /// The image that has the name; else one of the application's image resources, which has it from then on. Null when
    /// there is none.
    static std::shared_ptr<NSImage> imageNamed(const NSString& name);
    /// False when another image that somebody still has goes by the name, and for nil. Without a name (nil) it goes by
    /// none any more.
    bool setName(const NSString& name);
    const NSString& name() const noexcept { return name_; }

    /// How large it is drawn, in points: as it was set, else that of the first representation, else 0 by 0.
    NSSize size() const;
    void setSize(NSSize size) { size_ = size; }
    /// Whether representations are drawn as large as the image is, whatever their own size. At first they are not.
    bool scalesWhenResized() const noexcept { return scalesWhenResized_; }
    void setScalesWhenResized(bool scales) noexcept { scalesWhenResized_ = scales; }
    /// What stands behind what is drawn by drawRepresentation_inRect; at first nothing.
    NSColor backgroundColor() const noexcept { return backgroundColor_; }
    void setBackgroundColor(NSColor color) noexcept { backgroundColor_ = color; }
    /// Whether what is cached of it is its own; kept for who asks, since every image's is here.
    bool isCachedSeparately() const noexcept { return isCachedSeparately_; }
    void setCachedSeparately(bool separately) noexcept { isCachedSeparately_ = separately; }

    /// In the order in which they were added; none is null.
    const std::vector<std::shared_ptr<NSImageRep>>& representations() const noexcept {
        return representations_;
    }
    /// Null is not added.
    void addRepresentation(std::shared_ptr<NSImageRep> rep);
    void removeRepresentation(const std::shared_ptr<NSImageRep>& rep);
    /// What shows most of it on a screen: a description, the last of several; else the most pixels in a row, the first
    /// of equals. Null when there are none.
    std::shared_ptr<NSImageRep> bestRepresentationForDevice() const;

    // What follows draws into the current context, at its place and with its state, and does nothing where there is none.
    // False when something could not be drawn.

    /// Fills the rectangle with the background colour, unless that is clear, and draws the representation into it.
    bool drawRepresentation_inRect(const NSImageRep& rep, NSRect rect) const;
    /// The part is in points of the image; one without an extent is the whole image.
    bool drawInRect_fromRect_operation_fraction(NSRect rect, NSRect part, NSCompositingOperation operation,
                                                float fraction) const;
    /// With its bottom left corner at the point.
    bool compositeToPoint_operation_fraction(NSPoint point, NSCompositingOperation operation,
                                             float fraction) const;

    /// From now on what is drawn is drawn onto the image. False when it cannot be drawn on: its size is none, or too large
    /// (see NSGraphicsContext::contextOfSize). Whatever was current is so again after unlockFocus, and what was drawn, as
    /// one NSCachedImageRep, is all that the image has then.
    bool lockFocus();
    void unlockFocus();

    /// What is made of pixels among the representations as the pages of a TIFF file, as they are, not as large as the image
    /// is; see NSBitmapImageRep. Where there is nothing of that kind, the image as it is drawn. Nil when there is nothing
    /// to draw.
    NSData TIFFRepresentation() const;
    NSData TIFFRepresentationUsingCompression_factor(NSTIFFCompression compression, float factor) const;

private:
    struct Focus {
        std::shared_ptr<NSGraphicsContext> context;
        std::shared_ptr<NSGraphicsContext> before;
    };

    std::optional<NSSize> size_;
    bool scalesWhenResized_ = false;
    bool isCachedSeparately_ = false;
    NSColor backgroundColor_{0, 0, 0, 0};
    NSString name_;
    std::vector<std::shared_ptr<NSImageRep>> representations_;
    std::vector<Focus> focus_;
};

/// Draws onto an image for as long as it stands, also when what is drawn throws.
class FocusOnImage {
public:
    explicit FocusOnImage(NSImage& image) : image_(image.lockFocus() ? &image : nullptr) {}
    FocusOnImage(const FocusOnImage&) = delete;
    FocusOnImage& operator=(const FocusOnImage&) = delete;
    ~FocusOnImage() {
        if (image_)
            image_->unlockFocus();
    }
    explicit operator bool() const noexcept { return image_; }

private:
    NSImage* image_;
};

} // namespace kelvo
