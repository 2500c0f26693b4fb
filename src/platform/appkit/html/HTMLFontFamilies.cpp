#include "platform/appkit/html/HTMLFontFamilies.h"

#include "platform/foundation/units/ASCII.h"

#include <string>

namespace kelvo {
namespace {

struct KnownFamily {
    /// In lower case.
    std::u16string_view name;
    /// Empty: the name itself, as the page writes it.
    std::u16string_view standsFor;
    bool isFixedPitch = false;
};

constexpr KnownFamily knownFamilies[] = {
    {u"-webkit-standard", u"Times"},
    {u"serif", u"Times"},
    {u"ui-serif", u"Times"},
    {u"-webkit-serif", u"Times"},
    {u"sans-serif", u"Helvetica"},
    {u"ui-sans-serif", u"Helvetica"},
    {u"system-ui", u"Helvetica"},
    {u"-webkit-system-font", u"Helvetica"},
    {u"ui-rounded", u"Helvetica"},
    // The control font of the toolkit that draws the page.
    {u"sans", u"Helvetica"},
    {u"cantarell", u"Helvetica"},
    {u"cursive", u"Comic Sans MS"},
    {u"fantasy", u"Impact"},
    {u"monospace", u"Courier", true},
    {u"ui-monospace", u"Courier", true},
    {u"-webkit-monospace", u"Courier", true},
    {u"arial", u""},
    {u"arial black", u""},
    {u"arial narrow", u""},
    {u"arial unicode ms", u""},
    {u"baskerville", u""},
    {u"comic sans ms", u""},
    {u"courier", u"", true},
    {u"courier new", u"", true},
    {u"didot", u""},
    {u"futura", u""},
    {u"geneva", u""},
    {u"georgia", u""},
    {u"gill sans", u""},
    {u"helvetica", u""},
    {u"helvetica neue", u""},
    {u"hoefler text", u""},
    {u"impact", u""},
    {u"lucida grande", u""},
    {u"menlo", u"", true},
    {u"monaco", u"", true},
    {u"optima", u""},
    {u"palatino", u""},
    {u"tahoma", u""},
    {u"times", u""},
    {u"times new roman", u""},
    {u"trebuchet ms", u""},
    {u"verdana", u""},
};

/// Takes the first name off the list, without its quotes.
std::u16string takeName(std::u16string_view& list) {
    std::u16string name;
    char16_t quote = 0;
    while (!list.empty()) {
        const char16_t unit = list.front();
        list.remove_prefix(1);
        if (quote != 0) {
            if (unit == quote)
                quote = 0;
            else
                name += unit;
        } else if (unit == u',') {
            break;
        } else if (unit == u'"' || unit == u'\'') {
            quote = unit;
        } else if (unit != u' ' || !name.empty()) {
            name += unit;
        }
    }
    while (!name.empty() && name.back() == u' ')
        name.pop_back();
    return name;
}

} // namespace

HTMLFontFamily fontFamilyOfList(std::u16string_view families) {
    std::u16string first;
    while (!families.empty()) {
        const std::u16string name = takeName(families);
        if (name.empty())
            continue;
        if (first.empty())
            first = name;
        const std::u16string key = asciiLowerCased(name);
        for (const KnownFamily& known : knownFamilies) {
            if (known.name == key)
                return {NSString(known.standsFor.empty() ? std::u16string_view(name) : known.standsFor),
                        known.isFixedPitch};
        }
    }
    return {first.empty() ? NSString(u"Times") : NSString(first), false};
}

} // namespace kelvo
