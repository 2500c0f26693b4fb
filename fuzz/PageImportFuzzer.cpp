// Whatever the bytes are, a page, a web archive or a message: what is set is of the type that it should be, and the text
// of a page has no blanks around it and no empty lines but single ones.

#include "Input.h"
#include "importers/pages/PageImport.h"
#include "support/Importing.h"

#include <algorithm>

using namespace kelvo;

namespace {

constexpr const char16_t* strings[] = {u"kMDItemTitle",     u"kMDItemDescription", u"kMDItemCreator",
                                       u"kMDItemCopyright", u"kMDItemURL",         u"kMDItemTextContent"};
constexpr const char16_t* arrays[] = {u"kMDItemAuthors", u"kMDItemKeywords", u"kMDItemLanguages",
                                      u"kMDItemWhereFroms"};
constexpr const char16_t* dates[] = {u"kMDItemContentCreationDate", u"kMDItemContentModificationDate"};

bool isIn(const NSString& name, const auto& names) {
    return std::ranges::any_of(names, [&](const char16_t* each) { return name == each; });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0)
        return 0;
    const char* const types[] = {"public.html", "com.apple.webarchive"};
    const bool isArchive = bytes[0] & 1;
    const NSDictionary attributes = attributesByImporter(
        importers::importPage, NSData::dataWithBytes(bytes + 1, size - 1), types[isArchive]);
    for (const Value& key : attributes.allKeys()) {
        const Value& value = attributes.objectForKey(key);
        if (isIn(key.string(), arrays))
            require(value.array().count() > 0);
        else
            require(isIn(key.string(), strings) ? value.isString()
                                                : isIn(key.string(), dates) && value.isDate());
    }
    const NSString content = attributes.objectForKey(u"kMDItemTextContent").string();
    const std::u16string_view text = content;
    if (!isArchive && !text.empty()) {
        require(text.front() != u'\n' && text.back() != u'\n' && text.front() != u' ' && text.back() != u' ');
        require(text.find(u"\n\n\n") == text.npos && text.find(u"  ") == text.npos);
    }
    return 0;
}
