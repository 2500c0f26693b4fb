#include "markup/PlainTextRuns.h"

#include "markup/Entities.h"
#include "platform/foundation/units/UnitCollapse.h"
#include "text/CharacterSetReps.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr UnitsToFind ampersand{{u'&', u'&', u'&', u'&'}, 1};

constexpr std::size_t longestLine = 20000;
/// What is shorter is written as it stands: it cannot hold a whole reference.
constexpr std::size_t shortestDecodedRun = 4;

bool mayHoldReferences(const PlainTextContext& context, std::u16string_view run) {
    return run.size() >= shortestDecodedRun && (context.convertEntities || context.standardEntities);
}

/// "&quot;", "&amp;", "&gt;" and "&lt;" with their semicolons, and nothing else.
std::size_t decodeStandardReferences(std::u16string_view run, char16_t* to) {
    static constexpr struct {
        std::u16string_view text;
        char16_t character;
    } references[] = {{u"&quot;", u'"'}, {u"&amp;", u'&'}, {u"&gt;", u'>'}, {u"&lt;", u'<'}};
    char16_t* const start = to;
    while (!run.empty()) {
        const std::size_t plain = firstUnitEqualTo(run.data(), run.size(), ampersand);
        to = std::copy_n(run.data(), plain, to);
        run.remove_prefix(plain);
        if (run.empty())
            break;
        const auto* found = std::find_if(std::begin(references), std::end(references),
                                         [&](const auto& it) { return run.starts_with(it.text); });
        const bool isReference = found != std::end(references);
        *to++ = isReference ? found->character : u'&';
        run.remove_prefix(isReference ? found->text.size() : 1);
    }
    return static_cast<std::size_t>(to - start);
}

/// Returns whether the current line was too long to keep.
bool dropLongLine(PlainTextContext& context) {
    if (!context.removeJunk || context.write - context.lineStart <= static_cast<std::ptrdiff_t>(longestLine))
        return false;
    context.write = context.lineStart;
    context.junkFound = true;
    return true;
}

void breakLine(PlainTextContext& context, int feeds) {
    dropLongLine(context);
    while (feeds-- > 0)
        *context.write++ = u'\n';
    context.lineStart = context.write;
}

void breakLineAtTag(PlainTextContext& context, int feeds) {
    breakLine(context, feeds);
    context.lineFlag = false;
    context.pendingSpace = false;
}

void finishRun(PlainTextContext& context, bool endedInWhite) {
    context.textWritten = true;
    if (dropLongLine(context)) {
        context.lineFlag = false;
    } else {
        context.pendingSpace = endedInWhite;
        context.lineFlag = true;
    }
}

std::size_t whiteAtStart(std::u16string_view run, CharacterSetRep white) {
    if (run.empty() || !unitIsInBitmap(white, run[0]))
        return 0;
    return firstUnitNotInBitmap(run.data(), run.size(), white);
}

std::size_t whiteAtEnd(std::u16string_view run, CharacterSetRep white) {
    std::size_t count = 0;
    while (count < run.size() && unitIsInBitmap(white, run[run.size() - 1 - count]))
        ++count;
    return count;
}

/// A run outside pre, decoded or (with `stopsAtAmpersand`) perhaps not. False, with nothing written, when it
/// must be decoded first.
bool writeTrimmed(PlainTextContext& context, std::u16string_view run, std::size_t readable,
                  bool stopsAtAmpersand) {
    const CharacterSetRep white = whiteCharacterSetRep();
    const std::size_t leading = whiteAtStart(run, white);
    if (leading == run.size()) {
        context.pendingSpace = true;
        return true;
    }
    run.remove_prefix(leading);
    const std::size_t trailing = whiteAtEnd(run, white);
    run.remove_suffix(trailing);
    const bool hasSpace = (leading > 0 || context.pendingSpace) && context.lineFlag;
    char16_t* end = collapseUnits(run.data(), run.size(), readable - leading, context.write + hasSpace, white,
                                  stopsAtAmpersand);
    if (!end)
        return false;
    if (hasSpace)
        *context.write = u' ';
    context.write = end;
    finishRun(context, trailing > 0);
    return true;
}

bool isLineBreak(char16_t unit) {
    switch (unit) {
    case 0x0003:
    case u'\n':
    case u'\f':
    case u'\r':
    case 0x2028:
    case 0x2029:
    case 0xFEFF:
    case 0xFFFC:
        return true;
    default:
        return false;
    }
}

/// Before these a single line break stays one: source text, quoted mail, lists and closing braces.
bool keepsLineBreak(char16_t next) {
    return next == u'/' || next == u'>' || next == u' ' || next == u'-' || next == u'}';
}

/// The text of a pre element with its lines rebuilt. `run` may lie in the buffer at or after the write
/// position: never more is written than has been read.
void writeLines(PlainTextContext& context, std::u16string_view run) {
    const CharacterSetRep space = spaceCharacterSetRep();
    for (std::size_t index = 0; index < run.size();) {
        const char16_t unit = run[index];
        if (isLineBreak(unit)) {
            std::size_t breaks = 0;
            for (; index < run.size() && isLineBreak(run[index]); ++index, ++breaks) {
                if (run[index] == u'\r' && index + 1 < run.size() && run[index + 1] == u'\n')
                    ++index;
            }
            if (breaks > 1)
                breakLine(context, 2);
            else if (index < run.size() && keepsLineBreak(run[index]))
                breakLine(context, 1);
            else if (!endsInWhiteSpace(context))
                *context.write++ = u' ';
        } else if (unitIsInBitmap(space, unit)) {
            index += firstUnitNotInBitmap(run.data() + index, run.size() - index, space);
            *context.write++ = u' ';
        } else {
            *context.write++ = unit;
            ++index;
        }
    }
}

void writePreformatted(PlainTextContext& context, std::u16string_view run, std::size_t readable) {
    const CharacterSetRep white = whiteCharacterSetRep();
    const bool endedInWhite = unitIsInBitmap(white, run.back());
    if ((context.pendingSpace || unitIsInBitmap(white, run[0])) && !endsInWhiteSpace(context))
        *context.write++ = u' ';
    if (context.reformat)
        writeLines(context, run);
    else
        context.write = collapseUnits(run.data(), run.size(), readable, context.write, white, false);
    finishRun(context, endedInWhite);
}

} // namespace

void writeLineBreak(PlainTextContext& context) {
    breakLineAtTag(context, 1);
}

void writeParagraphBreak(PlainTextContext& context) {
    breakLineAtTag(context, 2);
}

bool endsInWhiteSpace(const PlainTextContext& context) {
    return context.write == context.outputStart || unitIsInBitmap(whiteCharacterSetRep(), context.write[-1]);
}

std::u16string_view decodedRun(const PlainTextContext& context, std::u16string_view run, char16_t* place) {
    if (!mayHoldReferences(context, run))
        return run;
    const bool folds = context.convertEntities && context.nonUmlauted;
    if (!folds && firstUnitEqualTo(run.data(), run.size(), ampersand) == run.size())
        return run;
    const std::size_t length =
        context.convertEntities
            ? convertEntities2Characters(run.data(), place, 0, run.size(), context.standardEntities, false,
                                         context.nonUmlauted)
            : decodeStandardReferences(run, place);
    return {place, length};
}

bool isWithoutMarkup(const PlainTextContext& context, std::u16string_view run, std::size_t textLocation,
                     std::size_t stringLength) {
    if (textLocation != 0 || run.size() != stringLength)
        return false;
    const std::u16string_view decoded = decodedRun(context, run, context.write + 1);
    return decoded.data() == run.data() || decoded == run;
}

void writeTextRun(PlainTextContext& context, std::u16string_view run, std::size_t readable) {
    const bool mayDecode = mayHoldReferences(context, run);
    const bool mustDecode = mayDecode && context.convertEntities && context.nonUmlauted;
    // Text without a reference is read once, and never decoded.
    if (context.notPreformatted && !mustDecode && writeTrimmed(context, run, readable, mayDecode))
        return;
    // One unit is left free for the space before the run; collapsing then moves it to the left.
    const std::u16string_view decoded = decodedRun(context, run, context.write + 1);
    if (decoded.data() != run.data())
        readable = decoded.size();
    if (context.notPreformatted)
        writeTrimmed(context, decoded, readable, false);
    else
        writePreformatted(context, decoded, readable);
}

} // namespace kelvo
