#include "markup/TagScanner.h"

#include "markup/TagPredicates.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/UnitScan.h"
#include "text/FoldingTables.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

constexpr UnitsToFind lessThan{{u'<', u'<', u'<', u'<'}, 1};
constexpr UnitsToFind greaterThan{{u'>', u'>', u'>', u'>'}, 1};
constexpr UnitsToFind equalsOrGreaterThan{{u'=', u'>', u'=', u'='}, 2};
constexpr UnitsToFind quotesOrGreaterThan{{u'"', u'\'', u'>', u'"'}, 3};
constexpr UnitsToFind doubleQuote{{u'"', u'"', u'"', u'"'}, 1};
constexpr UnitsToFind singleQuote{{u'\'', u'\'', u'\'', u'\''}, 1};
constexpr UnitsToFind doubleQuoteOrGreaterThan{{u'"', u'>', u'"', u'"'}, 2};
constexpr UnitsToFind singleQuoteOrGreaterThan{{u'\'', u'>', u'\'', u'\''}, 2};

/// Ignores the case of ASCII letters, which `text` has in lower case. Needs text.size() characters.
bool matchesIgnoringCase(const char16_t* characters, std::u16string_view text) {
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char16_t unit = characters[index];
        if ((unit >= u'A' && unit <= u'Z' ? unit | 0x20 : unit) != text[index])
            return false;
    }
    return true;
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
public:
    Scan(const NSString& string, char16_t* characters, TagHandler handler, void* context)
        : string_(string),
          characters_(characters),
          length_(string.length()),
          handler_(handler),
          context_(context) {}

    void run() {
        std::size_t textStart = 0;
        for (std::size_t tag = find(0, lessThan); tag < length_; tag = find(textStart, lessThan)) {
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
                const NSRange name = rangeOfTagName(characters_, tag + 1, end - tag - 1);
                end = endOfElement(tag, end + 1, name);
                if (call(name, tag, end, textStart, TagKind::tag))
                    return;
            }
            textStart = end;
        }
        call({NSNotFound, 0}, length_, length_, textStart, TagKind::text);
    }

private:
    std::size_t find(std::size_t start, const UnitsToFind& wanted) const {
        return start + firstUnitEqualTo(characters_ + start, length_ - start, wanted);
    }

    bool call(NSRange name, std::size_t tag, std::size_t end, std::size_t textStart, TagKind kind) const {
        return handler_(string_, characters_, name.location, name.length, tag, end - tag, textStart, kind,
                        context_);
    }

    /// The index behind the ">", or the length.
    std::size_t endOfComment(std::size_t tag) const {
        const bool isShort = tag + 3 < length_ && characters_[tag + 3] != u'-';
        for (std::size_t index = find(tag + 3, greaterThan); index < length_;
             index = find(index + 1, greaterThan)) {
            const char16_t* at = characters_ + index;
            if (at[-1] == u'-' && (isShort || at[-2] == u'-'))
                return index + 1;
            if (at[-1] == u'!' && !isShort && at[-2] == u'-' && at[-3] == u'-')
                return index + 1;
        }
        return length_;
    }

    /// The index behind the ">", or the length.
    std::size_t endOfSection(std::size_t tag) const {
        for (std::size_t index = find(tag + 3, greaterThan); index < length_;
             index = find(index + 1, greaterThan)) {
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
        for (std::size_t index = start;;) {
            index = find(index, equalsOrGreaterThan);
            if (index == length_ || characters_[index] == u'>')
                return index;
            index = find(index + 1, quotesOrGreaterThan);
            if (index == length_ || characters_[index] == u'>')
                return index;
            index = find(index + 1, characters_[index] == u'"' ? doubleQuote : singleQuote);
            if (index == length_)
                return index;
            ++index;
        }
    }

    /// endOfTag that looks at every ">" inside quotes.
    std::size_t endOfTagRemembered(std::size_t start) {
        endsOfRuns_->begin(start);
        for (std::size_t index = start;;) {
            index = find(index, equalsOrGreaterThan);
            if (index == length_ || characters_[index] == u'>')
                return endsOfRuns_->finish(index);
            index = find(index + 1, quotesOrGreaterThan);
            if (index == length_ || characters_[index] == u'>')
                return endsOfRuns_->finish(index);
            const bool isDouble = characters_[index] == u'"';
            const UnitsToFind& wanted = isDouble ? doubleQuoteOrGreaterThan : singleQuoteOrGreaterThan;
            while ((index = find(index + 1, wanted)) < length_ && characters_[index] == u'>') {
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
        const std::size_t last = find(closing + endTag.size(), greaterThan);
        const std::size_t elementEnd = last == length_ ? length_ : last + 1;
        if (elementEnd < end && !endsOfRuns_)
            endsOfRuns_ = std::make_unique<EndsOfRuns>(length_);
        return elementEnd;
    }

    /// The first place of `text`, whose letters are in lower case, that lies wholly in [start, end); else
    /// `end`.
    std::size_t findIgnoringCase(std::u16string_view text, std::size_t start, std::size_t end) const {
        const UnitsToFind first{{text[0], text[0], text[0], text[0]}, 1};
        for (std::size_t index = start; index < end; ++index) {
            index += firstUnitEqualTo(characters_ + index, end - index, first);
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
