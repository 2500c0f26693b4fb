#pragma once

#include "platform/appkit/NSTextAttachment.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace kelvo {

struct RTFToken;

/// One picture of an RTF document while it is read.
class RTFPicture {
public:
    void apply(const RTFToken& token);
    /// The picture in hexadecimal digits; anything else between them is passed over.
    void appendHexDigits(std::string_view digits);
    void appendBytes(std::string_view bytes) { data_ += bytes; }

    /// The picture fills a shape of this size, in twips, whatever size it states itself. Nothing happens when
    /// the shape has none.
    void fillShape(std::int64_t width, std::int64_t height);

    /// The picture as a file of its own, with the header that its kind of file needs: "picture-1.png". Null
    /// when there is no picture, or one that is no file anywhere (a bitmap of a certain device).
    std::shared_ptr<const NSTextAttachment> attachmentNumbered(std::size_t number) &&;

private:
    const char* kindByContents() const;
    NSSize displaySize() const;

    /// The ending of the file's name; null when the source does not say.
    const char* kind_ = nullptr;
    bool isForDevice_ = false;
    std::int32_t mappingMode_ = 8;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    std::int32_t goalWidth_ = 0;
    std::int32_t goalHeight_ = 0;
    std::int32_t scaleX_ = 100;
    std::int32_t scaleY_ = 100;
    NSSize shapeSize_;
    std::int32_t cropX_ = 0;
    std::int32_t cropY_ = 0;
    /// The digit that waits for its second half; -1: none.
    int digit_ = -1;
    std::string data_;
};

} // namespace kelvo
