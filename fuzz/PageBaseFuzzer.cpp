// Whatever the page is, it keeps all its bytes around the one element that is put into it.

#include "Input.h"
#include "platform/webkit/PageBase.h"

#include <algorithm>

using namespace kelvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData page = NSData::dataWithBytes(bytes, size);
    for (const char16_t* label : {u"", u"utf-16", u"utf-16be"}) {
        for (const char16_t* base : {u"http://h/a?b&c", u""}) {
            const NSData placed = pageByPlacingBase(page, label, NSURL::URLWithString(base));
            const std::string_view before = page.characters();
            const std::string_view after = placed.characters();
            require(after.size() > before.size());
            const auto [own, now] = std::ranges::mismatch(before, after);
            const auto rest = static_cast<std::size_t>(before.end() - own);
            // What was put in may begin like what it stands before.
            require(after.ends_with(before.substr(before.size() - rest)));
            require(now != after.end());
        }
    }
    return 0;
}
