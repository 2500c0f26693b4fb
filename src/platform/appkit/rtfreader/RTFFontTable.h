#pragma once

#include "platform/appkit/NSFont.h"
#include "platform/appkit/rtfreader/RTFCharsets.h"

#include <cstdint>
#include <string>
#include <unordered_map>

namespace kelvo {

struct RTFToken;

/// The fonts of a document by their numbers.
class RTFFontTable {
public:
    /// A word of an entry, if it is one: `\f` begins an entry.
    void apply(const RTFToken& token);
    /// Text of the table: a name up to the semicolon that ends an entry.
    void append(std::u16string_view units);
    /// The page in which the name of the present entry is written, and the text in that font.
    RTFCodePage currentCodePage() const { return current_.codePage; }

    /// Text in a font that the table lacks is in the document's code page.
    RTFCodePage codePageOf(std::int32_t number) const;
    /// 12 points, plain where the name does not say otherwise.
    NSFont fontOf(std::int32_t number) const;
    bool isDefined(std::int32_t number) const { return entries_.contains(number); }

private:
    struct Entry {
        NSFont font;
        RTFCodePage codePage = RTFDocumentCodePage;
    };

    void finishEntry();

    std::int32_t number_ = -1;
    std::u16string name_;
    Entry current_;
    std::unordered_map<std::int32_t, Entry> entries_;
};

/// The family and style that a font's name says: "Menlo-Regular", "Helvetica-BoldOblique" and
/// "TimesNewRomanPS-BoldMT" are members of families; all other names are families themselves.
NSFont fontNamed(std::u16string_view name);

} // namespace kelvo
