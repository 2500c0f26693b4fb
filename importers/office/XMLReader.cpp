#include "importers/office/XMLReader.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <functional>
#include <new>
#include <string>
#include <unordered_map>
#include <vector>

namespace kelvo::importers {
namespace {

constexpr std::size_t deepestNesting = 10'000;
/// What adversaries fill with names is emptied.
constexpr std::size_t mostKnownNames = 4096;
/// What expat takes at once: an int.
constexpr std::size_t mostBytesAtOnce = std::size_t{1} << 20;

struct SpaceName {
    std::string_view URI;
    XMLSpace space;
};

constexpr std::array spaceNames{
    SpaceName{"http://schemas.openxmlformats.org/wordprocessingml/2006/main", XMLSpace::word},
    SpaceName{"http://purl.oclc.org/ooxml/wordprocessingml/main", XMLSpace::word},
    SpaceName{"http://schemas.openxmlformats.org/spreadsheetml/2006/main", XMLSpace::sheet},
    SpaceName{"http://purl.oclc.org/ooxml/spreadsheetml/main", XMLSpace::sheet},
    SpaceName{"http://schemas.openxmlformats.org/presentationml/2006/main", XMLSpace::slides},
    SpaceName{"http://purl.oclc.org/ooxml/presentationml/main", XMLSpace::slides},
    SpaceName{"http://schemas.openxmlformats.org/drawingml/2006/main", XMLSpace::drawing},
    SpaceName{"http://purl.oclc.org/ooxml/drawingml/main", XMLSpace::drawing},
    SpaceName{"http://schemas.openxmlformats.org/officeDocument/2006/math", XMLSpace::math},
    SpaceName{"http://purl.oclc.org/ooxml/officeDocument/math", XMLSpace::math},
    SpaceName{"http://schemas.openxmlformats.org/markup-compatibility/2006", XMLSpace::compatibility},
    SpaceName{"http://schemas.openxmlformats.org/officeDocument/2006/relationships",
              XMLSpace::documentRelationships},
    SpaceName{"http://purl.oclc.org/ooxml/officeDocument/relationships", XMLSpace::documentRelationships},
    SpaceName{"http://schemas.openxmlformats.org/package/2006/relationships", XMLSpace::relationships},
    SpaceName{"http://schemas.openxmlformats.org/package/2006/content-types", XMLSpace::contentTypes},
    SpaceName{"http://schemas.openxmlformats.org/package/2006/metadata/core-properties",
              XMLSpace::coreProperties},
    SpaceName{"http://schemas.openxmlformats.org/officeDocument/2006/extended-properties",
              XMLSpace::extendedProperties},
    SpaceName{"http://purl.oclc.org/ooxml/officeDocument/extendedProperties", XMLSpace::extendedProperties},
    SpaceName{"http://purl.org/dc/elements/1.1/", XMLSpace::dublinCore},
    SpaceName{"http://purl.org/dc/terms/", XMLSpace::dublinCoreTerms},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:office:1.0", XMLSpace::office},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:text:1.0", XMLSpace::text},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:table:1.0", XMLSpace::table},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0", XMLSpace::draw},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:style:1.0", XMLSpace::style},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:presentation:1.0", XMLSpace::presentation},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:meta:1.0", XMLSpace::meta},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0", XMLSpace::svg},
    SpaceName{"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0", XMLSpace::manifest},
    SpaceName{"http://openoffice.org/2000/office", XMLSpace::office},
    SpaceName{"http://openoffice.org/2000/text", XMLSpace::text},
    SpaceName{"http://openoffice.org/2000/table", XMLSpace::table},
    SpaceName{"http://openoffice.org/2000/drawing", XMLSpace::draw},
    SpaceName{"http://openoffice.org/2000/style", XMLSpace::style},
    SpaceName{"http://openoffice.org/2000/presentation", XMLSpace::presentation},
    SpaceName{"http://openoffice.org/2000/meta", XMLSpace::meta},
    SpaceName{"http://openoffice.org/2001/manifest", XMLSpace::manifest},
};

XMLSpace spaceOfURI(std::string_view URI) {
    const auto* const row = std::ranges::find(spaceNames, URI, &SpaceName::URI);
    return row == spaceNames.end() ? XMLSpace::other : row->space;
}

struct QualifiedName {
    std::string_view prefix;
    std::string_view local;
};

QualifiedName partsOf(std::string_view name) {
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? QualifiedName{{}, name}
                                           : QualifiedName{name.substr(0, colon), name.substr(colon + 1)};
}

struct HashOfName {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
};

// Numbers below those that handlers give.
constexpr int alternatives = -1;
constexpr int choice = -2;
constexpr int fallback = -3;

} // namespace

/// expat's own treatment of namespaces takes as long as everything else; most documents name all of them once.
class XMLReader::Parser final : public XMLAttributes {
public:
    Parser(std::span<const XMLElement> elements, XMLHandler& handler)
        : elements_(elements), handler_(handler), parser_(XML_ParserCreate(nullptr), XML_ParserFree) {
        if (!parser_)
            throw std::bad_alloc();
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(),
            [](void* self, const char* name, const char** attributes) {
                static_cast<Parser*>(self)->start(name, attributes);
            },
            [](void* self, const char*) { static_cast<Parser*>(self)->end(); });
        XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
            auto& parser = *static_cast<Parser*>(self);
            if (parser.skipped_ == 0)
                parser.handler_.characters({text, static_cast<std::size_t>(length)});
        });
        XML_SetEntityDeclHandler(parser_.get(), [](void* self, const char*, int, const char*, int,
                                                   const char*, const char*, const char*, const char*) {
            static_cast<Parser*>(self)->stop("a part of the document declares entities");
        });
    }

    bool read(std::string_view piece, bool isLast) {
        do {
            const std::string_view now = piece.substr(0, mostBytesAtOnce);
            piece.remove_prefix(now.size());
            if (isEnded_)
                return false;
            if (XML_Parse(parser_.get(), now.data(), static_cast<int>(now.size()), isLast) != XML_STATUS_OK) {
                if (!fault_ && XML_GetErrorCode(parser_.get()) != XML_ERROR_ABORTED)
                    fault_ = "a part of the document is not well-formed XML";
                isEnded_ = true;
            } else if (!handler_.wantsMore()) {
                isEnded_ = true;
            }
        } while (!piece.empty());
        return !isEnded_;
    }

    const char* fault() const { return fault_; }

    std::string_view value(XMLSpace space, std::string_view name) const override {
        for (const char* const* each = attributes_; *each; each += 2) {
            const QualifiedName parts = partsOf(*each);
            if (parts.local == name &&
                (parts.prefix.empty() ? XMLSpace::none : spaceOf(parts.prefix)) == space)
                return each[1];
        }
        return {};
    }

private:
    struct Binding {
        std::string prefix;
        XMLSpace space;
        std::size_t depth;
    };

    void stop(const char* fault) {
        if (!fault_)
            fault_ = fault;
        XML_StopParser(parser_.get(), XML_FALSE);
    }

    void start(const char* name, const char** attributes) {
        ++depth_;
        if (skipped_ > 0) {
            ++skipped_;
            return;
        }
        if (depth_ > deepestNesting) {
            stop("a part of the document is nested too deeply");
            return;
        }
        for (const char** each = attributes; *each; each += 2) {
            if (std::string_view(*each).starts_with("xmlns"))
                bind(std::string_view(*each).substr(5), each[1]);
        }
        const int number = numberOf(name);
        attributes_ = attributes;
        if (!enters(number)) {
            skipped_ = 1;
            return;
        }
        open_.push_back(number);
    }

    bool enters(int number) {
        switch (number) {
        case alternatives:
            choices_.push_back(false);
            return true;
        case choice:
        case fallback:
            return entersChoice();
        default:
            return handler_.startElement(number, *this);
        }
    }

    bool entersChoice() {
        if (choices_.empty())
            return true;
        const bool isTaken = choices_.back();
        choices_.back() = true;
        return !isTaken;
    }

    void end() {
        // Also of elements that are passed over or too deep.
        if (skipped_ > 0)
            --skipped_;
        else if (!open_.empty() && open_.size() == depth_)
            endOpen();
        while (!bindings_.empty() && bindings_.back().depth == depth_) {
            bindings_.pop_back();
            numbers_.clear();
        }
        --depth_;
    }

    void endOpen() {
        const int number = open_.back();
        open_.pop_back();
        if (number == alternatives)
            choices_.pop_back();
        else if (number >= 0)
            handler_.endElement(number);
    }

    void bind(std::string_view rest, std::string_view URI) {
        if (!rest.empty() && rest[0] != ':')
            return;
        bindings_.push_back({std::string(rest.substr(rest.empty() ? 0 : 1)), spaceOfURI(URI), depth_});
        numbers_.clear();
    }

    XMLSpace spaceOf(std::string_view prefix) const {
        const auto found = std::find_if(bindings_.rbegin(), bindings_.rend(),
                                        [&](const Binding& each) { return each.prefix == prefix; });
        return found == bindings_.rend() ? XMLSpace::none : found->space;
    }

    int numberOf(std::string_view name) {
        if (const auto known = numbers_.find(name); known != numbers_.end())
            return known->second;
        if (numbers_.size() == mostKnownNames)
            numbers_.clear();
        return numbers_.emplace(name, numberOfUnknown(partsOf(name))).first->second;
    }

    int numberOfUnknown(QualifiedName name) const {
        const XMLSpace space = spaceOf(name.prefix);
        if (space == XMLSpace::compatibility)
            return name.local == "AlternateContent" ? alternatives
                   : name.local == "Choice"         ? choice
                   : name.local == "Fallback"       ? fallback
                                                    : 0;
        const auto row = std::ranges::find_if(elements_, [&](const XMLElement& element) {
            return element.space == space && element.name == name.local;
        });
        return row == elements_.end() ? 0 : row->number;
    }

    std::span<const XMLElement> elements_;
    XMLHandler& handler_;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser_;
    std::unordered_map<std::string, int, HashOfName, std::equal_to<>> numbers_;
    std::vector<Binding> bindings_;
    /// Of each AlternateContent that is open, whether one of its versions has been read.
    std::vector<bool> choices_;
    /// The numbers of the elements that are open, but for those that are passed over.
    std::vector<int> open_;
    const char* const* attributes_ = nullptr;
    std::size_t depth_ = 0;
    /// How many of the innermost elements are passed over.
    std::size_t skipped_ = 0;
    const char* fault_ = nullptr;
    bool isEnded_ = false;
};

XMLReader::XMLReader(std::span<const XMLElement> elements, XMLHandler& handler)
    : parser_(std::make_unique<Parser>(elements, handler)) {}

XMLReader::~XMLReader() = default;

bool XMLReader::read(std::string_view piece) {
    return parser_->read(piece, false);
}

void XMLReader::finish() {
    parser_->read({}, true);
}

const char* XMLReader::fault() const {
    return parser_->fault();
}

} // namespace kelvo::importers
