#include "importers/structured/XMLStrings.h"

namespace kelvo::importers {
namespace {

/// rss/channel/title, opml/head/title, feed/title
constexpr std::size_t deepestTitle = 3;
constexpr std::size_t longestTitle = 65'536;
constexpr std::size_t mostBytesOfText = 3 * mostUnitsOfText;

} // namespace

void XMLStrings::beginElement(const XMLTag& tag) {
    ++depth_;
    hasElements_ = true;
    hasLineEnd_ = hasLineEnd_ || isBehindEnd_;
    isBehindEnd_ = false;
    const std::string_view name = tag.localName();
    if (name == "title" && depth_ <= deepestTitle && title_.empty())
        titleDepth_ = depth_;
    if (isOutline_ && name == "outline") {
        hasLineEnd_ = true;
        characters(tag.value("text"));
        hasLineEnd_ = true;
    }
}

void XMLStrings::endElement(std::string_view) {
    if (titleDepth_ == depth_)
        titleDepth_ = 0;
    --depth_;
    isBehindEnd_ = true;
}

void XMLStrings::characters(std::string_view text) {
    if (titleDepth_ > 0 && title_.size() < longestTitle)
        title_ += text;
    for (const char byte : text)
        write(byte);
}

void XMLStrings::write(char byte) {
    isBehindEnd_ = false;
    if (byte == '\n') {
        hasLineEnd_ = true;
    } else if (byte == ' ' || byte == '\t' || byte == '\r') {
        hasSpace_ = true;
    } else if (text_.size() <= mostBytesOfText) {
        if (!text_.empty() && (hasLineEnd_ || hasSpace_))
            text_ += hasLineEnd_ ? '\n' : ' ';
        hasLineEnd_ = hasSpace_ = false;
        text_ += byte;
    }
}

} // namespace kelvo::importers
