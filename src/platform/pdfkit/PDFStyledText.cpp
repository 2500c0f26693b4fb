#include "platform/pdfkit/PDFStyledText.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/pdfkit/PDFEngineMessages.h"
#include "platform/pdfkit/PDFFontName.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>

namespace kelvo {
namespace {

using namespace pdfengine;

constexpr double largestFontSize = 4000;
constexpr float defaultFontSize = 12;

[[noreturn]] void throwNonsense() {
    throw NSException(EngineCrashedException, u"The PDF engine has answered nonsense.");
}

/// Sizes come out of products of matrices: 11.99998.
float fontSizeOf(double size) {
    if (!std::isfinite(size) || size <= 0 || size > largestFontSize)
        return defaultFontSize;
    return std::max(0.1F, static_cast<float>(std::round(size * 10) / 10));
}

NSAttributedString::Attributes attributesOfStyle(const NSDictionary& style) {
    const NSString name = style.objectForKey(fontNameKey).string();
    const NSNumber* const size = style.objectForKey(fontSizeKey).numberIfAny();
    const NSNumber* const color = style.objectForKey(colorKey).numberIfAny();
    const NSNumber* const isUnderlined = style.objectForKey(underlinedKey).numberIfAny();
    if (name.isNil() || !size || !color || !isUnderlined)
        throwNonsense();
    auto attributes = std::make_shared<NSTextAttributes>();
    attributes->font = fontWithPDFName(name, fontSizeOf(size->doubleValue()));
    const std::uint32_t rgb = color->unsignedIntValue();
    const auto component = [rgb](int shift) { return static_cast<float>(rgb >> shift & 0xFF) / 255; };
    // Black is what text has that says nothing.
    if ((rgb & 0xFFFFFF) != 0)
        attributes->foregroundColor = NSColor{component(16), component(8), component(0), 1};
    attributes->underlineStyle = isUnderlined->boolValue() ? NSUnderlineStyleSingle : NSUnderlineStyleNone;
    return attributes;
}

std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t place) {
    return static_cast<std::uint32_t>(bytes[place]) | static_cast<std::uint32_t>(bytes[place + 1]) << 8 |
           static_cast<std::uint32_t>(bytes[place + 2]) << 16 |
           static_cast<std::uint32_t>(bytes[place + 3]) << 24;
}

} // namespace

NSAttributedString attributedStringOfStyledText(const NSDictionary& page) {
    const NSString string = page.objectForKey(textKey).string();
    const NSData runData = page.objectForKey(runsKey).data();
    if (string.isNil() || runData.isNil() || runData.length() % bytesOfRun != 0)
        throwNonsense();
    std::vector<NSAttributedString::Attributes> styles;
    for (const Value& style : page.objectForKey(stylesKey).array())
        styles.push_back(attributesOfStyle(style.dictionary()));

    const std::u16string_view text = string;
    NSMutableAttributedString result;
    result.reserve(text.size());
    const std::span<const std::uint8_t> runs = runData.bytes();
    std::size_t covered = 0;
    for (std::size_t place = 0; place < runs.size(); place += bytesOfRun) {
        const std::size_t length = numberAt(runs, place);
        const std::size_t style = numberAt(runs, place + bytesOfRun / 2);
        if (length > text.size() - covered || style >= styles.size())
            throwNonsense();
        result.append(text.substr(covered, length), styles[style]);
        covered += length;
    }
    if (covered != text.size())
        throwNonsense();
    return text.empty() ? NSAttributedString() : std::move(result).copy();
}

} // namespace kelvo
