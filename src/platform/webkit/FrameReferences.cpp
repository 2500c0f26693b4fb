#include "platform/webkit/FrameReferences.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view blanks = " \t\r\n\f";

/// Walks forward through the page and never back, so that no page takes longer than its length.
class Tags {
public:
    explicit Tags(std::string_view page) : rest_(page) {}

    /// Moves past the name of the next frame element; false when there is none.
    bool goToFrame() {
        for (;;) {
            const std::size_t begin = rest_.find('<');
            if (begin == std::string_view::npos)
                return false;
            rest_.remove_prefix(begin + 1);
            // No further than the longest name goes.
            std::string_view name = rest_.substr(0, 7);
            name = name.substr(0, name.find_first_of(" \t\r\n\f/>"sv));
            if (equalsASCIIIgnoringCase(name, "frame") || equalsASCIIIgnoringCase(name, "iframe")) {
                rest_.remove_prefix(name.size());
                return true;
            }
        }
    }

    /// The next attribute of the tag; false at its end.
    bool takeAttribute(std::string_view& name, std::string_view& value) {
        skip(" \t\r\n\f/");
        if (rest_.empty() || rest_.front() == '>')
            return false;
        // A "=" at the beginning is part of a name.
        name = take(std::max<std::size_t>(1, rest_.find_first_of(" \t\r\n\f/>="sv, 1)));
        skip(blanks);
        value = {};
        if (!rest_.starts_with('='))
            return true;
        rest_.remove_prefix(1);
        skip(blanks);
        if (rest_.starts_with('"') || rest_.starts_with('\'')) {
            const char quote = rest_.front();
            rest_.remove_prefix(1);
            value = take(rest_.find(quote));
            take(1);
        } else {
            value = take(rest_.find_first_of(" \t\r\n\f>"sv));
        }
        return true;
    }

private:
    void skip(std::string_view characters) {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(characters), rest_.size()));
    }
    std::string_view take(std::size_t length) {
        const std::string_view taken = rest_.substr(0, length);
        rest_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest_;
};

NSString referenceOfAttribute(std::string_view value) {
    constexpr std::string_view ampersand = "&amp;";
    std::string reference;
    for (std::size_t end; (end = value.find(ampersand)) != value.npos;) {
        reference.append(value.substr(0, end + 1));
        value.remove_prefix(end + ampersand.size());
    }
    return NSString::stringByRepairingUTF8String(reference.append(value));
}

} // namespace

std::vector<NSString> frameReferencesInHTML(const NSData& html, std::size_t maximumCount) {
    std::vector<NSString> references;
    Tags tags(html.characters());
    while (references.size() < maximumCount && tags.goToFrame()) {
        bool hasSource = false;
        for (std::string_view name, value; tags.takeAttribute(name, value);) {
            if (!hasSource && equalsASCIIIgnoringCase(name, "src")) {
                hasSource = true;
                references.push_back(referenceOfAttribute(value));
            }
        }
    }
    return references;
}

} // namespace kelvo
