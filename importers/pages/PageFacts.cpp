#include "importers/pages/PageFacts.h"

#include "importers/pages/TagReader.h"
#include "importers/support/DateText.h"
#include "markup/Entities.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <iterator>

namespace kelvo::importers {
namespace {

/// No page says more of itself in earnest.
constexpr std::size_t mostValues = 1000;
constexpr std::size_t mostUnitsOfValue = 65536;

constexpr std::u16string_view commas = u",、，";

NSString valueOf(std::u16string_view written) {
    return trimmed(stringByConvertingEntitiesToCharacters(NSString(written.substr(0, mostUnitsOfValue))));
}

/// "de", "pt-BR"; nil for what is no language.
NSString languageTag(const NSString& text) {
    std::u16string tag(text.characters());
    std::ranges::replace(tag, u'_', u'-');
    std::size_t part = 0;
    for (std::size_t begin = 0; begin <= tag.size(); ++part) {
        const std::size_t end = std::min(tag.find(u'-', begin), tag.size());
        const std::size_t length = end - begin;
        const auto isOfTag = [&](char16_t unit) {
            return isASCIILetter(unit) || (part > 0 && isASCIIDigit(unit));
        };
        if (length < (part == 0 ? 2u : 1u) || length > 8 ||
            !std::all_of(tag.begin() + static_cast<std::ptrdiff_t>(begin),
                         tag.begin() + static_cast<std::ptrdiff_t>(end), isOfTag))
            return nullptr;
        begin = end + 1;
    }
    return NSString(std::u16string_view(tag));
}

bool isAddress(const NSString& text) {
    return text.characters().find(u"://") != std::u16string_view::npos;
}

} // namespace

/// Names of meta elements.
struct PageFacts::Name {
    std::string_view name;
    Fact fact;
    int rank;
};

const PageFacts::Name PageFacts::names[] = {
    {"author", Fact::authors, 0},
    {"dc.creator", Fact::authors, 1},
    {"dcterms.creator", Fact::authors, 1},
    {"citation_author", Fact::authors, 2},
    {"article:author", Fact::authors, 3},
    {"keywords", Fact::keywords, 0},
    {"news_keywords", Fact::keywords, 1},
    {"article:tag", Fact::keywords, 2},
    {"dc.subject", Fact::keywords, 3},
    {"description", Fact::description, 0},
    {"dc.description", Fact::description, 1},
    {"dcterms.description", Fact::description, 1},
    {"og:description", Fact::description, 2},
    {"twitter:description", Fact::description, 3},
    {"og:title", Fact::title, 1},
    {"dc.title", Fact::title, 2},
    {"dcterms.title", Fact::title, 2},
    {"twitter:title", Fact::title, 3},
    {"content-language", Fact::languages, 1},
    {"dc.language", Fact::languages, 2},
    {"dcterms.language", Fact::languages, 2},
    {"og:locale", Fact::languages, 3},
    {"generator", Fact::creator, 0},
    {"copyright", Fact::copyright, 0},
    {"rights", Fact::copyright, 1},
    {"dc.rights", Fact::copyright, 1},
    {"dcterms.rights", Fact::copyright, 1},
    {"article:published_time", Fact::created, 0},
    {"datepublished", Fact::created, 1},
    {"dcterms.created", Fact::created, 2},
    {"dc.date.created", Fact::created, 2},
    {"dcterms.issued", Fact::created, 3},
    {"dc.date.issued", Fact::created, 3},
    {"date", Fact::created, 4},
    {"dc.date", Fact::created, 4},
    {"article:modified_time", Fact::modified, 0},
    {"og:updated_time", Fact::modified, 1},
    {"datemodified", Fact::modified, 2},
    {"dcterms.modified", Fact::modified, 3},
    {"dc.date.modified", Fact::modified, 3},
};

void PageFacts::readTag(std::string_view name, std::u16string_view tag) {
    const bool isPage = name == "html";
    if (!isPage && name != "meta")
        return;
    LowerCaseName said;
    std::u16string_view content;
    TagReader reader(tag);
    for (TagAttribute attribute; reader.takeAttribute(attribute);) {
        const std::string_view attributeName = attribute.name;
        if (isPage && (attributeName == "lang" || attributeName == "xml:lang"))
            add(Fact::languages, 0, attribute.value);
        if (attributeName == "name" || attributeName == "property" || attributeName == "itemprop" ||
            attributeName == "http-equiv")
            said = LowerCaseName(attribute.value);
        if (attributeName == "content")
            content = attribute.value;
    }
    const auto* const found = std::ranges::find(names, std::string_view(said), &PageFacts::Name::name);
    if (found != std::end(names))
        add(found->fact, found->rank, content);
}

void PageFacts::readTitle(std::u16string_view title) {
    add(Fact::title, 0, title);
}

void PageFacts::add(Fact fact, int rank, std::u16string_view written) {
    Statement& said = statements_[static_cast<std::size_t>(fact)];
    if (rank > said.rank || said.values.size() >= mostValues)
        return;
    NSString value = valueOf(written);
    if (fact == Fact::languages)
        value = languageTag(value);
    if (value.isEmpty() || (fact == Fact::authors && isAddress(value)))
        return;
    if ((fact == Fact::created || fact == Fact::modified) && !momentOfText(value))
        return;
    if (rank < said.rank)
        said = {rank, {}};
    if (fact != Fact::keywords) {
        said.values.push_back(value);
        return;
    }
    std::u16string_view rest = value;
    // Some lists have semicolons; in others they are part of what is left of a reference.
    const bool hasCommas = rest.find_first_of(commas) != rest.npos;
    while (!rest.empty() && said.values.size() < mostValues) {
        const std::size_t end =
            std::min(hasCommas ? rest.find_first_of(commas) : rest.find(u';'), rest.size());
        if (NSString word = trimmed(NSString(rest.substr(0, end))); !word.isEmpty())
            said.values.push_back(word);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

NSString PageFacts::first(Fact fact) const {
    return statement(fact).values.empty() ? NSString() : statement(fact).values.front();
}

NSArray PageFacts::all(Fact fact) const {
    NSMutableArray array = NSMutableArray::array();
    for (const NSString& value : statement(fact).values) {
        if (!array.containsObject(value))
            array.addObject(value);
    }
    return array.copy();
}

void PageFacts::setAttributes(Attributes& attributes) const {
    attributes.set("kMDItemTitle", first(Fact::title));
    attributes.set("kMDItemAuthors", all(Fact::authors));
    attributes.set("kMDItemKeywords", all(Fact::keywords));
    attributes.set("kMDItemDescription", first(Fact::description));
    if (const NSString language = first(Fact::languages); !language.isNil())
        attributes.set("kMDItemLanguages", NSArray::arrayWithObjects({language}));
    attributes.set("kMDItemCreator", first(Fact::creator));
    attributes.set("kMDItemCopyright", first(Fact::copyright));
    if (const auto created = momentOfText(first(Fact::created)))
        attributes.setDate("kMDItemContentCreationDate", *created);
    if (const auto modified = momentOfText(first(Fact::modified)))
        attributes.setDate("kMDItemContentModificationDate", *modified);
}

} // namespace kelvo::importers
