#include "importers/epub/BookPackage.h"

#include "importers/support/PartPath.h"
#include "importers/xml/XMLScan.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace kelvo::importers {
namespace {

/// A fact is no book.
constexpr std::size_t longestFact = std::size_t{1} << 20;
/// Of facts, parts and places in the spine each.
constexpr std::size_t mostOfAKind = 65'536;

std::string lowerCased(std::string_view text) {
    return asciiLowerCased(std::string(text));
}

/// A term of Dublin Core, or another fact, with what refines it.
struct Fact {
    std::string term;
    std::string id;
    std::string role;
    std::string event;
    std::string type;
    std::string text;
};

class PackageReading final : public XMLEvents {
public:
    explicit PackageReading(std::string_view path) : path_(path) {}

    void beginElement(const XMLTag& tag) override {
        // The first books had their terms capitalized.
        const std::string name = lowerCased(tag.localName());
        if (name == "package") {
            isPackage_ = true;
            identifierID_ = tag.value("unique-identifier");
        } else if (name == "metadata") {
            isMetadata_ = true;
        } else if (isMetadata_ && name == "meta") {
            // It says the same in two ways, one for each version.
            fact_ = {lowerCased(tag.value("property")), std::string(tag.value("refines")), {}, {}, {}, {}};
            isFact_ = !fact_.term.empty();
        } else if (isMetadata_) {
            fact_ = {name,
                     std::string(tag.value("id")),
                     lowerCased(tag.value("role")),
                     lowerCased(tag.value("event")),
                     {},
                     {}};
            isFact_ = true;
        } else if (name == "item" && hrefs_.size() < mostOfAKind) {
            hrefs_.emplace(tag.value("id"), tag.value("href"));
        } else if (name == "itemref" && references_.size() < mostOfAKind) {
            references_.emplace_back(tag.value("idref"));
        }
    }

    void endElement(std::string_view name) override {
        if (lowerCased(XMLTag::localPart(name)) == "metadata")
            isMetadata_ = false;
        if (std::exchange(isFact_, false) && facts_.size() < mostOfAKind)
            facts_.push_back(std::exchange(fact_, {}));
    }

    void characters(std::string_view text) override {
        if (isFact_ && fact_.text.size() < longestFact)
            fact_.text += text;
    }

    std::optional<BookPackage> package() {
        if (!isPackage_)
            return std::nullopt;
        refine();
        BookPackage book;
        for (const Fact& fact : facts_)
            place(fact, book);
        for (const std::string& reference : references_) {
            if (const auto found = hrefs_.find(reference); found != hrefs_.end())
                book.spine.push_back(pathOfLink(path_, found->second));
        }
        return book;
    }

private:
    /// What one fact says of another one.
    void refine() {
        std::unordered_map<std::string, Fact*> named;
        for (Fact& fact : facts_) {
            if (!fact.id.empty() && !fact.id.starts_with('#'))
                named.emplace('#' + fact.id, &fact);
        }
        for (const Fact& fact : facts_) {
            const auto found = named.find(fact.id);
            if (found == named.end())
                continue;
            if (fact.term == "role")
                found->second->role = lowerCased(fact.text);
            else if (fact.term == "title-type")
                found->second->type = lowerCased(fact.text);
        }
    }

    void place(const Fact& fact, BookPackage& book) const {
        const auto setFirst = [&](std::string& known) {
            if (known.empty())
                known = fact.text;
        };
        if (fact.term == "title") {
            if (fact.type == "main")
                book.title = fact.text;
            else
                setFirst(book.title);
        } else if (fact.term == "creator" || fact.term == "contributor") {
            // The "book producer" is the program that has made it.
            if (fact.role == "bkp")
                setFirst(book.producer);
            else
                (fact.term == "creator" ? book.authors : book.contributors).push_back(fact.text);
        } else if (fact.term == "identifier") {
            if (book.identifier.empty() || fact.id == identifierID_)
                book.identifier = fact.text;
        } else if (fact.term == "date") {
            if (fact.event == "modification")
                setFirst(book.modified);
            else if (fact.event == "publication" || book.published.empty())
                book.published = fact.text;
        } else if (fact.term == "dcterms:modified") {
            book.modified = fact.text;
        } else {
            placeOther(fact, book);
        }
    }

    static void placeOther(const Fact& fact, BookPackage& book) {
        const std::pair<const char*, std::string BookPackage::*> texts[] = {
            {"description", &BookPackage::description},
            {"rights", &BookPackage::rights},
            {"coverage", &BookPackage::coverage},
        };
        for (const auto& [term, member] : texts) {
            if (fact.term == term && (book.*member).empty())
                book.*member = fact.text;
        }
        const std::pair<const char*, std::vector<std::string> BookPackage::*> lists[] = {
            {"language", &BookPackage::languages},
            {"publisher", &BookPackage::publishers},
            {"subject", &BookPackage::subjects},
        };
        for (const auto& [term, member] : lists) {
            if (fact.term == term)
                (book.*member).push_back(fact.text);
        }
    }

    std::string_view path_;
    bool isPackage_ = false;
    bool isMetadata_ = false;
    bool isFact_ = false;
    Fact fact_;
    std::vector<Fact> facts_;
    std::string identifierID_;
    std::unordered_map<std::string, std::string> hrefs_;
    std::vector<std::string> references_;
};

/// The values of an attribute of the elements with that name.
class ValuesReading final : public XMLEvents {
public:
    ValuesReading(std::string_view element, std::string_view attribute)
        : element_(element), attribute_(attribute) {}

    void beginElement(const XMLTag& tag) override {
        if (tag.localName() == element_ && values.size() < mostOfAKind)
            values.emplace_back(tag.value(attribute_));
    }
    void endElement(std::string_view) override {}
    void characters(std::string_view) override {}

    std::vector<std::string> values;

private:
    std::string_view element_;
    std::string_view attribute_;
};

/// "%20" is a space.
std::string withoutEscapes(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const int high = text[at] == '%' && at + 2 < text.size() ? hexDigitValue(text[at + 1]) : -1;
        const int low = high >= 0 ? hexDigitValue(text[at + 2]) : -1;
        if (low >= 0) {
            result += static_cast<char>(high * 16 + low);
            at += 2;
        } else {
            result += text[at];
        }
    }
    return result;
}

} // namespace

std::string pathOfPackage(std::string_view container, const Deadline& deadline) {
    ValuesReading reading("rootfile", "full-path");
    scanXML(container, reading, deadline);
    return reading.values.empty() ? std::string() : pathOfLink("", reading.values.front());
}

std::optional<BookPackage> readBookPackage(std::string_view document, std::string_view path,
                                           const Deadline& deadline) {
    PackageReading reading(path);
    scanXML(document, reading, deadline);
    return reading.package();
}

std::vector<std::string> encryptedPaths(std::string_view document, const Deadline& deadline) {
    ValuesReading reading("CipherReference", "URI");
    scanXML(document, reading, deadline);
    for (std::string& path : reading.values)
        path = pathOfLink("", path);
    return std::move(reading.values);
}

std::string pathOfLink(std::string_view document, std::string_view reference) {
    return pathOfReference(document, withoutEscapes(reference.substr(0, reference.find('#'))));
}

} // namespace kelvo::importers
