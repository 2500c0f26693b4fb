#include "markup/Html2Text.h"

#include "markup/PlainTextHandler.h"
#include "markup/SimplePlainTextHandler.h"
#include "platform/foundation/NSRange.h"
#include "text/FoldingTables.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace kelvo {

namespace {

constexpr std::size_t unitsPerCharacter = 4;
constexpr std::size_t pageSizeInBytes = 4096;

/// Room for the output. What is never written of a large block never becomes resident; for pages of common
/// size a block is kept from one conversion to the next, because mapping it anew and touching its pages would
/// cost more than the conversion.
class OutputBuffer {
public:
    explicit OutputBuffer(std::size_t sizeInBytes) : isKept_(sizeInBytes <= keptSizeInBytes) {
        if (isKept_)
            units_ = std::exchange(kept().units, nullptr);
        if (!units_)
            units_ = static_cast<char16_t*>(std::malloc(isKept_ ? keptSizeInBytes : sizeInBytes));
    }
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;
    ~OutputBuffer() {
        if (isKept_ && !kept().units)
            kept().units = units_;
        else
            std::free(units_);
    }

    char16_t* units() const { return units_; }

    NSString takeString(std::size_t length) {
        if (isKept_)
            return NSString(std::u16string_view(units_, length));
        char16_t* units = std::exchange(units_, nullptr);
        const std::size_t size = std::max<std::size_t>(length, 1) * sizeof(char16_t);
        if (auto* shrunk = static_cast<char16_t*>(std::realloc(units, size)))
            units = shrunk;
        return NSString::stringWithCharactersNoCopy(units, length);
    }

private:
    static constexpr std::size_t keptSizeInBytes = 4u << 20;

    struct Kept {
        ~Kept() { std::free(units); }
        char16_t* units = nullptr;
    };
    static Kept& kept() {
        thread_local Kept kept;
        return kept;
    }

    bool isKept_;
    char16_t* units_ = nullptr;
};

bool stopAtMarkup(const NSString&, char16_t*, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t,
                  TagKind kind, void* hasMarkup) {
    const bool isMarkup = kind != TagKind::text;
    *static_cast<bool*>(hasMarkup) = isMarkup;
    return isMarkup;
}

} // namespace

NSString
_convertHtml2PlainTextUsingHandler_entities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
    const NSString& string, TagHandler handler, bool entities, bool stdEntities, bool nonUmlauted,
    bool reformat, bool onlyBody, bool removeJunk, bool* junkFound, bool googleTags) {
    if (junkFound)
        *junkFound = false;
    initUpperCharsTable();
    initLowerCharsTable();
    const std::size_t size = (string.length() * unitsPerCharacter * sizeof(char16_t) + pageSizeInBytes - 1) &
                             ~(pageSizeInBytes - 1);
    if (string.isEmpty() || size > maximumSizeInBytes)
        return string;
    OutputBuffer buffer(size + plainTextSlack * sizeof(char16_t));
    if (!buffer.units())
        return string;

    PlainTextContext start;
    start.outputStart = start.write = start.lineStart = buffer.units();
    start.convertEntities = entities;
    start.standardEntities = stdEntities;
    start.nonUmlauted = nonUmlauted;
    start.reformat = reformat;
    start.removeJunk = removeJunk;
    start.markers = googleTags;
    start.bodyDepth = onlyBody ? 0 : unconfinedBodyDepth;

    PlainTextContext context = start;
    // No copy of the characters: the handlers decode straight into the buffer.
    const bool isScanned = parseXmlWithHandler_context_mutable(string, handler, &context, false);
    if (isScanned && onlyBody && !context.textWritten) {
        context = start;
        context.bodyDepth = unconfinedBodyDepth;
        parseXmlWithHandler_context_mutable(string, handler, &context, false);
    }
    if (!context.textWritten)
        return string;
    if (junkFound)
        *junkFound = context.junkFound;
    return buffer.takeString(static_cast<std::size_t>(context.write - context.outputStart));
}

bool isBareMarkup(const NSString& text, const NSString& html) {
    bool hasMarkup = false;
    if (text.isIdenticalTo(html))
        GetTagsOfString(html, stopAtMarkup, &hasMarkup, false);
    return hasMarkup;
}

NSString stringByConvertingHtml2PlainText(const NSString& string) {
    return stringByConvertingHtml2PlainTextNonUmlauted(string, false);
}

NSString stringByConvertingHtml2ReformattedPlainText(const NSString& string) {
    return stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(string, false, true,
                                                                                    false, false);
}

NSString stringByConvertingHtml2PlainTextNonUmlauted(const NSString& string, bool nonUmlauted) {
    return stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(string, nonUmlauted,
                                                                                    false, false, false);
}

NSString stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(
    const NSString& string, bool nonUmlauted, bool reformat, bool onlyBody, bool googleTags) {
    return stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_removeJunk_googleTags(
        string, nonUmlauted, reformat, onlyBody, false, nullptr, googleTags);
}

NSString stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_removeJunk_googleTags(
    const NSString& string, bool nonUmlauted, bool reformat, bool onlyBody, bool removeJunk, bool* junkFound,
    bool googleTags) {
    return stringByConvertingHtml2PlainTextEntities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
        string, true, true, nonUmlauted, reformat, onlyBody, removeJunk, junkFound, googleTags);
}

NSString
stringByConvertingHtml2PlainTextEntities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
    const NSString& string, bool entities, bool stdEntities, bool nonUmlauted, bool reformat, bool onlyBody,
    bool removeJunk, bool* junkFound, bool googleTags) {
    return _convertHtml2PlainTextUsingHandler_entities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
        string, PlainTextHandler, entities, stdEntities, nonUmlauted, reformat, onlyBody, removeJunk,
        junkFound, googleTags);
}

NSString stringByConvertingHtml2SimplifiedPlainText(const NSString& string) {
    return _convertHtml2PlainTextUsingHandler_entities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
        string, SimplePlainTextHandler, true, true, false, false, true, false, nullptr, false);
}

} // namespace kelvo
