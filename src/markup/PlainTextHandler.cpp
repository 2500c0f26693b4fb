#include "markup/PlainTextHandler.h"

#include "markup/HiddenText.h"
#include "markup/PlainTextRuns.h"
#include "markup/PlainTextTags.h"
#include "markup/TagAttributes.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr std::size_t longestRun = 10000;
constexpr std::size_t longestRunInLink = 3500;

void handleRun(PlainTextContext& context, std::u16string_view run, std::size_t readable) {
    if (context.insideNoframes || context.insideNoscript || context.isSuspended[0] ||
        context.isSuspended[1] || context.junkDivision)
        return;
    if (context.hiddenFont || (context.markers && !(context.markerBits & markerIndex))) {
        if (readsLikeText(decodedRun(context, run, context.write)))
            context.junkFound = true;
        return;
    }
    if (context.removeJunk && ((run.size() > longestRun && context.notPreformatted) ||
                               (run.size() > longestRunInLink && context.linkDepth > 0))) {
        context.junkFound = true;
        return;
    }
    writeTextRun(context, run, readable);
}

void resume(PlainTextContext& context) {
    context.isSuspended[0] = context.isSuspended[1] = false;
}

void moveLinkDepth(PlainTextContext& context, int effect) {
    context.linkDepth = std::max(0, context.linkDepth + effect);
}

/// The tags that count inside the body and outside it.
void handleStructure(PlainTextContext& context, PlainTextRule rule, std::u16string_view tag, int effect) {
    switch (rule) {
    case PlainTextRule::body: {
        context.bodyDepth += effect;
        resume(context);
        context.hiddenFont = context.feedDate = context.junkDivision = false;
        const std::u16string_view color = attributeValueOfTag(tag, "BGCOLOR", false);
        context.bodyColor = color.empty() ? NSString() : NSString(color);
        break;
    }
    case PlainTextRule::head:
        context.bodyDepth -= effect;
        break;
    case PlainTextRule::noframes:
        context.bodyDepth += effect;
        context.insideNoframes = effect > 0;
        break;
    case PlainTextRule::noscript:
        context.bodyDepth += effect;
        context.insideNoscript = effect > 0;
        break;
    default:
        break;
    }
}

void handleTag(PlainTextContext& context, PlainTextRule rule, std::u16string_view tag, int effect) {
    switch (rule) {
    case PlainTextRule::none:
        break;
    case PlainTextRule::lineBreak:
        writeLineBreak(context);
        break;
    case PlainTextRule::paragraphBreak:
        writeParagraphBreak(context);
        break;
    case PlainTextRule::cell:
        if (!endsInWhiteSpace(context))
            *context.write++ = u' ';
        break;
    case PlainTextRule::separation:
        context.pendingSpace = true;
        break;
    case PlainTextRule::link:
        moveLinkDepth(context, effect);
        context.pendingSpace = true;
        break;
    case PlainTextRule::heading:
        writeParagraphBreak(context);
        moveLinkDepth(context, effect);
        break;
    case PlainTextRule::division:
        writeParagraphBreak(context);
        resume(context);
        context.junkDivision = isJunkDivision(tag);
        break;
    case PlainTextRule::preformatted:
        resume(context);
        context.notPreformatted = effect <= 0;
        if (effect > 0)
            writeParagraphBreak(context);
        break;
    case PlainTextRule::input:
        resume(context);
        context.pendingSpace = !context.textWritten || endsInWhiteSpace(context);
        if (!context.pendingSpace)
            *context.write++ = u' ';
        break;
    case PlainTextRule::iframe:
        context.insideNoframes = effect > 0;
        break;
    case PlainTextRule::option:
        resume(context);
        context.junkDivision = effect > 0;
        break;
    case PlainTextRule::select:
        resume(context);
        context.junkDivision = false;
        break;
    case PlainTextRule::font: {
        const FontEffect font = effectOfFontTag(tag, context.bodyColor);
        context.hiddenFont = font.hidesText;
        context.feedDate = font.isFeedDate;
        break;
    }
    default:
        handleStructure(context, rule, tag, effect);
        break;
    }
}

} // namespace

int nestingEffectOfTag(const char16_t* tag, std::size_t length) {
    if (length < 3 || tag[length - 2] == u'/')
        return 0;
    return tag[1] == u'/' ? -1 : 1;
}

bool PlainTextHandler(const NSString& string, char16_t* characters, std::size_t nameLocation,
                      std::size_t nameLength, std::size_t tagLocation, std::size_t tagLength,
                      std::size_t textLocation, TagKind kind, void* contextPointer) {
    auto& context = *static_cast<PlainTextContext*>(contextPointer);
    if (textLocation < tagLocation && context.bodyDepth >= 1) {
        const std::u16string_view run(characters + textLocation, tagLocation - textLocation);
        if (kind != TagKind::text || !isWithoutMarkup(context, run, textLocation, string.length()))
            handleRun(context, run, string.length() - textLocation);
    }
    const std::u16string_view tag(characters + tagLocation, tagLength);
    if (kind == TagKind::tag && nameLength != 0) {
        const PlainTextRule rule = plainTextRuleOfTag(characters + nameLocation, nameLength);
        if (rule == PlainTextRule::none)
            return false;
        const int effect = nestingEffectOfTag(tag.data(), tagLength);
        if (context.bodyDepth >= 1)
            handleTag(context, rule, tag, effect);
        else
            handleStructure(context, rule, tag, effect);
    } else if (kind == TagKind::comment && context.markers) {
        context.markerBits = googleBits(tag, context.markerBits);
    }
    return false;
}

} // namespace kelvo
