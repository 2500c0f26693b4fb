#include "markup/TagScanner.h"

#include "markup/TagPredicates.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/units/ASCII.h"
#include "platform/foundation/units/UnitMasks.h"
#include "platform/foundation/units/UnitScan.h"
#include "text/CharacterSetReps.h"
#include "text/FoldingTables.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

/// Bit n is the parity of bits 0 to n.
std::uint64_t prefixParity(std::uint64_t bits) {
    for (unsigned shift = 1; shift < 64; shift *= 2)
        bits ^= bits << shift;
    return bits;
}

/// Tells where the five characters are that can change the scanner's state. Masks are made for a window of
/// the text at a time, so that what a jump passes over costs nothing.
class MarkupCharacters {
public:
    enum Kind { lessThan, greaterThan, equals, doubleQuote, singleQuote };

    MarkupCharacters(const char16_t* characters, std::size_t length)
        : characters_(characters), length_(length) {
        load(0);
    }

    /// The first of the kinds at or after `start`, or the length.
    template <Kind... kinds>
    std::size_t next(std::size_t start) {
        for (; start < length_; start += countOfBitsAt(start)) {
            prepare(start);
            if (const std::uint64_t bits = (bitsAt(kinds, start) | ...); bits != 0)
                return start + static_cast<std::size_t>(std::countr_zero(bits));
        }
        return length_;
    }

    /// The bits of `kind` from `index` on, as many as countOfBitsAt says, once that index was prepared.
    std::uint64_t bitsAt(Kind kind, std::size_t index) const {
        std::uint64_t bits;
        const std::size_t offset = index - windowStart_;
        std::memcpy(&bits, reinterpret_cast<const char*>(window_[kind].data()) + offset / 8, sizeof bits);
        return bits >> offset % 8;
    }
    static unsigned countOfBitsAt(std::size_t index) { return 64 - index % 8; }
    void prepare(std::size_t index) {
        if (index - windowStart_ >= usableUnits) [[unlikely]]
            load(index);
    }

private:
    void load(std::size_t index) {
        windowStart_ = index / unitsPerMask * unitsPerMask;
        const std::size_t rest = length_ - windowStart_;
        if (rest < unitsPerWindow)
            window_ = {};
        makeUnitMasks(characters_ + windowStart_, std::min(rest, unitsPerWindow), {'<', '>', '=', '"', '\''},
                      window_[0].data(), masksPerWindow);
    }

    // Bits are read from any byte on, as one word that must not pass the window.
    static_assert(std::endian::native == std::endian::little);
    static constexpr std::size_t masksPerWindow = 16;
    static constexpr std::size_t unitsPerWindow = masksPerWindow * unitsPerMask;
    static constexpr std::size_t usableUnits = unitsPerWindow - unitsPerMask;

    const char16_t* characters_;
    std::size_t length_;
    std::size_t windowStart_ = 0;
    std::array<std::array<std::uint64_t, masksPerWindow>, unitMaskKinds> window_;
};

/// Ignores the case of ASCII letters, which `text` has in lower case. Needs text.size() characters.
bool matchesIgnoringCase(const char16_t* characters, std::u16string_view text) {
    return equalsASCIIIgnoringCase(std::u16string_view(characters, text.size()), text);
}

/// Where a fixed text next occurs, for starts that only grow. What one search has passed over the next one
/// does not see again, and that there is no more is remembered, so that all searches together pass the
/// characters once.
struct NextOccurrence {
    template <typename Search>
    std::size_t atOrAfter(std::size_t start, Search search) {
        if (!isKnown || start < searchedFrom || start > found) {
            found = search(start);
            searchedFrom = start;
            isKnown = true;
        }
        return found;
    }

    bool isKnown = false;
    std::size_t searchedFrom = 0;
    std::size_t found = 0;
};

/// Where runs through ordinary tags ended, by the state in which they passed certain ">" inside quotes.
///
/// The end tag of a script may lie inside an attribute of its opening tag. Then scanning goes back to it, and
/// with many such elements in each other every one of them would be followed to the same far end. A run that
/// meets an earlier one in the same state at the same place ends where that one did. They are compared at the
/// first ">" of every block, and never in the block in which the run began, so that all runs through a block
/// are compared at the same place.
class EndsOfRuns {
public:
    explicit EndsOfRuns(std::size_t length) : ends_(2 * (length / unitsPerBlock + 1)) {}

    void begin(std::size_t start) {
        lastBlock_ = start / unitsPerBlock;
        passed_.clear();
    }
    /// The end that is known for a run that passes the ">" at `index` inside quotes, or `unknown`.
    std::size_t endOfRunPassing(std::size_t index, bool isDoubleQuoted) {
        const std::size_t block = index / unitsPerBlock;
        if (block == lastBlock_)
            return unknown;
        lastBlock_ = block;
        std::uint32_t& end = ends_[2 * block + isDoubleQuoted];
        if (end == 0)
            passed_.push_back(&end);
        return end;
    }
    std::size_t finish(std::size_t end) {
        for (std::uint32_t* entry : passed_)
            *entry = static_cast<std::uint32_t>(end);
        return end;
    }

    /// No tag ends at the first character.
    static constexpr std::size_t unknown = 0;

private:
    static constexpr std::size_t unitsPerBlock = 64;

    std::vector<std::uint32_t> ends_;
    std::vector<std::uint32_t*> passed_;
    std::size_t lastBlock_ = 0;
};

class Scan {
    using enum MarkupCharacters::Kind;

public:
    Scan(const NSString& string, char16_t* characters, TagHandler handler, void* context)
        : string_(string),
          characters_(characters),
          length_(string.length()),
          handler_(handler),
          context_(context),
          markupCharacters_(characters, string.length()) {}

    void run() {
        std::size_t textStart = 0;
        for (std::size_t tag = next<lessThan>(0); tag < length_; tag = next<lessThan>(textStart)) {
            const bool isDeclaration = tag + 2 < length_ && characters_[tag + 1] == u'!';
            std::size_t end;
            if (isDeclaration && characters_[tag + 2] == u'-') {
                end = endOfComment(tag);
                if (call({NSNotFound, 0}, tag, end, textStart, TagKind::comment))
                    return;
            } else if (isDeclaration && characters_[tag + 2] == u'[') {
                end = endOfSection(tag);
                if (call({NSNotFound, 0}, tag, end, textStart, TagKind::section))
                    return;
            } else {
                end = endOfTag(tag + 1);
                if (end == length_)
                    break;
                const NSRange name = rangeOfTagName(characters_, tag + 1, end - tag - 1, letters_, white_);
                end = endOfElement(tag, end + 1, name);
                if (call(name, tag, end, textStart, TagKind::tag))
                    return;
            }
            textStart = end;
        }
        call({NSNotFound, 0}, length_, length_, textStart, TagKind::text);
    }

private:
    template <MarkupCharacters::Kind... kinds>
    std::size_t next(std::size_t start) {
        return markupCharacters_.next<kinds...>(start);
    }

    bool call(NSRange name, std::size_t tag, std::size_t end, std::size_t textStart, TagKind kind) const {
        return handler_(string_, characters_, name.location, name.length, tag, end - tag, textStart, kind,
                        context_);
    }

    /// The index after the ">", or the length.
    std::size_t endOfComment(std::size_t tag) {
        const bool isShort = tag + 3 < length_ && characters_[tag + 3] != u'-';
        for (std::size_t index = next<greaterThan>(tag + 3); index < length_;
             index = next<greaterThan>(index + 1)) {
            const char16_t* at = characters_ + index;
            if (at[-1] == u'-' && (isShort || at[-2] == u'-'))
                return index + 1;
            if (at[-1] == u'!' && !isShort && at[-2] == u'-' && at[-3] == u'-')
                return index + 1;
        }
        return length_;
    }

    /// The index after the ">", or the length.
    std::size_t endOfSection(std::size_t tag) {
        for (std::size_t index = next<greaterThan>(tag + 3); index < length_;
             index = next<greaterThan>(index + 1)) {
            const char16_t* at = characters_ + index;
            if (at[-1] == u']' || (at[-1] == u'-' && at[-2] == u'-' && at[-3] == u']'))
                return index + 1;
        }
        return length_;
    }

    /// The index of the ">" outside quotes, or the length.
    std::size_t endOfTag(std::size_t start) {
        if (endsOfRuns_) [[unlikely]]
            return endOfTagRemembered(start);
        // Most tags have all their values in double quotes that stand right after "=". There every other
        // double quote opens a value, and the ">" sought is the first that an even number of them precedes.
        // What breaks that rule is a double quote that opens but does not follow "=", or an apostrophe
        // outside values.
        std::uint64_t openBefore = 0, equalsBefore = 0;
        for (std::size_t index = start; index < length_;) {
            markupCharacters_.prepare(index);
            const std::uint64_t doubles = markupCharacters_.bitsAt(doubleQuote, index);
            const std::uint64_t equalSigns = markupCharacters_.bitsAt(equals, index);
            const std::uint64_t inValue = prefixParity(doubles) ^ openBefore;
            const std::uint64_t exceptions = (doubles & inValue & ~(equalSigns << 1 | equalsBefore)) |
                                             (markupCharacters_.bitsAt(singleQuote, index) & ~inValue);
            const std::uint64_t ends = markupCharacters_.bitsAt(greaterThan, index) & ~inValue;
            // All bits up to the first end, or all when there is none.
            if ((exceptions & (ends ^ (ends - 1))) != 0)
                return endOfTagStepwise(start);
            if (ends != 0)
                return index + static_cast<std::size_t>(std::countr_zero(ends));
            const unsigned count = MarkupCharacters::countOfBitsAt(index);
            openBefore = 0 - (inValue >> 63);
            equalsBefore = equalSigns >> (count - 1) & 1;
            index += count;
        }
        return length_;
    }

    /// endOfTag from one character that matters to the next.
    std::size_t endOfTagStepwise(std::size_t start) {
        for (std::size_t index = start;;) {
            index = next<equals, greaterThan>(index);
            if (index == length_ || characters_[index] == u'>')
                return index;
            index = next<doubleQuote, singleQuote, greaterThan>(index + 1);
            if (index == length_ || characters_[index] == u'>')
                return index;
            index = characters_[index] == u'"' ? next<doubleQuote>(index + 1) : next<singleQuote>(index + 1);
            if (index == length_)
                return index;
            ++index;
        }
    }

    /// endOfTag that looks at every ">" inside quotes.
    std::size_t endOfTagRemembered(std::size_t start) {
        endsOfRuns_->begin(start);
        for (std::size_t index = start;;) {
            index = next<equals, greaterThan>(index);
            if (index == length_ || characters_[index] == u'>')
                return endsOfRuns_->finish(index);
            index = next<doubleQuote, singleQuote, greaterThan>(index + 1);
            if (index == length_ || characters_[index] == u'>')
                return endsOfRuns_->finish(index);
            const bool isDouble = characters_[index] == u'"';
            while ((index = isDouble ? next<doubleQuote, greaterThan>(index + 1)
                                     : next<singleQuote, greaterThan>(index + 1)) < length_ &&
                   characters_[index] == u'>') {
                const std::size_t end = endsOfRuns_->endOfRunPassing(index, isDouble);
                if (end != EndsOfRuns::unknown)
                    return endsOfRuns_->finish(end);
            }
            if (index == length_)
                return endsOfRuns_->finish(index);
            ++index;
        }
    }

    /// For the tag [tag, end): the end of its element when it opens one of raw text, else `end`.
    std::size_t endOfElement(std::size_t tag, std::size_t end, NSRange name) {
        const char16_t* letters = characters_ + name.location;
        const bool isStyle = name.length == 5 && matchesIgnoringCase(letters, u"style");
        const bool isScript = name.length == 6 && matchesIgnoringCase(letters, u"script");
        if (!isStyle && !isScript)
            return end;
        if (characters_[tag + 1] == u'/' || characters_[end - 2] == u'/')
            return end;
        const std::u16string_view endTag = isStyle ? u"</style" : u"</script";
        Searches& searches = isStyle ? styleSearches_ : scriptSearches_;
        const auto findEndTag = [&](std::size_t start) { return findIgnoringCase(endTag, start, length_); };
        std::size_t closing = searches.endTag.atOrAfter(tag + 1, findEndTag);
        if (closing == length_)
            return end;
        // A body inside a comment may hold the text of its end tag.
        const std::size_t comment = findIgnoringCase(u"<!-", tag, closing);
        if (comment < closing) {
            const std::size_t commentEnd = commentEnds_.atOrAfter(
                comment + 3, [&](std::size_t start) { return findIgnoringCase(u"-->", start, length_); });
            if (commentEnd < length_) {
                const std::size_t later = searches.endTagBehindComment.atOrAfter(commentEnd, findEndTag);
                if (later < length_)
                    closing = later;
            }
        }
        const std::size_t last = next<greaterThan>(closing + endTag.size());
        const std::size_t elementEnd = last == length_ ? length_ : last + 1;
        if (elementEnd < end && !endsOfRuns_)
            endsOfRuns_ = std::make_unique<EndsOfRuns>(length_);
        return elementEnd;
    }

    /// The first place of `text`, whose letters are in lower case and whose first two characters are none,
    /// that lies wholly in [start, end); else `end`.
    std::size_t findIgnoringCase(std::u16string_view text, std::size_t start, std::size_t end) const {
        for (std::size_t index = start; index < end; ++index) {
            index += firstPairOfUnits(characters_ + index, end - index, text[0], text[1]);
            if (end - index < text.size())
                break;
            if (matchesIgnoringCase(characters_ + index, text))
                return index;
        }
        return end;
    }

    struct Searches {
        NextOccurrence endTag, endTagBehindComment;
    };

    const NSString& string_;
    char16_t* characters_;
    std::size_t length_;
    TagHandler handler_;
    void* context_;
    CharacterSetRep letters_ = alphaCharacterSetRep();
    CharacterSetRep white_ = whiteCharacterSetRep();
    MarkupCharacters markupCharacters_;
    Searches styleSearches_, scriptSearches_;
    NextOccurrence commentEnds_;
    std::unique_ptr<EndsOfRuns> endsOfRuns_;
};

struct Freeing {
    void operator()(void* block) const { std::free(block); }
};

} // namespace

bool GetTagsOfString(const NSString& string, TagHandler handler, void* context, bool copy) {
    const std::size_t length = string.length();
    if (length == 0)
        return false;
    initUpperCharsTable();
    initLowerCharsTable();
    std::unique_ptr<char16_t, Freeing> ownCharacters;
    if (copy) {
        const std::size_t sizeInBytes = length * sizeof(char16_t);
        ownCharacters.reset(static_cast<char16_t*>(std::malloc(sizeInBytes)));
        if (!ownCharacters)
            return false;
        std::memcpy(ownCharacters.get(), string.characters().data(), sizeInBytes);
    }
    char16_t* characters =
        ownCharacters ? ownCharacters.get() : const_cast<char16_t*>(string.characters().data());
    Scan(string, characters, handler, context).run();
    return true;
}

bool parseXmlWithHandler_context_mutable(const NSString& string, TagHandler handler, void* context,
                                         bool isMutable) {
    try {
        return GetTagsOfString(string, handler, context, isMutable);
    } catch (const NSException& exception) {
        NSLog(u"%@ (%@):\n%@\n%@", NSString(u"parseXmlWithHandler:context:mutable:"), NSString(u"NSString"),
              exception.name(), exception.reason());
        return false;
    }
}

} // namespace kelvo
