#include "platform/appkit/html/HTMLAttributes.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/html/HTMLFontFamilies.h"
#include "platform/appkit/html/HTMLParagraphs.h"
#include "platform/foundation/NSURL.h"

#include <array>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr int leastBoldWeight = 600;
constexpr std::size_t longestFileName = 100;

/// Names of pictures that have none of their own, or one that does not say what they are.
NSString extensionOfMIMEType(const NSString& type) {
    constexpr std::pair<std::u16string_view, const char16_t*> extensions[] = {
        {u"image/png", u"png"},   {u"image/jpeg", u"jpg"},   {u"image/jpg", u"jpg"},
        {u"image/gif", u"gif"},   {u"image/webp", u"webp"},  {u"image/svg+xml", u"svg"},
        {u"image/bmp", u"bmp"},   {u"image/x-icon", u"ico"}, {u"image/vnd.microsoft.icon", u"ico"},
        {u"image/tiff", u"tiff"}, {u"image/avif", u"avif"},  {u"image/apng", u"png"}};
    for (const auto& [name, extension] : extensions) {
        if (name == type.characters())
            return extension;
    }
    return u"image";
}

/// Rich text knows no opacity.
NSColor overPaper(const NSColor& color, const std::optional<NSColor>& background) {
    const NSColor paper = background.value_or(NSColor{1, 1, 1, 1});
    const auto mixed = [&](float own, float below) { return own * color.alpha + below * (1 - color.alpha); };
    return {mixed(color.red, paper.red), mixed(color.green, paper.green), mixed(color.blue, paper.blue), 1};
}

NSString fileNameOfImage(const RenderedPage::Image& image) {
    const NSURL url = NSURL::URLWithTolerantString(image.url);
    const NSString name = url.lastPathComponent();
    const std::u16string_view units = name.characters();
    const std::size_t dot = units.rfind(u'.');
    const bool isUsable = !url.scheme().isNil() && url.scheme().characters() != u"data" && dot != 0 &&
                          units.size() <= longestFileName &&
                          units.find_first_of(u"/\\:*?\"<>|") == std::u16string_view::npos && !units.empty();
    const std::u16string extension(extensionOfMIMEType(image.mimeType).characters());
    if (!isUsable)
        return NSString(u"image." + extension);
    return dot == std::u16string_view::npos ? NSString(std::u16string(units) + u"." + extension) : name;
}

/// Styles that look alike in two lists or tables are two: with one for both, a list would go on counting where
/// another has ended, and two tables would be one.
bool isSameStyle(const NSParagraphStyle& left, const NSParagraphStyle& right) {
    return left.textLists == right.textLists && left.textBlocks == right.textBlocks && left == right;
}

/// Gives the paragraphs of a page their attributes: equal ones share one object.
class AttributeWriter {
public:
    AttributeWriter(const RenderedPage& page, const HTMLParagraphs& paragraphs)
        : page_(page), paragraphs_(paragraphs), fonts_(page.textStyles.size()) {}

    NSAttributedString write();

private:
    using Attributes = NSMutableAttributedString::Attributes;

    Attributes attributesOfRun(const HTMLParagraphs::Run& run);
    NSTextAttributes attributesOfStyle(std::uint32_t textStyle);
    std::shared_ptr<const NSTextAttachment> attachmentOfImage(std::uint32_t image);
    void setStyle(const NSParagraphStyle& style);

    const RenderedPage& page_;
    const HTMLParagraphs& paragraphs_;
    std::vector<std::optional<HTMLFontFamily>> fonts_;
    std::unordered_map<std::uint32_t, std::shared_ptr<const NSTextAttachment>> attachments_;
    /// By address: a picture that the page shows more than once is one file.
    std::unordered_map<std::string, std::shared_ptr<const NSFileWrapper>> wrappers_;

    struct KnownStyle {
        std::shared_ptr<const NSParagraphStyle> style;
        std::unordered_map<std::uint32_t, Attributes> byTextStyle;
    };
    /// The paragraph styles used last, the latest first: pages go back and forth between a few.
    std::array<KnownStyle, 16> known_;
};

void AttributeWriter::setStyle(const NSParagraphStyle& style) {
    std::size_t place = 0;
    const auto isKnownAt = [&](std::size_t index) {
        return known_[index].style && isSameStyle(*known_[index].style, style);
    };
    while (place + 1 < known_.size() && !isKnownAt(place))
        ++place;
    if (!isKnownAt(place)) {
        known_[place].style = std::make_shared<const NSParagraphStyle>(style);
        known_[place].byTextStyle.clear();
    }
    for (; place > 0; --place)
        std::swap(known_[place], known_[place - 1]);
}

NSTextAttributes AttributeWriter::attributesOfStyle(std::uint32_t textStyle) {
    NSTextAttributes attributes;
    attributes.font.familyName = u"Times";
    attributes.paragraphStyle = known_[0].style;
    if (textStyle >= page_.textStyles.size())
        return attributes;
    const RenderedPage::TextStyle& style = page_.textStyles[textStyle];
    std::optional<HTMLFontFamily>& family = fonts_[textStyle];
    if (!family)
        family = fontFamilyOfList(style.fontFamilies.characters());
    attributes.font.familyName = family->name;
    attributes.font.isFixedPitch = family->isFixedPitch;
    attributes.font.pointSize = style.fontSize;
    attributes.font.isBold = style.fontWeight >= leastBoldWeight;
    attributes.font.isItalic = style.isItalic;
    if (style.backgroundColor)
        attributes.backgroundColor = overPaper(*style.backgroundColor, std::nullopt);
    if (style.color && *style.color != NSColor{0, 0, 0, 1})
        attributes.foregroundColor = overPaper(*style.color, attributes.backgroundColor);
    if (style.isDoublyUnderlined)
        attributes.underlineStyle = NSUnderlineStyleDouble;
    else if (style.isUnderlined)
        attributes.underlineStyle = NSUnderlineStyleSingle;
    if (style.isStruckThrough)
        attributes.strikethroughStyle = NSUnderlineStyleSingle;
    attributes.superscript = style.superscript;
    attributes.kern = style.letterSpacing;
    if (style.link.length() > 0)
        attributes.link = style.link;
    return attributes;
}

std::shared_ptr<const NSTextAttachment> AttributeWriter::attachmentOfImage(std::uint32_t index) {
    std::shared_ptr<const NSTextAttachment>& known = attachments_[index];
    if (known)
        return known;
    const RenderedPage::Image& image = page_.images[index];
    std::shared_ptr<const NSFileWrapper> wrapper;
    const std::string address = image.url.UTF8String();
    if (!address.empty())
        wrapper = wrappers_[address];
    if (!wrapper) {
        const auto made = NSFileWrapper::initRegularFileWithContents(image.data);
        made->setPreferredFilename(fileNameOfImage(image));
        wrapper = made;
        if (!address.empty())
            wrappers_[address] = wrapper;
    }
    auto attachment = std::make_shared<NSTextAttachment>();
    attachment->fileWrapper = wrapper;
    attachment->displaySize = image.size;
    return known = attachment;
}

AttributeWriter::Attributes AttributeWriter::attributesOfRun(const HTMLParagraphs::Run& run) {
    if (run.image != HTMLParagraphs::noImage) {
        NSTextAttributes attributes = attributesOfStyle(run.textStyle);
        attributes.attachment = attachmentOfImage(run.image);
        return std::make_shared<const NSTextAttributes>(std::move(attributes));
    }
    Attributes& attributes = known_[0].byTextStyle[run.textStyle];
    if (!attributes)
        attributes = std::make_shared<const NSTextAttributes>(attributesOfStyle(run.textStyle));
    return attributes;
}

NSAttributedString AttributeWriter::write() {
    NSMutableAttributedString text;
    std::size_t at = 0;
    std::size_t end = 0;
    auto paragraph = paragraphs_.paragraphs.begin();
    for (const HTMLParagraphs::Run& run : paragraphs_.runs) {
        if (at == end && paragraph != paragraphs_.paragraphs.end()) {
            setStyle(paragraph->style);
            end += paragraph->length;
            ++paragraph;
        }
        text.append(std::u16string_view(paragraphs_.text).substr(at, run.length), attributesOfRun(run));
        at += run.length;
    }
    return std::move(text).copy();
}

} // namespace

NSAttributedString attributedStringOfPage(const RenderedPage& page) {
    const HTMLParagraphs paragraphs = paragraphsOfPage(page);
    return AttributeWriter(page, paragraphs).write();
}

} // namespace kelvo
