#include "importers/pages/TagReader.h"

#include <algorithm>

namespace kelvo::importers {
namespace {

constexpr std::u16string_view blanks = u" \t\r\n\f";
constexpr std::u16string_view blanksAndSlash = u" \t\r\n\f/";

} // namespace

TagReader::TagReader(std::u16string_view tag) : rest_(tag) {
    if (rest_.ends_with(u'>'))
        rest_.remove_suffix(1);
    take(std::min(rest_.find_first_of(blanksAndSlash, 2), rest_.size()));
}

bool TagReader::takeAttribute(TagAttribute& attribute) {
    skip(blanksAndSlash);
    if (rest_.empty())
        return false;
    // A "=" at the beginning is part of a name.
    attribute.name = LowerCaseName(take(rest_.find_first_of(u" \t\r\n\f/=", 1)));
    attribute.value = {};
    skip(blanks);
    if (!rest_.starts_with(u'='))
        return true;
    take(1);
    skip(blanks);
    if (rest_.starts_with(u'"') || rest_.starts_with(u'\'')) {
        const char16_t quote = rest_.front();
        take(1);
        attribute.value = take(rest_.find(quote));
        take(1);
    } else {
        attribute.value = take(rest_.find_first_of(blanks));
    }
    return true;
}

void TagReader::skip(std::u16string_view units) {
    rest_.remove_prefix(std::min(rest_.find_first_not_of(units), rest_.size()));
}

std::u16string_view TagReader::take(std::size_t length) {
    const std::u16string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(taken.size());
    return taken;
}

} // namespace kelvo::importers
