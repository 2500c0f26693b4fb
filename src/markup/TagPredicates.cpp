#include "markup/TagPredicates.h"

namespace kelvo {

namespace {

std::u16string_view partOf(std::u16string_view string, NSRange range) {
    return rangeFits(range, string.size()) ? string.substr(range.location, range.length)
                                           : std::u16string_view();
}

} // namespace

NSRange rangeOfTagName(const char16_t* characters, std::size_t location, std::size_t length) {
    return rangeOfTagName(characters, location, length, alphaCharacterSetRep(), whiteCharacterSetRep());
}

NSString nameOfTag(std::u16string_view tag) {
    const NSRange name = rangeOfTagName(tag.data(), 0, tag.size());
    return name.length == 0 ? NSString() : NSString(tag.substr(name.location, name.length));
}

NSString nameOfTagInRange(std::u16string_view string, NSRange range) {
    return nameOfTag(partOf(string, range));
}

bool isTagOpen(std::u16string_view tag) {
    return tag.size() >= 2 && tag[1] != u'/';
}

bool isTagOpenInRange(std::u16string_view string, NSRange range) {
    return isTagOpen(partOf(string, range));
}

bool isTagClosed(std::u16string_view tag) {
    return tag.size() >= 2 && (tag[1] == u'/' || tag[tag.size() - 2] == u'/');
}

bool isTagClosedInRange(std::u16string_view string, NSRange range) {
    return isTagClosed(partOf(string, range));
}

bool isRemarkTag(std::u16string_view tag) {
    return tag.starts_with(u"<!-");
}

bool isRemarkTagInRange(std::u16string_view string, NSRange range) {
    return isRemarkTag(partOf(string, range));
}

bool isMetaTag(std::u16string_view tag) {
    return tag.starts_with(u"<![");
}

bool isMetaTagInRange(std::u16string_view string, NSRange range) {
    return isMetaTag(partOf(string, range));
}

} // namespace kelvo
