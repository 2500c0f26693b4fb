#pragma once

#include "importers/support/Deadline.h"

#include <cstddef>
#include <string_view>

namespace kelvo::importers {

/// An element as it begins. Prefixes are taken for what they mostly stand for: what people have on their disks is often
/// without the declarations, or has old ones.
class XMLTag {
public:
    XMLTag(std::string_view name, const char* const* attributes) : name_(name), attributes_(attributes) {}

    /// "dc:title"
    std::string_view name() const { return name_; }
    /// "title"
    std::string_view localName() const { return localPart(name_); }
    /// Of the attribute with that local name; empty when there is none.
    std::string_view value(std::string_view localName) const;

    static std::string_view localPart(std::string_view name) { return name.substr(name.find(':') + 1); }

private:
    std::string_view name_;
    const char* const* attributes_;
};

/// Who hears of what is in a document, in UTF-8.
class XMLEvents {
public:
    virtual void beginElement(const XMLTag& tag) = 0;
    virtual void endElement(std::string_view name) = 0;
    /// A piece of what stands between two tags.
    virtual void characters(std::string_view text) = 0;

protected:
    ~XMLEvents() = default;
};

/// Reads a document in any encoding that it declares. Nothing outside of it is ever loaded; what entities that it declares
/// make of it is bounded. Answers why it was not read to its end, in words;
/// null when it was.
const char* scanXML(std::string_view bytes, XMLEvents& events, const Deadline& deadline);

} // namespace kelvo::importers
