#include "markup/SimplePlainTextHandler.h"

#include "markup/Entities.h"
#include "markup/PlainTextHandler.h"
#include "markup/PlainTextRuns.h"
#include "markup/PlainTextTags.h"

#include <algorithm>

namespace kelvo {

bool SimplePlainTextHandler(const NSString& string, char16_t* characters, std::size_t nameLocation,
                            std::size_t nameLength, std::size_t tagLocation, std::size_t tagLength,
                            std::size_t textLocation, TagKind kind, void* contextPointer) {
    auto& context = *static_cast<PlainTextContext*>(contextPointer);
    const std::u16string_view run(characters + textLocation, tagLocation - textLocation);
    if (context.bodyDepth >= 1 && !run.empty() &&
        !isWithoutMarkup(context, run, textLocation, string.length())) {
        *context.write++ = u' ';
        if (run.size() > 3)
            context.write +=
                convertEntities2Characters(run.data(), context.write, 0, run.size(), true, false, false);
        else
            context.write = std::copy(run.begin(), run.end(), context.write);
        context.textWritten = true;
    }
    if (kind == TagKind::tag) {
        const int effect = nestingEffectOfTag(characters + tagLocation, tagLength);
        switch (plainTextRuleOfTag(characters + nameLocation, nameLength)) {
        case PlainTextRule::body:
        case PlainTextRule::noframes:
            context.bodyDepth += effect;
            break;
        case PlainTextRule::head:
            context.bodyDepth -= effect;
            break;
        default:
            break;
        }
    }
    return false;
}

} // namespace kelvo
